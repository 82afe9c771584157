// The two gear panels: control values handed out once, the open-time reads,
// the first panel's indicator bits that are always set.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/gear2_panel.h"
#include "platform/sim/panels/gear_panel.h"

namespace pelm::test {
namespace {

using sim::Gear2Panel;
using sim::GearPanel;
using sim::LogOp;
using sim::Report;

class GearPanelsTest : public ModelTest {};

TEST_F(GearPanelsTest, TheControlValueIsSignExtendedAndClearedEvenWhenSkipped) {
  auto device = Plug(GearPanel::kProductId, 1);
  device->PanelAs<GearPanel>().SetControlByte(0x21);
  PelmDev_Init(nullptr);
  EXPECT_EQ(Read(PelmGear_GetControlVals), (Values{0, 0x21}));
  Deliver(*device, {{0, 0xFE, 0x40}});
  EXPECT_EQ(Read(PelmGear_GetControlVals), (Values{-2, 0x40}));

  Deliver(*device, {{0, 0x05, 0x41}});
  uint8_t control = 0;
  ASSERT_EQ(PelmGear_GetControlVals(0, nullptr, &control), PELM_SUCCESS);
  EXPECT_EQ(Read(PelmGear_GetControlVals), (Values{0, 0x41}));
}

TEST_F(GearPanelsTest, IndicatorBitsZeroAndOneAreAlwaysSent) {
  auto device = Plug(GearPanel::kProductId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmGear_SetIndicators(0, 0), PELM_SUCCESS);
  EXPECT_EQ(PelmGear_SetIndicators(0, 0x1F0), PELM_SUCCESS);
  EXPECT_EQ(WaitForSent(*device, 2, LogOp::SetFeature), (std::vector<Report>{{2, 0x03}, {2, 0xF3}}));
  EXPECT_EQ(Read(PelmGear_GetIndicators), Values{0xF3});
}

TEST_F(GearPanelsTest, SecondPanelOpenReadsTheControlsAtTheFeatureLengthAndSendsNothing) {
  struct Case {
    uint16_t featureLength;
    Values controls;
  };
  // A feature report too short for the control state gives what it holds.
  for (const Case& c : {Case{9, {-5, 6, -7, 0x3C}}, Case{3, {-5, 6, 0, 0}}}) {
    SCOPED_TRACE(c.featureLength);
    auto device = Plug(Gear2Panel::kProductId, 1, {8, 8, c.featureLength});
    device->PanelAs<Gear2Panel>().SetControls(-5, 6, -7, 0x3C);
    PelmDev_Init(nullptr);
    ASSERT_EQ(device->CountOf(LogOp::GetFeature), 1u);
    EXPECT_EQ(device->LogOf(LogOp::GetFeature)[0].bytes.size(), c.featureLength);
    EXPECT_EQ(Read(PelmGear2_GetControlVals), c.controls);
    EXPECT_EQ(device->CountOf(LogOp::SetFeature) + device->CountOf(LogOp::WriteOutput), 0u);
    PelmDev_Terminate();
    bus().Reset();
  }
}

TEST_F(GearPanelsTest, SecondPanelValuesAreClearedWhetherTakenOrNot) {
  auto device = Plug(Gear2Panel::kProductId, 1);
  PelmDev_Init(nullptr);
  Deliver(*device, {{0x00, 0xFF, 0x80, 0x7F, 0x05}});
  int16_t values[3] = {};
  uint8_t control = 0;
  ASSERT_EQ(PelmGear2_GetControlVals(0, &values[0], nullptr, &values[2], &control), PELM_SUCCESS);
  EXPECT_EQ(values[0], -1);
  EXPECT_EQ(values[2], 127);
  EXPECT_EQ(control, 5);
  EXPECT_EQ(Read(PelmGear2_GetControlVals), (Values{0, 0, 0, 5}));  // -128 was not kept
}

}  // namespace
}  // namespace pelm::test
