// The knob panel: counts handed out once, the switch byte, and the indicator
// setter that reads the lamps back first.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/knob_panel.h"

namespace pelm::test {
namespace {

using sim::KnobPanel;
using sim::LogOp;
using sim::Report;

// The getter gives the four counts and the switch byte.
class KnobPanelTest : public ModelTest {};

TEST_F(KnobPanelTest, CountsAreHandedOutOnceAndReplaced) {
  auto device = Plug(KnobPanel::kProductId, 1);
  device->PanelAs<KnobPanel>().SetSwitchByte(0xA4);
  PelmDev_Init(nullptr);
  EXPECT_EQ(Read(PelmKnobs_GetControlVals), (Values{0, 0, 0, 0, 0xA4}));  // from the open-time read

  Deliver(*device, {{0, 0x03, 0xFD, 0x00, 0x80, 0x11}});
  EXPECT_EQ(Read(PelmKnobs_GetControlVals), (Values{3, -3, 0, -128, 0x11}));
  EXPECT_EQ(Read(PelmKnobs_GetControlVals), (Values{0, 0, 0, 0, 0x11}));

  Deliver(*device, {{0, 2, 5, 6, 7, 0}, {0, 1, 5, 6, 7, 0}});
  EXPECT_EQ(Read(PelmKnobs_GetControlVals), (Values{1, 5, 6, 7, 0}));  // 1, not 3: counts are not added up
}

TEST_F(KnobPanelTest, SetIndicatorsReadsTheLampsFirstAndReportsAFailedRead) {
  auto device = Plug(KnobPanel::kProductId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmKnobs_SetIndicators(0, 0x5C), PELM_SUCCESS);
  EXPECT_EQ(PelmKnobs_SetBrightness(0, 0x2A), PELM_SUCCESS);
  ASSERT_EQ(WaitForSent(*device, 2, LogOp::SetFeature), (std::vector<Report>{{2, 0x5C}, {3, 0x0A}}));
  EXPECT_EQ(device->LogOf(LogOp::GetFeature).back().bytes, (Report{2, 0}));
  EXPECT_EQ(Read(PelmKnobs_GetBrightness), Values{0x0A});

  device->FailFeatureReads(true);
  EXPECT_EQ(PelmKnobs_SetIndicators(0, 0x33), PELM_ERR_IO);
  EXPECT_EQ(WaitForSent(*device, 3, LogOp::SetFeature).back(), (Report{2, 0x33}));
  EXPECT_EQ(device->PanelAs<KnobPanel>().Indicators(), 0x33);
}

}  // namespace
}  // namespace pelm::test
