#pragma once
// Every panel model as the tests on real kernel devices (Linux and Wine) meet
// it: its type code, its product ID, its count export and whether the library
// reads its serial number.

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "core/pelm_dev.h"

namespace pelm::test {

struct ModelUnderTest {
  int32_t typeCode;
  uint16_t productId;
  uint32_t(PELM_CDECL* count)();
  bool readsSerial;
};

inline constexpr ModelUnderTest kModels[] = {
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

// The entry of the model with `typeCode`, which must be one of kModels.
inline const ModelUnderTest& Model(int32_t typeCode) {
  return *std::find_if(std::begin(kModels), std::end(kModels),
                       [typeCode](const ModelUnderTest& model) { return model.typeCode == typeCode; });
}

}  // namespace pelm::test
