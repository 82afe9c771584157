#include "platform/sim/panels/autopilot_panels.h"

#include <algorithm>
#include <span>

namespace pelm::sim {
namespace {

const DisplayReport* Find(std::span<const DisplayReport> displays, char name) {
  const auto found = std::find_if(displays.begin(), displays.end(), [name](auto& d) { return d.name == name; });
  return found == displays.end() ? nullptr : &*found;
}

constexpr std::size_t kWordBytes = 4;

}  // namespace

std::vector<uint8_t> AutopilotPanelSim::Display(char name) const {
  const DisplayReport* display = Find(kDisplays, name);
  return display ? Payload(display->reportId, display->positions) : std::vector<uint8_t>{};
}

void AutopilotPanelSim::SetControlState(const std::array<uint8_t, kDialCount>& dials, uint8_t switches1,
                                        uint8_t switches2) {
  // Built whole rather than grown from one byte: GCC 12 at -O3 warns falsely
  // (array-bounds) about inserting into a one-byte vector.
  Report report(dials.begin(), dials.end());
  report.insert(report.begin(), kControlStateReport);
  report.push_back(switches1);
  report.push_back(switches2);
  SetFeatureAnswer(report);
}

std::vector<uint8_t> Autopilot2PanelSim::Display(char name) const {
  const DisplayReport* display = Find(kDisplays, name);
  return display ? Payload(display->reportId, display->positions) : std::vector<uint8_t>{};
}

uint32_t Autopilot2PanelSim::Indicators() const {
  const std::vector<uint8_t> bytes = Payload(kIndicatorReport, kWordBytes);
  uint32_t word = 0;
  for (uint8_t byte : bytes) word = word << 8 | byte;  // most significant byte first
  return word;
}

void Autopilot2PanelSim::SetControlState(const std::array<uint8_t, kDialBytes>& dialBytes, uint32_t switches) {
  Report report(dialBytes.begin(), dialBytes.end());
  report.insert(report.begin(), kControlStateReport);
  for (int shift = 24; shift >= 0; shift -= 8) report.push_back(static_cast<uint8_t>(switches >> shift));
  SetFeatureAnswer(report);
}

void Autopilot2PanelSim::ReceiveOutput(const uint8_t* report, uint32_t length) {
  GenericPanel::ReceiveOutput(report, length);
  // The padding bytes stay in the stored report; the readers look only at the
  // bytes each report carries.
  GenericPanel::ReceiveFeature(report, length);
}

}  // namespace pelm::sim
