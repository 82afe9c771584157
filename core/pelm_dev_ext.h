#ifndef PELM_DEV_EXT_H
#define PELM_DEV_EXT_H
/*
 * Hot-plug outside Windows. On Windows, arrivals and removals reach the library
 * as window messages when the thread that called PelmDev_Init pumps messages.
 * Elsewhere the library queues them, and that thread pumps them with these two
 * functions; the connect callback then runs inside PelmDevExt_DispatchEvents.
 *
 * Hot-plug is on when PelmDev_Init was given a non-null instance.
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
 * events handled. */
PELM_API uint32_t PELM_CDECL PelmDevExt_DispatchEvents(void);

#ifdef __cplusplus
}
#endif

#endif /* PELM_DEV_EXT_H */
