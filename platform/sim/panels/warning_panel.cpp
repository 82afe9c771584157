#include "platform/sim/panels/warning_panel.h"

#include <algorithm>
#include <tuple>

namespace pelm::sim {

bool WarningPanel::AnswerFeature(uint8_t* report, uint32_t length) {
  if (report[0] != kControlStateReport) return false;
  std::lock_guard hold(mutex_);
  std::fill(report + 1, report + length, uint8_t{0});
  if (length > 1) report[1] = control_;
  return true;
}

// The panel takes no feature reports.
void WarningPanel::ReceiveFeature(const uint8_t*, uint32_t) {}

void WarningPanel::ReceiveOutput(const uint8_t* report, uint32_t length) {
  constexpr uint32_t kReportLength = 2 + std::tuple_size_v<Components>;
  if (report[0] != kIndicatorColorReport || length < kReportLength) return;
  const int indicator = report[1];
  if (indicator < 1 || indicator > kIndicatorCount) return;
  std::lock_guard hold(mutex_);
  std::copy_n(report + 2, indicators_[indicator - 1].size(), indicators_[indicator - 1].begin());
}

WarningPanel::Components WarningPanel::IndicatorColor(int indicator) const {
  std::lock_guard hold(mutex_);
  return indicators_.at(indicator - 1);
}

void WarningPanel::SetControlByte(uint8_t control) {
  std::lock_guard hold(mutex_);
  control_ = control;
}

}  // namespace pelm::sim
