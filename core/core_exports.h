#pragma once
// The implementations behind the library family's exports, named as the exports
// are; the export layer forwards to them.

#include <cstdint>

#include "core/pelm_dev.h"

namespace pelm::exports {

uint32_t PelmDev_Init(void* instance);
uint32_t PelmDev_Terminate();

int32_t PelmDev_GetDeviceInfo(int32_t modelType, int32_t deviceIndex, PelmDevInfo* info);
int32_t PelmDev_GetDeviceInfo2(int32_t modelType, int32_t deviceIndex, PelmDevInfo2* info);

uint32_t PelmDev_RegisterConnectCallback(PelmConnectCallback callback);
uint32_t PelmDev_RegisterConnectCallback_stdcall(PelmConnectCallbackStdcall callback);
uint32_t PelmDev_UnregisterConnectCallback();
uint32_t PelmDev_UnregisterConnectCallback_stdcall();
uint32_t PelmDev_RegisterInputCallback(PelmInputCallback callback);
uint32_t PelmDev_RegisterInputCallback_stdcall(PelmInputCallbackStdcall callback);
uint32_t PelmDev_UnregisterInputCallback();
uint32_t PelmDev_UnregisterInputCallback_stdcall();
uint32_t PelmDev_RegisterWakeupCallback(PelmWakeupCallback callback, int32_t intervalMs);
uint32_t PelmDev_RegisterWakeupCallback_stdcall(PelmWakeupCallbackStdcall callback, int32_t intervalMs);
uint32_t PelmDev_UnregisterWakeupCallback();
uint32_t PelmDev_UnregisterWakeupCallback_stdcall();

}  // namespace pelm::exports
