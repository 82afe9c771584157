#pragma once
// The simulated second gear panel. Feature report 4 gives the three control
// values and the control byte, laid out as in the input report.

#include <cstdint>

#include "platform/sim/panels/lamp_panel.h"

namespace pelm::sim {

class Gear2Panel : public LampPanel {
 public:
  static constexpr uint16_t kProductId = 0x0048;

  Gear2Panel() : LampPanel(LampReports::Feature) {}
  void SetControls(int8_t value1, int8_t value2, int8_t value3, uint8_t control) {
    SetControlState(
        {static_cast<uint8_t>(value1), static_cast<uint8_t>(value2), static_cast<uint8_t>(value3), control});
  }
};

}  // namespace pelm::sim
