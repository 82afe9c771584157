#include "tools/pelmctl/switch_panel_state.h"

namespace pelmctl {

uint8_t LastPayloadByte(pelm::sim::SimDevice& device, uint8_t reportId) {
  const auto report = device.PanelAs<pelm::sim::GenericPanel>().LastFeature(reportId);
  return report && report->size() > 1 ? (*report)[1] : 0;
}

}  // namespace pelmctl
