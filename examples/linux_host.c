/* A minimal host on Linux: opens every panel, shows radio dial turns on the
 * radio's left display, follows hot-plug, until interrupted.
 *
 *   cc linux_host.c $(pkg-config --cflags --libs pelmdev) -o linux_host
 */
#include <poll.h>
#include <signal.h>
#include <stdio.h>

#include <pelm_dev.h>
#include <pelm_dev_ext.h>

static volatile sig_atomic_t running = 1;

static void Stop(int signal_number) {
  (void)signal_number;
  running = 0;
}

static void OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  printf("model %d index %d %s\n", modelType, deviceIndex, event == PELM_EVENT_ARRIVAL ? "arrived" : "removed");
}

int main(void) {
  static int instance; /* any non-null value turns hot-plug on */
  signal(SIGINT, Stop);
  PelmDev_Init(&instance);
  PelmDev_RegisterConnectCallback(OnConnect);
  printf("%u button panels, %u engine-start modules\n", PelmButtons_GetNumDevices(),
         PelmEngineStart_GetNumDevices());

  while (running) {
    /* Arrivals and removals are handled on this thread, the one that called
     * PelmDev_Init, when it pumps them. */
    struct pollfd events = {PelmDevExt_EventDescriptor(), POLLIN, 0};
    if (poll(&events, 1, 100) > 0) PelmDevExt_DispatchEvents();
    uint8_t switches = 0;
    if (PelmButtons_GetSwitchVals(0, &switches) == PELM_SUCCESS) PelmButtons_SetIndicators(0, switches);
  }
  PelmDev_Terminate();
  return 0;
}
