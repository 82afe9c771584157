#ifndef PELM_DEV_H
#define PELM_DEV_H
/*
 * PELMDEV: the host interface of the cockpit-panel library.
 *
 * Threads. PelmDev_Init and PelmDev_Terminate must not run while any other call
 * of this library is in flight. Every other export may be called from any
 * thread. Input callbacks run on the devices' reader threads, one at a time
 * across all devices and processes; connect callbacks run on the thread that
 * called PelmDev_Init (see pelm_dev_ext.h for pumping hot-plug events outside
 * Windows); wakeup callbacks run on a thread of the library's own.
 *
 * Calls from inside a callback. A callback may call every export except these:
 * PelmDev_Init and PelmDev_Terminate return 1 and change nothing (they would
 * close the device or the thread the callback runs on; call them once the
 * callback has returned), and PelmDevExt_DispatchEvents returns 0 without
 * handling anything. Getters, setters, the device information queries,
 * registrations and unregistrations work, including the unregistration of the
 * callback that is running.
 *
 * Waiting for callbacks. An Unregister...Callback function returns only when no
 * call of a callback of its kind is running any more, so that the host may then
 * free whatever the callback uses, or unload its own module; called from inside
 * such a callback it does not wait for that call itself. PelmDev_Terminate waits
 * for running input and wakeup callbacks as it stops the library's threads:
 * when it returns no thread of the library runs, and the library may be
 * unloaded (FreeLibrary, dlclose). Unload it only after PelmDev_Terminate.
 *
 * Exceptions. None leaves an export: what cannot be done for lack of memory or
 * of an OS resource gives PELM_ERR_NOMEM (model operations), 0 (the functions
 * that return 0 or 1, and the device counts) or -1 (descriptors).
 *
 * Memory. Records handed to callbacks belong to the library and are valid only
 * during the call. Records and output variables the host passes in stay the
 * host's.
 *
 * Calling forms. Every export exists in the default form, in which the caller
 * removes the arguments (cdecl), and, except where noted, in a form with the
 * suffix _stdcall in which the callee does (stdcall). On 64-bit targets the two
 * are the same convention.
 *
 * Device paths longer than 259 characters are not opened: such a device takes
 * no slot, at initialisation or on arrival.
 */

#include <stdint.h>

#include "core/pelm_records.h"

/* The version of this interface: the major number changes when a host built
 * against an older one could break. */
#define PELMDEV_VERSION_MAJOR 0
#define PELMDEV_VERSION_MINOR 1
#define PELMDEV_VERSION_PATCH 0

#if defined(__i386__) || defined(_M_IX86)
#if defined(_MSC_VER)
#define PELM_CDECL __cdecl
#define PELM_STDCALL __stdcall
#else
#define PELM_CDECL __attribute__((cdecl))
#define PELM_STDCALL __attribute__((stdcall))
#endif
#else
#define PELM_CDECL
#define PELM_STDCALL
#endif

#if defined(_WIN32)
#define PELM_API /* exported through the module-definition file */
#elif defined(__GNUC__)
#define PELM_API __attribute__((visibility("default")))
#else
#define PELM_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* Status codes of every model operation. */
#define PELM_SUCCESS 0          /* done */
#define PELM_ERR_INDEX 1        /* device index outside 0 to slot count minus 1 */
#define PELM_ERR_NOMEM 2        /* a report buffer could not be allocated */
#define PELM_ERR_NODEVICE 3     /* the slot is empty, or its device is not connected */
#define PELM_ERR_QUEUE 4        /* the device's output report queue refused the report */
#define PELM_ERR_IO 5           /* a feature-report transfer with the device failed */
#define PELM_ERR_PARAM 11       /* an argument is invalid */
#define PELM_ERR_UNSUPPORTED 13 /* the model has no such function */

