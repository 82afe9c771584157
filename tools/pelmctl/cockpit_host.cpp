#include "tools/pelmctl/cockpit_host.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>

#include "core/pelm_dev.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/input_decoding.h"

namespace pelmctl {
namespace {

constexpr int kRadioCount = 2;
constexpr uint8_t kSwapSwitch = 0x01;  // the radio's transfer switch
constexpr uint8_t kGearDownBit = 0x01;
constexpr uint32_t kGearLamp = 1;
constexpr uint32_t kFirstCautionLamp = 2;
constexpr int kCautionLamps = 5;
constexpr uint32_t kColorRed = 2;
constexpr uint32_t kColorGreen = 3;
constexpr uint32_t kColorAmber = 6;
constexpr uint32_t kColorDark = 0;
constexpr int32_t kLowestBacklight = 0;
constexpr int32_t kHighestBacklight = 15;
constexpr int32_t kStartBacklight = 8;
constexpr int kHeadingsPerTurn = 360;
constexpr int kSquawkDigits = 8;

// What the host shows. The library runs input callbacks one at a time, and the
// connect callback on the main thread; atomics keep every reader honest.
std::atomic<EventLog*> gLog{nullptr};
std::array<std::atomic<int32_t>, kRadioCount> gActiveKhz;
std::array<std::atomic<int32_t>, kRadioCount> gStandbyKhz;
std::atomic<int32_t> gAltitudeFeet{kAltitudeStartFeet};
std::atomic<int32_t> gHeading{kHeadingStartDegrees};
std::atomic<int32_t> gBacklight{kStartBacklight};
std::atomic<bool> gGearDown{false};
std::atomic<int64_t> gCautions{0};
std::atomic<int> gInputs{0};
std::atomic<int> gHotplugEvents{0};
std::atomic<int> gErrors{0};

void Log(const std::string& line) {
  if (EventLog* log = gLog) log->Add(line);
}

void Check(int32_t status) {
  if (status != PELM_SUCCESS) ++gErrors;
}

void ShowRadio(int32_t index) {
  Check(PelmRadio_SetLDisplayText(index, FrequencyText(gActiveKhz[index]).c_str()));
  Check(PelmRadio_SetRDisplayText(index, FrequencyText(gStandbyKhz[index]).c_str()));
}

void ShowAutopilot() {
  char heading[8];
  std::snprintf(heading, sizeof heading, "%03d", static_cast<int>(gHeading));
  Check(PelmAutopilot_SetADisplayText(0, heading));
  Check(PelmAutopilot_SetDDisplayText(0, AltitudeText(gAltitudeFeet).c_str()));
  Check(PelmAutopilot2_SetADisplayText(0, heading));
  Check(PelmAutopilot2_SetCDisplayText(0, std::to_string(gAltitudeFeet.load()).c_str()));
}

void SetBacklight(int32_t level) {
  const auto value = static_cast<uint32_t>(level);
  Check(PelmRadio_SetBrightness(0, value));
  Check(PelmRadio_SetBrightness(1, value));
  Check(PelmAutopilot_SetBrightness(0, value));
  Check(PelmWarning_SetBrightness(0, value));
}

int64_t ValueOf(const std::vector<NamedValue>& values, const std::string& name) {
  for (const NamedValue& value : values) {
    if (value.name == name) return value.value;
  }
  return 0;
}

void OnRadio(int32_t index, const std::vector<NamedValue>& values) {
  if (index >= kRadioCount) return;
  gActiveKhz[index] += static_cast<int32_t>(ValueOf(values, "dial1")) * kKhzPerOuterDialStep;
  gStandbyKhz[index] += static_cast<int32_t>(ValueOf(values, "dial2")) * kKhzPerInnerDialStep;
  const auto switches = static_cast<uint8_t>(ValueOf(values, "switches"));
  if (switches & kSwapSwitch) {
    const int32_t active = gActiveKhz[index];
    gActiveKhz[index] = gStandbyKhz[index].load();
    gStandbyKhz[index] = active;
  }
  ShowRadio(index);
  Check(PelmRadio_SetIndicators(index, switches));
}

void OnAutopilot(const std::vector<NamedValue>& values, const char* switchesName) {
  gAltitudeFeet += static_cast<int32_t>(ValueOf(values, "dial1")) * kFeetPerAltitudeStep;
  gHeading = ((gHeading + static_cast<int32_t>(ValueOf(values, "dial2"))) % kHeadingsPerTurn + kHeadingsPerTurn) %
             kHeadingsPerTurn;
  ShowAutopilot();
  Check(PelmAutopilot_SetIndicators(0, static_cast<uint32_t>(ValueOf(values, switchesName))));
}

void ShowWarnings() {
  Check(PelmWarning_SetIndColorValue(0, kGearLamp, gGearDown ? kColorGreen : kColorRed));
  const int64_t control = gCautions;
  for (int lamp = 0; lamp < kCautionLamps; ++lamp) {
    const bool lit = (control >> lamp) & 1;
    Check(PelmWarning_SetIndColorValue(0, kFirstCautionLamp + static_cast<uint32_t>(lamp),
                                       lit ? kColorAmber : kColorDark));
  }
}

void React(int32_t modelType, int32_t index, const std::vector<NamedValue>& values) {
  const auto lamps = [&](const char* name) { return static_cast<uint32_t>(ValueOf(values, name)); };
  switch (modelType) {
    case PELM_MODEL_RADIO: OnRadio(index, values); break;
    case PELM_MODEL_AUTOPILOT: OnAutopilot(values, "switches1"); break;
    case PELM_MODEL_AUTOPILOT2:
      OnAutopilot(values, "switches");
      Check(PelmAutopilot2_SetIndicators(index, lamps("switches")));
      break;
    case PELM_MODEL_BUTTONS: Check(PelmButtons_SetIndicators(index, lamps("switches"))); break;
    case PELM_MODEL_TOGGLES: Check(PelmToggles_SetIndicators(index, lamps("switches"))); break;
    case PELM_MODEL_KNOBS:
      gBacklight = std::clamp(gBacklight + static_cast<int32_t>(ValueOf(values, "knob1")), kLowestBacklight,
                              kHighestBacklight);
      SetBacklight(gBacklight);
      Check(PelmKnobs_SetIndicators(index, lamps("switches")));
      break;
    case PELM_MODEL_GEAR:
      gGearDown = ValueOf(values, "control") & kGearDownBit;
      Check(PelmGear_SetIndicators(index, lamps("control")));
      ShowWarnings();
      break;
    case PELM_MODEL_GEAR2: Check(PelmGear2_SetIndicators(index, lamps("control"))); break;
    case PELM_MODEL_WARNING:
      gCautions = ValueOf(values, "control");
      ShowWarnings();
      break;
    case PELM_MODEL_KEYPAD: {
      const std::string text = "KEY" + std::to_string(ValueOf(values, "key") % 10);
      Check(PelmAlpha2_SetAlpha(0, text.c_str()));
      Check(PelmKeypad_SetIndicators(index, lamps("key")));
      break;
    }
    case PELM_MODEL_THROTTLE:
      Check(PelmAlpha2_SetNumeric(0, std::to_string(ValueOf(values, "lever1")).c_str()));
      break;
    case PELM_MODEL_ALPHA:
      Check(PelmAlpha_SetNumeric(0, std::to_string(ValueOf(values, "dial1") + ValueOf(values, "dial2")).c_str()));
      break;
    case PELM_MODEL_SQUAWK: {
      const int64_t digit = ((ValueOf(values, "dial") % kSquawkDigits) + kSquawkDigits) % kSquawkDigits;
      Check(PelmSquawk_SetDigit(index, std::to_string(digit).c_str()));
      break;
    }
    case PELM_MODEL_IOBOARD:
      Check(PelmIoBoard_SetIndicators(index, lamps("input1"), lamps("input2"), lamps("input3"), lamps("input4")));
      break;
    default: break;  // the map, engine and start panels only report
  }
}

std::string DeviceName(int32_t modelType, int32_t index) {
  const Family* family = FamilyByModelType(modelType);
  return (family ? std::string(family->name) : "model " + std::to_string(modelType)) + " " + std::to_string(index);
}

void ShowEverything() {
  for (int32_t radio = 0; radio < kRadioCount; ++radio) ShowRadio(radio);
  ShowAutopilot();
  SetBacklight(gBacklight);
  Check(PelmAlpha_SetAlpha(0, "BARO"));
  Check(PelmAlpha_SetNumeric(0, "0"));
  Check(PelmAlpha2_SetAlpha(0, "THR"));
  ShowWarnings();
}

void PELM_CDECL OnInput(int32_t modelType, int32_t index, void* record) {
  ++gInputs;
  const std::vector<NamedValue> values = DecodeInputRecord(modelType, record);
  Log("input   " + DeviceName(modelType, index) + ": " + FormatValues(values));
  React(modelType, index, values);
}

void PELM_CDECL OnConnect(int32_t modelType, int32_t index, int32_t event) {
  ++gHotplugEvents;
  const bool arrived = event == PELM_EVENT_ARRIVAL;
  Log(std::string(arrived ? "arrived " : "removed ") + DeviceName(modelType, index));
  // A panel that comes back starts dark: give it what it showed.
  if (arrived) ShowEverything();
}

}  // namespace

std::string FrequencyText(int32_t khz) {
  constexpr int32_t kKhzPerMhz = 1000;
  char text[16];
  std::snprintf(text, sizeof text, "%03d.%03d", khz / kKhzPerMhz, khz % kKhzPerMhz);
  return text;
}

std::string AltitudeText(int32_t feet) {
  char text[16];
  std::snprintf(text, sizeof text, "%6d", feet);
  return text;
}

void StartCockpitHost(EventLog& log) {
  gLog = &log;
  for (int radio = 0; radio < kRadioCount; ++radio) {
    gActiveKhz[radio] = radio == 0 ? kComStartKhz : kNavStartKhz;
    gStandbyKhz[radio] = radio == 0 ? kComStartKhz : kNavStartKhz;
  }
  gAltitudeFeet = kAltitudeStartFeet;
  gHeading = kHeadingStartDegrees;
  gBacklight = kStartBacklight;
  gGearDown = false;
  gCautions = 0;
  gInputs = 0;
  gHotplugEvents = 0;
  gErrors = 0;
  ShowEverything();
  PelmDev_RegisterConnectCallback(OnConnect);
  PelmDev_RegisterInputCallback(OnInput);
}

void StopCockpitHost() { gLog = nullptr; }

HostCounts CockpitHostCounts() { return {gInputs, gHotplugEvents, gErrors}; }

}  // namespace pelmctl
