// The feature reports a panel answers while it is opened and read back, taken
// from the fuzz data: byte 0 picks the model, byte 1 the device's feature
// report length, the rest is every feature answer. After opening, every
// read-back getter of the model runs on the same answers.

#include <cstddef>
#include <cstdint>
#include <algorithm>
#include <memory>
#include <vector>

#include "core/pelm_dev.h"
#include "fuzz/fuzz_device.h"

namespace {

constexpr uint16_t kLongestReport = 64;

// Answers every feature read with the fuzz bytes (the report ID kept in byte
// 0, zeros past the data), takes every report sent.
class HostilePanel : public pelm::sim::Panel {
 public:
  explicit HostilePanel(std::vector<uint8_t> answer) : answer_(std::move(answer)) {}
  bool AnswerFeature(uint8_t* report, uint32_t length) override {
    std::fill(report + 1, report + length, uint8_t{0});
    std::copy_n(answer_.begin(), std::min<std::size_t>(answer_.size(), length - 1), report + 1);
    return true;
  }
  void ReceiveFeature(const uint8_t*, uint32_t) override {}
  void ReceiveOutput(const uint8_t*, uint32_t) override {}

 private:
  const std::vector<uint8_t> answer_;
};

// The getters that read the device, each on slot 0 of its model.
void ReadBack() {
  uint8_t byte = 0;
  uint16_t level16 = 0;
  uint32_t level32 = 0;
  PelmButtons_GetIndicators(0, &byte);
  PelmButtons_GetBrightness(0, &level16);
  PelmToggles_GetIndicators(0, &byte);
  PelmKnobs_GetIndicators(0, &byte);
  PelmKnobs_GetBrightness(0, &level16);
  PelmGear_GetIndicators(0, &byte);
  PelmGear_GetBrightness(0, &level16);
  PelmKeypad_GetIndicators(0, &byte);
  PelmKeypad_GetBrightness(0, &level32);
  PelmGear2_GetIndicators(0, &byte);
  PelmGear2_GetBrightness(0, &level16);
  PelmRadio_GetBrightness(0, &level16);
  PelmRadio_GetIndicators(0, &byte);
  PelmAlpha2_GetBrightness(0, &level16);
  PelmSquawk_GetBrightness(0, &level32);
  PelmAutopilot_GetBrightness(0, &level16);
  PelmAutopilot_GetIndicators(0, &byte);
  PelmAutopilot2_GetBrightness(0, &level16);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const pelm::ModelDescriptor& model = pelm::fuzz::ModelFromByte(data[0]);
  const auto featureLength = static_cast<uint16_t>(data[1] % (kLongestReport + 1));

  pelm::sim::Bus& bus = pelm::sim::Bus::Instance();
  bus.Reset();
  bus.PlugWithPanel(pelm::fuzz::DescriptionFor(model, {kLongestReport, kLongestReport, featureLength}),
                    std::make_unique<HostilePanel>(std::vector<uint8_t>(data + 2, data + size)));
  PelmDev_Init(nullptr);
  ReadBack();
  PelmDev_Terminate();
  bus.Reset();
  return 0;
}
