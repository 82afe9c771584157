#pragma once
// Every panel model as the VM tests drive it, and the device path the library
// gives a panel on a physical path.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

#include "core/pelm_dev.h"

namespace pelm::vm {

struct ModelUnderTest {
  int32_t typeCode;
  uint16_t productId;
  uint32_t (*count)();
  bool readsSerial;
};

inline const ModelUnderTest kModels[] = {
    {PELM_MODEL_ALPHA, 0x0010, PelmAlpha_GetNumDevices, false},
    {PELM_MODEL_ALPHA2, 0x0018, PelmAlpha2_GetNumDevices, false},
    {PELM_MODEL_BUTTONS, 0x0020, PelmButtons_GetNumDevices, false},
    {PELM_MODEL_KNOBS, 0x0028, PelmKnobs_GetNumDevices, false},
    {PELM_MODEL_WARNING, 0x002C, PelmWarning_GetNumDevices, false},
    {PELM_MODEL_TOGGLES, 0x0030, PelmToggles_GetNumDevices, false},
    {PELM_MODEL_GEAR, 0x0040, PelmGear_GetNumDevices, false},
    {PELM_MODEL_GEAR2, 0x0048, PelmGear2_GetNumDevices, false},
    {PELM_MODEL_RADIO, 0x0050, PelmRadio_GetNumDevices, true},
    {PELM_MODEL_AUTOPILOT, 0x0060, PelmAutopilot_GetNumDevices, false},
    {PELM_MODEL_AUTOPILOT2, 0x0064, PelmAutopilot2_GetNumDevices, true},
    {PELM_MODEL_MAPCTL, 0x0300, PelmMapCtl_GetNumDevices, true},
    {PELM_MODEL_SQUAWK, 0x0070, PelmSquawk_GetNumDevices, false},
    {PELM_MODEL_ENGINECTL, 0x0038, PelmEngineCtl_GetNumDevices, false},
    {PELM_MODEL_ENGINESTART, 0x003C, PelmEngineStart_GetNumDevices, false},
    {PELM_MODEL_KEYPAD, 0x0074, PelmKeypad_GetNumDevices, true},
    {PELM_MODEL_THROTTLE, 0x0200, PelmThrottle_GetNumDevices, false},
    {PELM_MODEL_IOBOARD, 0x002D, PelmIoBoard_GetNumDevices, false},
};

inline const ModelUnderTest& Model(int32_t typeCode) {
  return *std::find_if(std::begin(kModels), std::end(kModels),
                       [typeCode](const ModelUnderTest& model) { return model.typeCode == typeCode; });
}

// "HIDRAW:VVVV:PPPP:" and the physical path, upper case.
inline std::string DevicePathFor(uint16_t vendorId, uint16_t productId, const std::string& phys) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "HIDRAW:%04X:%04X:", vendorId, productId);
  std::string path = prefix + phys;
  for (char& c : path) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return path;
}

}  // namespace pelm::vm
