#include "platform/sim/panels/display_panel.h"

namespace pelm::sim {

std::vector<uint8_t> DisplayPanelSim::Payload(uint8_t reportId, std::size_t count) const {
  std::vector<uint8_t> bytes(count, 0);
  const std::optional<Report> last = LastFeature(reportId);
  if (!last) return bytes;
  for (std::size_t i = 0; i < count && i + 1 < last->size(); ++i) bytes[i] = (*last)[i + 1];
  return bytes;
}

}  // namespace pelm::sim
