#ifndef PELM_SIM_H
#define PELM_SIM_H
/*
 * The simulated bus of libpelmdev-sim.so, for hosts' own tests without
 * hardware: the library's exports work as in libpelmdev.so, on panels that
 * these functions plug, unplug and press. Any thread.
 */

#include <stdint.h>

#include "core/pelm_dev.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Plugs a panel with this product ID (every panel model's, with the panels'
 * vendor ID); `instance` tells panels of one model apart. Plugging a panel that
 * was unplugged brings the same device back on the same path. With hot-plug on,
 * the library hears of it. 1 when plugged; 0 when there was no memory for it. */
PELM_API int32_t PELM_CDECL PelmSim_Plug(uint16_t productId, int32_t instance);
/* Unplugs that panel; 0 when no such panel was ever plugged, else 1. */
PELM_API int32_t PELM_CDECL PelmSim_Unplug(uint16_t productId, int32_t instance);
/* Hands the panel's reader an input report of `length` bytes (byte 0 the
 * report ID). 0 when no such panel was ever plugged, or `report` is null;
 * else 1. */
PELM_API int32_t PELM_CDECL PelmSim_InjectInput(uint16_t productId, int32_t instance, const uint8_t* report,
                                                uint32_t length);
/* Removes every panel, silently. Call it after PelmDev_Terminate. */
PELM_API void PELM_CDECL PelmSim_Reset(void);

#ifdef __cplusplus
}
#endif

#endif /* PELM_SIM_H */
