#pragma once
// The simulated warning panel: six indicators, each lit by the three colour
// components of the last output report 2 sent to it (2, indicator 1 to 6,
// components), and a control byte that feature report 4 gives. It answers no
// other feature read.

#include <array>
#include <cstdint>
#include <mutex>

#include "platform/sim/panel.h"

namespace pelm::sim {

class WarningPanel : public Panel {
 public:
  static constexpr uint16_t kProductId = 0x002C;
  static constexpr uint8_t kIndicatorColorReport = 2;
  static constexpr uint8_t kControlStateReport = 4;
  static constexpr int kIndicatorCount = 6;
  using Components = std::array<uint8_t, 3>;

  bool AnswerFeature(uint8_t* report, uint32_t length) override;
  void ReceiveFeature(const uint8_t* report, uint32_t length) override;
  void ReceiveOutput(const uint8_t* report, uint32_t length) override;

  // The components indicator 1 to 6 shows.
  Components IndicatorColor(int indicator) const;
  void SetControlByte(uint8_t control);

 private:
  mutable std::mutex mutex_;
  std::array<Components, kIndicatorCount> indicators_{};
  uint8_t control_ = 0;
};

}  // namespace pelm::sim
