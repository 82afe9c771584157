// The transponder-code panel through its exports: the digit, brightness, the
// dial and switches, and the open-time read whose answer is not kept.

#include <gtest/gtest.h>

#include "models/display_test_support.h"
#include "models/squawk_panel.h"
#include "platform/sim/panels/squawk_panel.h"

namespace pelm::test {
namespace {

using sim::Report;
using sim::SquawkPanelSim;

class SquawkPanelTest : public DisplayTest {
 protected:
  std::shared_ptr<sim::SimDevice> PlugAndInit() {
    auto device = Plug(SquawkPanelSim::kProductId, 1);
    PelmDev_Init(nullptr);
    return device;
  }
};

TEST_F(SquawkPanelTest, SetDigitDrawsTheFirstCharacterAndAJoinedPoint) {
  const std::vector<std::pair<const char*, uint8_t>> cases = {
      {"7", 0x07}, {"7.", 0x87}, {"-", 0x40}, {".", 0x80}, {"]", 0x0F}, {"A", 0x00}, {"", 0x00}, {"12", 0x06}};
  auto device = PlugAndInit();
  for (const auto& [text, segments] : cases) EXPECT_EQ(PelmSquawk_SetDigit(0, text), PELM_SUCCESS) << text;
  const std::vector<Report> sent = WaitForSent(*device, cases.size());
  ASSERT_EQ(sent.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(sent[i], (Report{3, cases[i].second})) << cases[i].first;
}

TEST_F(SquawkPanelTest, SegmentsAndBrightnessGoOutAsGiven) {
  auto device = PlugAndInit();
  const uint8_t segments = 0xFF;
  EXPECT_EQ(PelmSquawk_SetDigitSegments(0, &segments), PELM_SUCCESS);
  EXPECT_EQ(PelmSquawk_SetBrightness_stdcall(0, 0x1F), PELM_SUCCESS);
  EXPECT_EQ(WaitForSent(*device, 2), (std::vector<Report>{{3, 0xFF}, {4, 0x0F}}));
  EXPECT_EQ(device->PanelAs<SquawkPanelSim>().Digit(), 0xFF);
}

TEST_F(SquawkPanelTest, InputReportsReachTheCallbackAndTheGetter) {
  auto device = PlugAndInit();
  InputCapture capture(sizeof(SquawkInputRecord));
  device->InjectInput({0, 0xFD, 0x81});
  const auto received = capture.WaitFor(1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_SQUAWK);
  EXPECT_EQ(received[0].record, BytesOf(SquawkInputRecord{-3, 0x81}));

  int16_t dial = 0;
  uint8_t switches = 0;
  ASSERT_EQ(PelmSquawk_GetControlVals(0, &dial, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial, -3);
  EXPECT_EQ(switches, 0x81);
  ASSERT_EQ(PelmSquawk_GetControlVals_stdcall(0, &dial, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial, 0);
}

TEST_F(SquawkPanelTest, TheOpenTimeReadIsMadeButTheStateStartsAtZero) {
  auto device = Plug(SquawkPanelSim::kProductId, 1);
  device->PanelAs<SquawkPanelSim>().SetControlState(0x05, 0x81);
  PelmDev_Init(nullptr);
  EXPECT_EQ(SentReports(*device, sim::LogOp::GetFeature), (std::vector<Report>{{5, 0x05, 0x81}}));
  int16_t dial = 7;
  uint8_t switches = 7;
  ASSERT_EQ(PelmSquawk_GetControlVals(0, &dial, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial, 0);
  EXPECT_EQ(switches, 0);
}

}  // namespace
}  // namespace pelm::test
