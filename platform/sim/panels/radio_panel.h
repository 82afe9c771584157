#pragma once
// The simulated radio panel: two six-digit displays, a lamp byte and a
// backlight set by feature reports, and the control state it reports at open.

#include <array>
#include <cstdint>

#include "platform/sim/panels/display_panel.h"

namespace pelm::sim {

class RadioPanelSim : public DisplayPanelSim {
 public:
  static constexpr uint16_t kProductId = 0x0050;
  static constexpr uint8_t kLeftDisplayReport = 3;
  static constexpr uint8_t kRightDisplayReport = 5;
  static constexpr std::size_t kDisplayPositions = 6;
  static constexpr uint8_t kBrightnessReport = 6;
  static constexpr uint8_t kIndicatorReport = 7;
  static constexpr uint8_t kControlStateReport = 8;

  // Segment bytes shown, position 0 first.
  std::array<uint8_t, kDisplayPositions> LeftDisplay() const;
  std::array<uint8_t, kDisplayPositions> RightDisplay() const;
  uint8_t Brightness() const { return PayloadByte(kBrightnessReport); }
  uint8_t Indicators() const { return PayloadByte(kIndicatorReport); }

  // What the panel answers when asked for its control state: the two dial
  // bytes and the switch bits.
  void SetControlState(uint8_t dial1, uint8_t dial2, uint8_t switches);
};

}  // namespace pelm::sim
