#pragma once
// The simulated display-control panel: two dials, fifteen buttons and two
// selectors, reported in an 8-byte input report and in feature report 2.

#include <cstdint>

#include "platform/sim/panels/control_state_panel.h"

namespace pelm::sim {

class MapCtlPanel final : public ControlStatePanel {
 public:
  static constexpr uint16_t kProductId = 0x0300;
  static constexpr uint8_t kControlStateReport = 2;
  static constexpr uint32_t kReportLength = 8;

  MapCtlPanel() : ControlStatePanel(kControlStateReport, kReportLength) {}

  // Detents turned since the previous report.
  void SetDials(int8_t first, int8_t second);
  // Buttons 0-6 and 8-15 in the bits of their numbers; bit 7 has no button.
  void SetButtons(uint16_t buttons);
  // First selector 0-3, second selector 0-7.
  void SetSelectors(uint8_t first, uint8_t second);
};

}  // namespace pelm::sim
