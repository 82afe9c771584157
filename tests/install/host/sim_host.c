/* A host's test against the installed simulated cockpit: a radio is plugged,
 * found, and shows what the host drew. */
#define _POSIX_C_SOURCE 199309L
#include <pelm_dev.h>
#include <pelm_sim.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

enum { kRadioInstance = 1, kPollsPerSecond = 100, kDeadlineSeconds = 10 };

int main(void) {
  const char expected[] = "123.45 ";
  char shown[32] = "";
  if (!PelmSim_Plug(PELM_MODEL_RADIO, kRadioInstance)) return 1;
  PelmDev_Init(NULL);
  int ok = PelmRadio_GetNumDevices() == 1 && PelmRadio_SetLDisplayText(0, "123.45") == PELM_SUCCESS;
  const struct timespec pause = {0, 1000000000L / kPollsPerSecond};
  for (int poll = 0; ok && poll < kPollsPerSecond * kDeadlineSeconds; ++poll) {
    PelmSim_DisplayText(PELM_MODEL_RADIO, kRadioInstance, PELMSIM_RADIO_LEFT, shown, sizeof shown);
    if (strcmp(shown, expected) == 0) break;
    nanosleep(&pause, NULL);
  }
  printf("radio left display: \"%s\"\n", shown);
  PelmDev_Terminate();
  PelmSim_Reset();
  return ok && strcmp(shown, expected) == 0 ? 0 : 1;
}
