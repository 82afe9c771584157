#include "platform/sim/panels/radio_panel.h"

namespace pelm::sim {

std::array<uint8_t, RadioPanelSim::kDisplayPositions> RadioPanelSim::LeftDisplay() const {
  return PayloadArray<kDisplayPositions>(kLeftDisplayReport);
}

std::array<uint8_t, RadioPanelSim::kDisplayPositions> RadioPanelSim::RightDisplay() const {
  return PayloadArray<kDisplayPositions>(kRightDisplayReport);
}

void RadioPanelSim::SetControlState(uint8_t dial1, uint8_t dial2, uint8_t switches) {
  SetFeatureAnswer({kControlStateReport, dial1, dial2, switches});
}

}  // namespace pelm::sim
