#include "platform/sim/panels/lamp_panel.h"

#include <algorithm>

namespace pelm::sim {

bool LampPanel::AnswerFeature(uint8_t* report, uint32_t length) {
  std::lock_guard hold(mutex_);
  std::fill(report + 1, report + length, uint8_t{0});
  switch (report[0]) {
    case kIndicatorReport:
      if (length > 1) report[1] = indicators_;
      return true;
    case kBrightnessReport:
      if (length > 1) report[1] = brightness_;
      return true;
    case kControlStateReport: {
      const std::size_t fits = std::min<std::size_t>(length - 1, controlState_.size());
      std::copy_n(controlState_.begin(), fits, report + 1);
      return true;
    }
    default:
      return false;
  }
}

void LampPanel::ReceiveFeature(const uint8_t* report, uint32_t length) {
  if (lampReports_ == LampReports::Feature) ReceiveLamps(report, length);
}

void LampPanel::ReceiveOutput(const uint8_t* report, uint32_t length) {
  if (lampReports_ == LampReports::Output) ReceiveLamps(report, length);
}

void LampPanel::ReceiveLamps(const uint8_t* report, uint32_t length) {
  if (length < 2) return;
  std::lock_guard hold(mutex_);
  if (report[0] == kIndicatorReport) indicators_ = report[1];
  if (report[0] == kBrightnessReport) brightness_ = report[1];
}

uint8_t LampPanel::Indicators() const {
  std::lock_guard hold(mutex_);
  return indicators_;
}

uint8_t LampPanel::Brightness() const {
  std::lock_guard hold(mutex_);
  return brightness_;
}

void LampPanel::SetControlState(const Report& bytesAfterId) {
  std::lock_guard hold(mutex_);
  controlState_ = bytesAfterId;
}

}  // namespace pelm::sim
