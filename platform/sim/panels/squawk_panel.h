#pragma once
// The simulated transponder-code panel: one digit and a backlight set by
// feature reports, and the control state it reports at open.

#include <cstdint>

#include "platform/sim/panels/display_panel.h"

namespace pelm::sim {

class SquawkPanelSim : public DisplayPanelSim {
 public:
  static constexpr uint16_t kProductId = 0x0070;
  static constexpr uint8_t kDigitReport = 3;
  static constexpr uint8_t kBrightnessReport = 4;
  static constexpr uint8_t kControlStateReport = 5;

  // The digit's segment byte.
  uint8_t Digit() const { return PayloadByte(kDigitReport); }
  uint8_t Brightness() const { return PayloadByte(kBrightnessReport); }

  // What the panel answers when asked for its control state.
  void SetControlState(uint8_t dial, uint8_t switches) { SetFeatureAnswer({kControlStateReport, dial, switches}); }
};

}  // namespace pelm::sim
