#ifndef PELM_DEV_EXT_H
#define PELM_DEV_EXT_H
/*
 * Extensions outside Windows, in the shared library only (not among the 259
 * exports of the Windows DLL).
 *
 * Hot-plug: on Windows, arrivals and removals reach the library as window
 * messages when the thread that called PelmDev_Init pumps messages. Elsewhere
 * the library queues them, and that thread pumps them with the first two
 * functions; the connect callback then runs inside PelmDevExt_DispatchEvents.
 * Hot-plug is on when PelmDev_Init was given a non-null instance.
 *
 * Presence: a panel that is plugged in but that this user may not open has
 * no slot and no count; PelmDevExt_ListPresentPanels tells it apart from no
 * panel at all.
 */

#include <stdint.h>

#include "core/pelm_dev.h"

#ifdef __cplusplus
extern "C" {
#endif

/* A descriptor that becomes readable while arrivals or removals wait (for a
 * host's poll or select loop); -1 when hot-plug is off, or on Windows. */
PELM_API int PELM_CDECL PelmDevExt_EventDescriptor(void);

/* Handles every waiting arrival and removal on the calling thread, which must
 * be the thread that called PelmDev_Init; never blocks. Returns the number of
 * events handled; 0, handling nothing, from inside a callback. */
PELM_API uint32_t PELM_CDECL PelmDevExt_DispatchEvents(void);

/* Why a present panel is not open (PelmDevExt_PresentPanel.openStatus). */
#define PELMEXT_OPEN_OK 0                /* open in its slot, or it opens now */
#define PELMEXT_OPEN_PERMISSION_DENIED 1 /* this user may not open it: see the README on the udev rule */
#define PELMEXT_OPEN_GONE 2              /* it went away while being looked at */
#define PELMEXT_OPEN_FAILED 3            /* another error: osError tells which */

/* One panel present on the system. */
typedef struct PelmDevExt_PresentPanel {
  int32_t modelType;   /* PELM_MODEL_* */
  int32_t deviceIndex; /* its slot when a device object has its path, else -1 */
  int32_t openInSlot;  /* 1 when that object holds it open, else 0 */
  int32_t openStatus;  /* PELMEXT_OPEN_*; for a panel not open in its slot, what opening it now gave */
  int32_t osError;     /* the system's error number (errno) when opening it failed, else 0 */
  char devicePath[260]; /* the device path, as the information queries give it; NUL-terminated */
  char node[64];        /* the system's name for it ("/dev/hidraw3"), NUL-terminated; may be empty */
} PelmDevExt_PresentPanel;

/* Lists the panels present now: every HID interface with the panels' vendor ID
 * and a model's product ID, whether or not this process may open it. Writes up
 * to `capacity` records to `panels` (in the system's order) and the number of
 * panels present to *count, which may exceed `capacity`: call again with room
 * for *count records to have them all. `panels` may be null when `capacity` is
 * 0, to learn the count.
 * Returns PELM_SUCCESS; PELM_ERR_PARAM (nothing written) when `count` is null
 * or not writable, or when `panels` is null or not writable for `capacity`
 * records. Any thread, but not while PelmDev_Init or PelmDev_Terminate runs;
 * a panel not open in its slot is opened once, briefly, to learn whether it
 * can be. */
PELM_API int32_t PELM_CDECL PelmDevExt_ListPresentPanels(PelmDevExt_PresentPanel* panels, uint32_t capacity,
                                                         uint32_t* count);

#ifdef __cplusplus
}
#endif

#endif /* PELM_DEV_EXT_H */
