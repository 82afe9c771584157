#pragma once
// The simulated knob panel. Knob movements reach the library as input reports
// (SimDevice::InjectInput); the switch byte is also what feature report 4 gives.

#include <cstdint>

#include "platform/sim/panels/lamp_panel.h"

namespace pelm::sim {

class KnobPanel : public LampPanel {
 public:
  static constexpr uint16_t kProductId = 0x0028;

  KnobPanel() : LampPanel(LampReports::Feature) {}
  void SetSwitchByte(uint8_t switches) { SetControlState({switches}); }
};

}  // namespace pelm::sim
