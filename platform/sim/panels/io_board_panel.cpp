#include "platform/sim/panels/io_board_panel.h"

#include <algorithm>

namespace pelm::sim {

bool IoBoardPanel::AnswerFeature(uint8_t* report, uint32_t length) {
  if (report[0] != kInputStateReport) return false;
  std::lock_guard hold(mutex_);
  std::fill(report + 1, report + length, uint8_t{0});
  std::copy_n(inputs_.begin(), std::min<std::size_t>(length - 1, inputs_.size()), report + 1);
  return true;
}

// The board takes no feature reports.
void IoBoardPanel::ReceiveFeature(const uint8_t*, uint32_t) {}

void IoBoardPanel::ReceiveOutput(const uint8_t* report, uint32_t length) {
  if (report[0] != kOutputReport || length < 1 + outputs_.size()) return;
  std::lock_guard hold(mutex_);
  std::copy_n(report + 1, outputs_.size(), outputs_.begin());
}

IoBoardPanel::Outputs IoBoardPanel::LastOutputs() const {
  std::lock_guard hold(mutex_);
  return outputs_;
}

void IoBoardPanel::SetInputs(const Inputs& inputs) {
  std::lock_guard hold(mutex_);
  inputs_ = inputs;
}

}  // namespace pelm::sim
