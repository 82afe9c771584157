#include "tools/pelmctl/demo_script.h"

#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/engine_ctl_panel.h"
#include "platform/sim/panels/gear2_panel.h"
#include "platform/sim/panels/gear_panel.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/keypad_panel.h"
#include "platform/sim/panels/knob_panel.h"
#include "platform/sim/panels/map_ctl_panel.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"
#include "tools/pelmctl/cockpit_host.h"

namespace pelmctl {
namespace {

using namespace pelm::sim;

constexpr int kFirst = 1;
constexpr int kSecond = 2;

// The turns the script makes, which the expectations add up.
constexpr int8_t kComOuterTurn = 3;
constexpr int8_t kComInnerTurn = 2;
constexpr int8_t kNavInnerTurn = -4;
constexpr int8_t kComLateOuterTurn = 1;
constexpr int8_t kAltitudeTurn = 10;
constexpr int8_t kHeadingTurn = 5;
constexpr uint8_t kButtonSwitches = 0x05;
constexpr uint8_t kSecondButtonSwitches = 0x80;

uint8_t Byte(int8_t value) { return static_cast<uint8_t>(value); }

ScriptStep Input(double at, std::string description, uint16_t productId, int instance, Report bytes) {
  return {at, std::move(description), 1,
          [=](const SimCockpit& cockpit) { cockpit.Inject(productId, instance, bytes); }};
}

// Panels that build their own input report from the controls' positions.
template <class PanelType>
ScriptStep Controls(double at, std::string description, uint16_t productId,
                    std::function<void(PanelType&)> move) {
  return {at, std::move(description), 1, [=](const SimCockpit& cockpit) {
            SimDevice& device = cockpit.Device(productId);
            PanelType& panel = device.PanelAs<PanelType>();
            move(panel);
            device.InjectInput(panel.InputReport());
          }};
}

ScriptStep Plug(double at, std::string description, uint16_t productId, int instance, bool plug) {
  return {at, std::move(description), 0, [=](const SimCockpit& cockpit) {
            plug ? cockpit.Replug(productId, instance) : cockpit.Unplug(productId, instance);
          }};
}

}  // namespace

std::vector<ScriptStep> DemoScript() {
  constexpr uint8_t kGearDown = 0x01;
  constexpr uint8_t kLeverHalf = 128;
  constexpr uint8_t kLeverFull = 255;
  constexpr uint8_t kKeyFive = 5;
  constexpr int8_t kSquawkTurn = 4;
  constexpr int8_t kBacklightTurn = 5;
  constexpr uint8_t kCautions = 0x03;
  return {
      Input(0.04, "COM radio: outer dial 3 clicks up", RadioPanelSim::kProductId, kFirst, {Byte(kComOuterTurn), 0, 0}),
      Input(0.08, "COM radio: inner dial 2 clicks up", RadioPanelSim::kProductId, kFirst, {0, Byte(kComInnerTurn), 0}),
      Input(0.12, "NAV radio: inner dial 4 clicks down", RadioPanelSim::kProductId, kSecond,
            {0, Byte(kNavInnerTurn), 0}),
      Input(0.16, "autopilot: altitude dial 10 clicks up", AutopilotPanelSim::kProductId, kFirst,
            {Byte(kAltitudeTurn), 0, 0, 0, 0, 0, 0}),
      Input(0.20, "autopilot: heading dial 5 clicks right", AutopilotPanelSim::kProductId, kFirst,
            {0, Byte(kHeadingTurn), 0, 0, 0, 0x01, 0}),
      Input(0.24, "button panel 1: switches 1 and 3 on", kButtonPanelId, kFirst, {kButtonSwitches}),
      Input(0.28, "toggle panel: switches 2 and 4 on", kTogglePanelId, kFirst, {0x0A}),
      Input(0.32, "gear lever down", GearPanel::kProductId, kFirst, {0, kGearDown}),
      Controls<ThrottlePanel>(0.36, "throttle: lever 1 to half", ThrottlePanel::kProductId,
                              [](ThrottlePanel& panel) { panel.SetLever(1, kLeverHalf); }),
      Input(0.40, "keypad: key 5", KeypadPanel::kProductId, kFirst, {kKeyFive, 0, 0, 0}),
      Plug(0.44, "button panel 2 unplugged", kButtonPanelId, kSecond, false),
      Input(0.48, "COM radio: outer dial 1 click up", RadioPanelSim::kProductId, kFirst,
            {Byte(kComLateOuterTurn), 0, 0}),
      Plug(0.54, "button panel 2 plugged back", kButtonPanelId, kSecond, true),
      Input(0.58, "button panel 2: switch 8 on", kButtonPanelId, kSecond, {kSecondButtonSwitches}),
      Input(0.62, "knob panel: backlight knob 5 clicks up", KnobPanel::kProductId, kFirst,
            {Byte(kBacklightTurn), 0, 0, 0, 0x01}),
      Input(0.66, "warning panel: two caution inputs", WarningPanel::kProductId, kFirst, {kCautions}),
      Input(0.70, "transponder: dial 4 clicks", SquawkPanelSim::kProductId, kFirst, {Byte(kSquawkTurn), 0}),
      Input(0.73, "alphanumeric panel: dial 2 clicks", AlphaPanelSim::kAlphaProductId, kFirst, {2, 0}),
      Input(0.76, "gear panel 2: flaps lever", Gear2Panel::kProductId, kFirst, {1, 2, 3, 0x02}),
      Controls<MapCtlPanel>(0.79, "map control: range dial", MapCtlPanel::kProductId,
                            [](MapCtlPanel& panel) { panel.SetDials(2, -1); }),
      Controls<EngineCtlPanel>(0.82, "engine control: selector and switches", EngineCtlPanel::kProductId,
                               [](EngineCtlPanel& panel) { panel.SetReportBytes({0x20, 0x02, 0x04}); }),
      Input(0.85, "engine start: left selector to start", kEngineStartId, kFirst, {0x01}),
      Input(0.88, "I/O board: inputs 1 and 2", IoBoardPanel::kProductId, kFirst, {0x01, 0x02, 0, 0, 0, 0, 0}),
      Input(0.91, "autopilot 2: heading dial", Autopilot2PanelSim::kProductId, kFirst, {0x01, 0, 0, 0, 0, 0, 0x10}),
      Controls<ThrottlePanel>(0.94, "throttle: lever 1 to full", ThrottlePanel::kProductId,
                              [](ThrottlePanel& panel) { panel.SetLever(1, kLeverFull); }),
  };
}

ScriptExpectations DemoExpectations() {
  return {FrequencyText(kComStartKhz + (kComOuterTurn + kComLateOuterTurn) * kKhzPerOuterDialStep),
          FrequencyText(kNavStartKhz + kNavInnerTurn * kKhzPerInnerDialStep),
          AltitudeText(kAltitudeStartFeet + kAltitudeTurn * kFeetPerAltitudeStep),
          kButtonSwitches,
          2};
}

}  // namespace pelmctl
