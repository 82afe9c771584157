// The library's entry point. It does no work of its own: nothing happens until
// the host calls PelmDev_Init, and nothing is torn down unless it calls
// PelmDev_Terminate.

#include <windows.h>

BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID) {
  // The library keeps no per-thread state, so thread attach and detach
  // notifications are of no use to it.
  if (reason == DLL_PROCESS_ATTACH) DisableThreadLibraryCalls(module);
  return TRUE;
}
