#pragma once
// The simulated gear panel. Its lamps arrive as feature reports, the indicator
// byte with its two lowest bits set by the library; feature report 4 gives the
// control byte.

#include <cstdint>

#include "platform/sim/panels/lamp_panel.h"

namespace pelm::sim {

class GearPanel : public LampPanel {
 public:
  static constexpr uint16_t kProductId = 0x0040;

  GearPanel() : LampPanel(LampReports::Feature) {}
  void SetControlByte(uint8_t control) { SetControlState({control}); }
};

}  // namespace pelm::sim
