#include "platform/sim/panels/autopilot_panels.h"

#include <algorithm>
#include <span>

namespace pelm::sim {
namespace {

struct DisplayReport {
  char name;
  uint8_t reportId;
  std::size_t positions;
};

constexpr DisplayReport kAutopilotDisplays[] = {
    {'A', 3, 3}, {'B', 5, 3}, {'C', 7, 3}, {'D', 9, 6}, {'E', 11, 6}};
constexpr DisplayReport kAutopilot2Displays[] = {
    {'A', 3, 3}, {'B', 5, 5}, {'C', 7, 5}, {'D', 9, 5}, {'E', 11, 5}, {'F', 13, 3}};

const DisplayReport* Find(std::span<const DisplayReport> displays, char name) {
  const auto found = std::find_if(displays.begin(), displays.end(), [name](auto& d) { return d.name == name; });
  return found == displays.end() ? nullptr : &*found;
}

constexpr std::size_t kWordBytes = 4;

}  // namespace

std::vector<uint8_t> AutopilotPanelSim::Display(char name) const {
  const DisplayReport* display = Find(kAutopilotDisplays, name);
  return display ? Payload(display->reportId, display->positions) : std::vector<uint8_t>{};
}

void AutopilotPanelSim::SetControlState(const std::array<uint8_t, kDialCount>& dials, uint8_t switches1,
                                        uint8_t switches2) {
  // Sized up front: GCC 12 at -O3 misreads an insert into a one-byte vector
  // as an out-of-bounds copy.
  Report report(1 + kDialCount + 2);
  report[0] = kControlStateReport;
  std::copy(dials.begin(), dials.end(), report.begin() + 1);
  report[1 + kDialCount] = switches1;
  report[2 + kDialCount] = switches2;
  SetFeatureAnswer(report);
}

std::vector<uint8_t> Autopilot2PanelSim::Display(char name) const {
  const DisplayReport* display = Find(kAutopilot2Displays, name);
  return display ? Payload(display->reportId, display->positions) : std::vector<uint8_t>{};
}

uint32_t Autopilot2PanelSim::Indicators() const {
  const std::vector<uint8_t> bytes = Payload(kIndicatorReport, kWordBytes);
  uint32_t word = 0;
  for (uint8_t byte : bytes) word = word << 8 | byte;  // most significant byte first
  return word;
}

void Autopilot2PanelSim::SetControlState(const std::array<uint8_t, kDialBytes>& dialBytes, uint32_t switches) {
  Report report(1 + kDialBytes);
  report[0] = kControlStateReport;
  std::copy(dialBytes.begin(), dialBytes.end(), report.begin() + 1);
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
