#ifndef PELM_DEV_H
#define PELM_DEV_H
/*
 * PELMDEV: the host interface of the cockpit-panel library.
 *
 * Every model operation returns one of the status codes below. The library does
 * nothing until PelmDev_Init; PelmDev_Init and PelmDev_Terminate must not run
 * while any other call of this library is in flight.
 */

#include <stdint.h>

#define PELM_SUCCESS 0         /* done */
#define PELM_ERR_INDEX 1       /* device index outside 0 to slot count minus 1 */
#define PELM_ERR_NOMEM 2       /* a report buffer could not be allocated */
#define PELM_ERR_NODEVICE 3    /* the slot is empty, or its device is not connected */
#define PELM_ERR_QUEUE 4       /* the device's output report queue refused the report */
#define PELM_ERR_IO 5          /* a feature-report transfer with the device failed */
#define PELM_ERR_PARAM 11      /* an argument is invalid */
#define PELM_ERR_UNSUPPORTED 13 /* the model has no such function */

#endif /* PELM_DEV_H */
