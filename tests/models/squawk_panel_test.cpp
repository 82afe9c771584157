// The transponder-code panel through its exports: the digit, the dial and
// switches, and the open-time read whose answer is not kept.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/squawk_panel.h"

namespace pelm::test {
namespace {

using sim::Report;
using sim::SquawkPanelSim;

class SquawkPanelTest : public ModelTest {};

TEST_F(SquawkPanelTest, TheDigitShowsTheFirstCharacterAndAJoinedPoint) {
  static const uint8_t kAllSegments = 0xFF;
  auto device = PlugAndInit(SquawkPanelSim::kProductId);
  ExpectSent(*device, {
      {"segments", [] { return PelmSquawk_SetDigitSegments(0, &kAllSegments); }, {3, 0xFF}},
      {"first character and its point", [] { return PelmSquawk_SetDigit(0, "7.5"); }, {3, 0x87}},
  });
}

TEST_F(SquawkPanelTest, TheDialCountIsHandedOutOnce) {
  auto device = PlugAndInit(SquawkPanelSim::kProductId);
  Deliver(*device, {{0, 0xFD, 0x81}});
  EXPECT_EQ(Read(PelmSquawk_GetControlVals), (Values{-3, 0x81}));
  int16_t dial = 7;
  ASSERT_EQ(PelmSquawk_GetControlVals_stdcall(0, &dial, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial, 0);
}

TEST_F(SquawkPanelTest, TheOpenTimeReadIsMadeButTheStateStartsAtZero) {
  auto device = Plug(SquawkPanelSim::kProductId, 1);
  device->PanelAs<SquawkPanelSim>().SetControlState(0x05, 0x81);
  PelmDev_Init(nullptr);
  EXPECT_EQ(SentReports(*device, sim::LogOp::GetFeature), (std::vector<Report>{{5, 0x05, 0x81}}));
  EXPECT_EQ(Read(PelmSquawk_GetControlVals), (Values{0, 0}));
}

}  // namespace
}  // namespace pelm::test
