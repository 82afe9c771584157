// The gear panel: the control value handed out once and the indicator bits
// that are always set.

#include <gtest/gtest.h>

#include "platform/sim/panels/gear_panel.h"
#include "support/input_capture.h"
#include "models/model_test.h"

namespace pelm::test {
namespace {

using sim::GearPanel;
using sim::LogOp;
using sim::Report;

constexpr std::size_t kGearRecordSize = 3;

class GearPanelTest : public ModelTest {};

TEST_F(GearPanelTest, TheControlValueIsSignExtendedAndClearedEvenWhenSkipped) {
  auto device = Plug(GearPanel::kProductId, 1);
  device->PanelAs<GearPanel>().SetControlByte(0x21);
  PelmDev_Init(nullptr);
  int16_t value = 7;
  uint8_t control = 0;
  ASSERT_EQ(PelmGear_GetControlVals(0, &value, &control), PELM_SUCCESS);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(control, 0x21);

  InputCapture inputs(kGearRecordSize);
  device->InjectInput({0, 0xFE, 0x40});
  ASSERT_TRUE(inputs.WaitForCount(1));
  const auto seen = inputs.Calls();
  EXPECT_EQ(seen[0].record, (Report{0xFE, 0xFF, 0x40}));
  ASSERT_EQ(PelmGear_GetControlVals(0, &value, &control), PELM_SUCCESS);
  EXPECT_EQ(value, -2);
  EXPECT_EQ(control, 0x40);

  device->InjectInput({0, 0x05, 0x41});
  ASSERT_TRUE(inputs.WaitForCount(2));
  ASSERT_EQ(PelmGear_GetControlVals(0, nullptr, &control), PELM_SUCCESS);
  ASSERT_EQ(PelmGear_GetControlVals(0, &value, &control), PELM_SUCCESS);
  EXPECT_EQ(value, 0);
  EXPECT_EQ(control, 0x41);
}

TEST_F(GearPanelTest, IndicatorBitsZeroAndOneAreAlwaysSent) {
  auto device = Plug(GearPanel::kProductId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmGear_SetIndicators(0, 0), PELM_SUCCESS);
  EXPECT_EQ(PelmGear_SetIndicators(0, 0x1F0), PELM_SUCCESS);
  EXPECT_EQ(WaitForSent(*device, 2, LogOp::SetFeature), (std::vector<Report>{{2, 0x03}, {2, 0xF3}}));
  uint8_t indicators = 0;
  ASSERT_EQ(PelmGear_GetIndicators(0, &indicators), PELM_SUCCESS);
  EXPECT_EQ(indicators, 0xF3);
}

}  // namespace
}  // namespace pelm::test
