// The knob panel: counts handed out once, the switch byte, and the indicator
// setter that reads the lamps back first.

#include <gtest/gtest.h>

#include "platform/sim/panels/knob_panel.h"
#include "support/input_capture.h"
#include "models/model_test.h"

namespace pelm::test {
namespace {

using sim::KnobPanel;
using sim::LogOp;
using sim::Report;

constexpr std::size_t kKnobsRecordSize = 9;

class KnobPanelTest : public ModelTest {
 protected:
  static std::vector<int16_t> TakeCounts(uint8_t* switches = nullptr) {
    int16_t k[4] = {};
    EXPECT_EQ(PelmKnobs_GetControlVals(0, &k[0], &k[1], &k[2], &k[3], switches), PELM_SUCCESS);
    return {k[0], k[1], k[2], k[3]};
  }
};

TEST_F(KnobPanelTest, CountsAreSignExtendedHandedOutOnceAndReplaced) {
  auto device = Plug(KnobPanel::kProductId, 1);
  device->PanelAs<KnobPanel>().SetSwitchByte(0xA4);
  PelmDev_Init(nullptr);
  uint8_t switches = 0;
  TakeCounts(&switches);
  EXPECT_EQ(switches, 0xA4);  // from the open-time read

  InputCapture inputs(kKnobsRecordSize);
  device->InjectInput({0, 0x03, 0xFD, 0x00, 0x80, 0x11});
  ASSERT_TRUE(inputs.WaitForCount(1));
  const auto seen = inputs.Calls();
  EXPECT_EQ(seen[0].modelType, PELM_MODEL_KNOBS);
  EXPECT_EQ(seen[0].record, (Report{0x03, 0x00, 0xFD, 0xFF, 0x00, 0x00, 0x80, 0xFF, 0x11}));
  EXPECT_EQ(TakeCounts(&switches), (std::vector<int16_t>{3, -3, 0, -128}));
  EXPECT_EQ(TakeCounts(), (std::vector<int16_t>{0, 0, 0, 0}));
  EXPECT_EQ(switches, 0x11);

  device->InjectInput({0, 2, 5, 6, 7, 0});
  device->InjectInput({0, 1, 5, 6, 7, 0});
  ASSERT_TRUE(inputs.WaitForCount(3));
  EXPECT_EQ(TakeCounts(), (std::vector<int16_t>{1, 5, 6, 7}));  // 1, not 3: counts are not added up
}

TEST_F(KnobPanelTest, SetIndicatorsReadsTheLampsFirstAndReportsAFailedRead) {
  auto device = Plug(KnobPanel::kProductId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmKnobs_SetIndicators(0, 0x5C), PELM_SUCCESS);
  EXPECT_EQ(PelmKnobs_SetBrightness(0, 0x2A), PELM_SUCCESS);
  ASSERT_EQ(WaitForSent(*device, 2, LogOp::SetFeature), (std::vector<Report>{{2, 0x5C}, {3, 0x0A}}));
  EXPECT_EQ(device->LogOf(LogOp::GetFeature).back().bytes, (Report{2, 0}));
  uint16_t level = 0;
  ASSERT_EQ(PelmKnobs_GetBrightness(0, &level), PELM_SUCCESS);
  EXPECT_EQ(level, 0x0A);

  device->FailFeatureReads(true);
  EXPECT_EQ(PelmKnobs_SetIndicators(0, 0x33), PELM_ERR_IO);
  EXPECT_EQ(WaitForSent(*device, 3, LogOp::SetFeature).back(), (Report{2, 0x33}));
  EXPECT_EQ(device->PanelAs<KnobPanel>().Indicators(), 0x33);
}

}  // namespace
}  // namespace pelm::test
