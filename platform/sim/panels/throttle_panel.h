#pragma once
// The simulated throttle quadrant: six levers and four switch contacts in an
// 8-byte input report. It has no feature reports.

#include <cstdint>

#include "platform/sim/panels/control_state_panel.h"

namespace pelm::sim {

class ThrottlePanel final : public ControlStatePanel {
 public:
  static constexpr uint16_t kProductId = 0x0200;
  static constexpr uint32_t kReportLength = 8;
  static constexpr int kLeverCount = 6;

  ThrottlePanel() : ControlStatePanel(std::nullopt, kReportLength) {}

  // `lever` 1 to 6.
  void SetLever(int lever, uint8_t position);
  // Contacts 1 to 4 in bits 0-3.
  void SetSwitchContacts(uint8_t contacts);
};

}  // namespace pelm::sim
