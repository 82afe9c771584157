/* A minimal host on Windows: opens every panel, lets the lamps of the first
 * button panel follow its switches, and follows hot-plug through the library's
 * hidden window, which needs this thread to pump messages.
 *
 *   i686-w64-mingw32-gcc windows_host.c -I<include> -Lbuild/win32 -lPELMDEV -o windows_host.exe
 *   x86_64-w64-mingw32-gcc windows_host.c -I<include> -Lbuild/win64 -lPELMDEV -o windows_host.exe
 */
#include <stdio.h>
#include <windows.h>

#include "core/pelm_dev.h"

static void PELM_STDCALL OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  printf("model %d index %d %s\n", (int)modelType, (int)deviceIndex, event == PELM_EVENT_ARRIVAL ? "arrived" : "removed");
}

static void PELM_STDCALL OnInput(int32_t modelType, int32_t deviceIndex, void* record) {
  if (modelType == PELM_MODEL_BUTTONS) PelmButtons_SetIndicators_stdcall(deviceIndex, *(uint8_t*)record);
}

int main(void) {
  PelmDev_Init_stdcall(GetModuleHandleA(NULL));
  PelmDev_RegisterConnectCallback_stdcall(OnConnect);
  PelmDev_RegisterInputCallback_stdcall(OnInput);
  printf("%u button panels\n", PelmButtons_GetNumDevices_stdcall());

  /* Ten seconds of message pumping: arrivals and removals arrive here. */
  DWORD end = GetTickCount() + 10000;
  while (GetTickCount() < end) {
    MSG message;
    while (PeekMessageA(&message, NULL, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    Sleep(10);
  }
  PelmDev_Terminate_stdcall();
  return 0;
}
