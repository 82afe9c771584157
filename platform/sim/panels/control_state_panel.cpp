#include "platform/sim/panels/control_state_panel.h"

#include <algorithm>

namespace pelm::sim {

ControlStatePanel::ControlStatePanel(std::optional<uint8_t> stateReportId, uint32_t reportLength)
    : stateReportId_(stateReportId), state_(reportLength, 0) {}

bool ControlStatePanel::AnswerFeature(uint8_t* report, uint32_t length) {
  // Like the device, the panel stalls a request for a report it does not have.
  if (!stateReportId_ || report[0] != *stateReportId_) return false;
  std::lock_guard hold(mutex_);
  std::fill(report + 1, report + length, uint8_t{0});
  const std::size_t answered = std::min<std::size_t>(length, state_.size());
  if (answered > 1) std::copy(state_.begin() + 1, state_.begin() + answered, report + 1);
  return true;
}

Report ControlStatePanel::InputReport() const {
  std::lock_guard hold(mutex_);
  return state_;
}

void ControlStatePanel::SetReportBytes(const Report& bytesAfterId) {
  Update([&](Report& state) {
    const std::size_t copied = std::min(bytesAfterId.size(), state.size() - 1);
    std::copy(bytesAfterId.begin(), bytesAfterId.begin() + copied, state.begin() + 1);
  });
}

void ControlStatePanel::Update(const std::function<void(Report&)>& change) {
  std::lock_guard hold(mutex_);
  change(state_);
}

}  // namespace pelm::sim
