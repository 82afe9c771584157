#include "tools/pelmctl/families.h"

#include <array>

#include "core/pelm_dev.h"

namespace pelmctl {
namespace {

constexpr std::array<Family, 18> kFamilies = {{
    {"alpha", "Alphanumeric panel", PELM_MODEL_ALPHA, PelmAlpha_GetNumDevices},
    {"buttons", "Button panel", PELM_MODEL_BUTTONS, PelmButtons_GetNumDevices},
    {"toggles", "Toggle panel", PELM_MODEL_TOGGLES, PelmToggles_GetNumDevices},
    {"gear", "Gear panel", PELM_MODEL_GEAR, PelmGear_GetNumDevices},
    {"radio", "Radio panel", PELM_MODEL_RADIO, PelmRadio_GetNumDevices},
    {"autopilot", "Autopilot panel", PELM_MODEL_AUTOPILOT, PelmAutopilot_GetNumDevices},
    {"knobs", "Knob panel", PELM_MODEL_KNOBS, PelmKnobs_GetNumDevices},
    {"alpha2", "Alphanumeric panel 2", PELM_MODEL_ALPHA2, PelmAlpha2_GetNumDevices},
    {"throttle", "Throttle quadrant", PELM_MODEL_THROTTLE, PelmThrottle_GetNumDevices},
    {"squawk", "Transponder panel", PELM_MODEL_SQUAWK, PelmSquawk_GetNumDevices},
    {"gear2", "Gear panel 2", PELM_MODEL_GEAR2, PelmGear2_GetNumDevices},
    {"autopilot2", "Autopilot panel 2", PELM_MODEL_AUTOPILOT2, PelmAutopilot2_GetNumDevices},
    {"mapctl", "Map control panel", PELM_MODEL_MAPCTL, PelmMapCtl_GetNumDevices},
    {"enginectl", "Engine control panel", PELM_MODEL_ENGINECTL, PelmEngineCtl_GetNumDevices},
    {"keypad", "Keypad", PELM_MODEL_KEYPAD, PelmKeypad_GetNumDevices},
    {"enginestart", "Engine start panel", PELM_MODEL_ENGINESTART, PelmEngineStart_GetNumDevices},
    {"warning", "Warning panel", PELM_MODEL_WARNING, PelmWarning_GetNumDevices},
    {"ioboard", "I/O board", PELM_MODEL_IOBOARD, PelmIoBoard_GetNumDevices},
}};

}  // namespace

std::span<const Family> AllFamilies() { return kFamilies; }

const Family* FamilyByName(std::string_view name) {
  for (const Family& family : kFamilies) {
    if (family.name == name) return &family;
  }
  return nullptr;
}

const Family* FamilyByModelType(int32_t modelType) {
  for (const Family& family : kFamilies) {
    if (family.modelType == modelType) return &family;
  }
  return nullptr;
}

}  // namespace pelmctl
