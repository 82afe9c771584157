#ifndef PELM_SIM_H
#define PELM_SIM_H
/*
 * The simulated cockpit of libpelmdev-sim.so, for hosts' own tests without
 * hardware. The library's functions (pelm_dev.h, pelm_dev_ext.h) work as in
 * libpelmdev.so, on panels that these functions plug, unplug and press, and
 * whose reports and displays they read back. Link libpelmdev-sim.so instead of
 * libpelmdev.so (pkg-config pelmdev-sim, or pelmdev::pelmdev-sim) in the tests.
 *
 * A panel is named by its model type (PELM_MODEL_*) and an instance number of
 * the host's choosing that tells panels of one model apart; its slot is the
 * library's business, as with real panels (panels present at PelmDev_Init are
 * found in plug order). Every function may be called from any thread, also
 * while the library runs; none calls back into the host. Setters queue their
 * reports for the library's writer threads, so what a panel shows changes
 * shortly after the setter returns: poll PelmSim_DisplayText or
 * PelmSim_LastReport until it shows what the test expects, with a generous
 * deadline.
 *
 * Every simulated panel keeps a record of the reports it received until
 * PelmSim_Reset, so a test that runs for hours should reset between cases.
 */

#include <stdint.h>

#include "core/pelm_dev.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Plugs in a panel of model `modelType`. Plugging one that was unplugged
 * brings the same device back on the same path, with what it last showed.
 * With hot-plug on, the library hears of the arrival as of a real panel's.
 * 1 when plugged (also when it already was); 0 when the type names no model,
 * `instance` is outside 0 to 9999, or there was no memory for it. */
PELM_API int32_t PELM_CDECL PelmSim_Plug(int32_t modelType, int32_t instance);

/* Unplugs that panel: the library's transfers with it fail from now on and,
 * with hot-plug on, it hears of the removal. 1 when it was plugged in; 0 when
 * it was not, or no such panel was ever plugged. */
PELM_API int32_t PELM_CDECL PelmSim_Unplug(int32_t modelType, int32_t instance);

/* Hands the panel's reader one input report of `length` bytes, byte 0 its
 * report ID, as if the user had moved a control. The panel buffers at most 63
 * unread reports, as the kernel does, and drops newer ones beyond that. 1 when
 * queued; 0 when no such panel was ever plugged, `report` is null or `length`
 * is 0. */
PELM_API int32_t PELM_CDECL PelmSim_InjectInput(int32_t modelType, int32_t instance, const uint8_t* report,
                                                uint32_t length);

/* The kinds of report the library sends a panel. */
#define PELMSIM_FEATURE_REPORT 1 /* set as a feature report */
#define PELMSIM_OUTPUT_REPORT 2  /* written as an output report */

/* Copies the last report of kind `kind` (PELMSIM_*_REPORT) with report ID
 * `reportId` (its byte 0) that the library sent the panel, successfully, into
 * `bytes`, up to `capacity` bytes. Returns the report's whole length (more
 * than `capacity` when it was cut short: call again with room for it); 0 when
 * the panel received no such report; -1 when no such panel was ever plugged,
 * `kind` is unknown, or `bytes` is null while `capacity` is not 0. */
PELM_API int32_t PELM_CDECL PelmSim_LastReport(int32_t modelType, int32_t instance, int32_t kind, uint8_t reportId,
                                               uint8_t* bytes, uint32_t capacity);

/* The displays PelmSim_DisplayText reads, per model. */
#define PELMSIM_RADIO_LEFT 0       /* PELM_MODEL_RADIO: six digits each */
#define PELMSIM_RADIO_RIGHT 1
#define PELMSIM_ALPHA_TEXT 0       /* PELM_MODEL_ALPHA, _ALPHA2: four sixteen-segment characters */
#define PELMSIM_ALPHA_NUMERIC 1    /* five digits (six on PELM_MODEL_ALPHA2) */
#define PELMSIM_SQUAWK_DIGIT 0     /* PELM_MODEL_SQUAWK: one digit */
#define PELMSIM_AUTOPILOT_A 0      /* PELM_MODEL_AUTOPILOT: A to E; _AUTOPILOT2: A to F */
#define PELMSIM_AUTOPILOT_B 1
#define PELMSIM_AUTOPILOT_C 2
#define PELMSIM_AUTOPILOT_D 3
#define PELMSIM_AUTOPILOT_E 4
#define PELMSIM_AUTOPILOT_F 5

/* Writes what display `display` of the panel shows now, as NUL-terminated
 * text read back from its segments: one character per position, a lit point
 * as "." after its character (a point alone as "."), a dark position as a
 * space, and a pattern that is no character as "?". Letters read as upper
 * case. Returns the text's length; -1, writing nothing, when no such panel was
 * ever plugged, its model has no display `display`, `text` is null, or
 * `capacity` has no room for the text and its NUL (at most 32 bytes are ever
 * needed). */
PELM_API int32_t PELM_CDECL PelmSim_DisplayText(int32_t modelType, int32_t instance, int32_t display, char* text,
                                                uint32_t capacity);

/* Faults a panel can be given, to see how a host copes. */
#define PELMSIM_FAULT_FAIL_OPENS 1    /* value 1: the library cannot open it (0 undoes) */
#define PELMSIM_FAULT_DENY_ACCESS 2   /* value 1: opening it is refused as for a user without permission */
#define PELMSIM_FAULT_FAIL_SENDS 3    /* value N: its next N feature sets and output writes fail */
#define PELMSIM_FAULT_FAIL_READS 4    /* value 1: its feature reads fail (getters give PELM_ERR_IO) */

/* Gives the panel fault `fault` (PELMSIM_FAULT_*) with `value`; it keeps it
 * across unplug and replug, until changed or PelmSim_Reset. 1 when set; 0 when
 * no such panel was ever plugged, the fault is unknown or the value negative. */
PELM_API int32_t PELM_CDECL PelmSim_SetFault(int32_t modelType, int32_t instance, int32_t fault, int32_t value);

/* Serves a live web view of the simulated cockpit at http://127.0.0.1:PORT/
 * (this machine only), and says so on stderr: a page that draws every panel
 * as the reports it received left it (displays segment by segment, lamps,
 * colours, backlight, levers, outputs), redrawn as reports arrive, whose
 * switches, levers and plug buttons inject input and plug and unplug the
 * panels, so the host's callbacks run. `port` 0 lets the system pick a free
 * one. There is one view per process: while it runs, a call returns its port.
 * PelmSim_Reset stops it, and so does unloading the library. Returns the port;
 * -PELM_ERR_PARAM when `port` is outside 0 to 65535, -PELM_ERR_IO when it
 * cannot be bound (another program has it), -PELM_ERR_UNSUPPORTED in a build
 * without the web view (32-bit), -PELM_ERR_NOMEM when memory or threads ran
 * out. */
PELM_API int32_t PELM_CDECL PelmSim_Serve(int32_t port);

/* Removes every panel, silently, with its faults and records, and stops the
 * web view. Call it after PelmDev_Terminate, for instance between two test
 * cases. */
PELM_API void PELM_CDECL PelmSim_Reset(void);

#ifdef __cplusplus
}
#endif

#endif /* PELM_SIM_H */
