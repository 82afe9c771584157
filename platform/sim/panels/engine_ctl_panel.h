#pragma once
// The simulated engine-control module: its selector, switches and contacts in
// bytes 1 to 3 of a 4-byte input report and of feature report 2. The contacts
// map to the controls irregularly (some are active-low), so tests set the
// three contact bytes as they are, with SetReportBytes.

#include <cstdint>

#include "platform/sim/panels/control_state_panel.h"

namespace pelm::sim {

class EngineCtlPanel final : public ControlStatePanel {
 public:
  static constexpr uint16_t kProductId = 0x0038;
  static constexpr uint8_t kControlStateReport = 2;
  static constexpr uint32_t kReportLength = 4;

  EngineCtlPanel() : ControlStatePanel(kControlStateReport, kReportLength) {}
};

}  // namespace pelm::sim
