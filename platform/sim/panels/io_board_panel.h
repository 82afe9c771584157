#pragma once
// The simulated I/O board: four output bytes set by output report 2, seven
// input bytes that feature report 4 gives (input changes reach the library as
// input reports, SimDevice::InjectInput). It answers no other feature read.

#include <array>
#include <cstdint>
#include <mutex>

#include "platform/sim/panel.h"

namespace pelm::sim {

class IoBoardPanel : public Panel {
 public:
  static constexpr uint16_t kProductId = 0x002D;
  static constexpr uint8_t kOutputReport = 2;
  static constexpr uint8_t kInputStateReport = 4;
  using Outputs = std::array<uint8_t, 4>;
  using Inputs = std::array<uint8_t, 7>;

  bool AnswerFeature(uint8_t* report, uint32_t length) override;
  void ReceiveFeature(const uint8_t* report, uint32_t length) override;
  void ReceiveOutput(const uint8_t* report, uint32_t length) override;

  Outputs LastOutputs() const;
  void SetInputs(const Inputs& inputs);

 private:
  mutable std::mutex mutex_;
  Outputs outputs_{};
  Inputs inputs_{};
};

}  // namespace pelm::sim