/* Model type codes, as callbacks and the information queries name models. */
#define PELM_MODEL_ALPHA 1
#define PELM_MODEL_BUTTONS 2
#define PELM_MODEL_TOGGLES 3
#define PELM_MODEL_GEAR 4
#define PELM_MODEL_RADIO 5
#define PELM_MODEL_AUTOPILOT 6
#define PELM_MODEL_KNOBS 7
#define PELM_MODEL_ALPHA2 8
#define PELM_MODEL_THROTTLE 9
#define PELM_MODEL_SQUAWK 10
#define PELM_MODEL_GEAR2 11
#define PELM_MODEL_AUTOPILOT2 12
#define PELM_MODEL_MAPCTL 13
#define PELM_MODEL_ENGINECTL 14
#define PELM_MODEL_KEYPAD 15
#define PELM_MODEL_ENGINESTART 17
#define PELM_MODEL_WARNING 18
#define PELM_MODEL_IOBOARD 19

/* Events of the connect callback. */
#define PELM_EVENT_ARRIVAL 1 /* the device has arrived and is running */
#define PELM_EVENT_REMOVAL 2 /* the device has been removed; it keeps its slot */

/* Callbacks into the host, in both calling forms; their results are ignored. */
typedef void(PELM_CDECL* PelmConnectCallback)(int32_t modelType, int32_t deviceIndex, int32_t event);
typedef void(PELM_STDCALL* PelmConnectCallbackStdcall)(int32_t modelType, int32_t deviceIndex, int32_t event);
/* `record` points at the model's input record (core/pelm_records.h). */
typedef void(PELM_CDECL* PelmInputCallback)(int32_t modelType, int32_t deviceIndex, void* record);
typedef void(PELM_STDCALL* PelmInputCallbackStdcall)(int32_t modelType, int32_t deviceIndex, void* record);
typedef void(PELM_CDECL* PelmWakeupCallback)(void);
typedef void(PELM_STDCALL* PelmWakeupCallbackStdcall)(void);

#pragma pack(push, 1)
/* Filled by PelmDev_GetDeviceInfo. */
typedef struct PelmDevInfo {
  char devicePath[260];   /* upper-case, NUL-terminated */
  uint16_t versionNumber; /* from the device's HID attributes */
} PelmDevInfo;

/* Filled by PelmDev_GetDeviceInfo2; the host sets structSize to 331 first. */
typedef struct PelmDevInfo2 {
  uint16_t structSize;
  char devicePath[260];
  uint16_t versionNumber;
  char serialNumber[65];       /* empty for models that do not read it */
  uint16_t outputReportLength; /* class-based models only; untouched otherwise */
} PelmDevInfo2;
#pragma pack(pop)

/* Declarations of every export, from the export table. */
#define PELM_UNPACK(...) __VA_ARGS__
#define PELM_CORE_PAIR(ret, name, params, args) \
  PELM_API ret PELM_CDECL name params;          \
  PELM_API ret PELM_STDCALL name##_stdcall params;
#define PELM_CORE_SINGLE(ret, form, name, params, args) PELM_API ret form name params;
#define PELM_MODEL_COUNT(family)                              \
  PELM_API uint32_t PELM_CDECL family##_GetNumDevices(void); \
  PELM_API uint32_t PELM_STDCALL family##_GetNumDevices_stdcall(void);
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) PELM_API uint32_t PELM_CDECL family##_GetNumDevices(void);
#define PELM_MODEL_OP(family, op, params, args)                                           \
  PELM_API int32_t PELM_CDECL family##_##op(int32_t deviceIndex, PELM_UNPACK params); \
  PELM_API int32_t PELM_STDCALL family##_##op##_stdcall(int32_t deviceIndex, PELM_UNPACK params);
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  PELM_API int32_t PELM_CDECL family##_##op(int32_t deviceIndex, PELM_UNPACK params);
#include "core/pelm_exports.h"
#undef PELM_CORE_PAIR
#undef PELM_CORE_SINGLE
#undef PELM_MODEL_COUNT
#undef PELM_MODEL_COUNT_DEFAULT_ONLY
#undef PELM_MODEL_OP
#undef PELM_MODEL_OP_DEFAULT_ONLY

#ifdef __cplusplus
}
#endif

#endif /* PELM_DEV_H */
