// The second gear panel: the open-time read at the device's feature length,
// control values handed out once, and feature-report lamps.

#include <gtest/gtest.h>

#include "platform/sim/panels/gear2_panel.h"
#include "support/input_capture.h"
#include "models/model_test.h"

namespace pelm::test {
namespace {

using sim::Gear2Panel;
using sim::LogOp;
using sim::Report;

constexpr std::size_t kGear2RecordSize = 7;

class Gear2PanelTest : public ModelTest {};

TEST_F(Gear2PanelTest, OpenReadsTheControlsAtTheFeatureLengthAndSendsNothing) {
  struct Case {
    uint16_t featureLength;
    std::vector<int16_t> values;
    uint8_t control;
  };
  // A feature report too short for the control state gives what it holds.
  for (const Case& c : {Case{9, {-5, 6, -7}, 0x3C}, Case{3, {-5, 6, 0}, 0}}) {
    SCOPED_TRACE(c.featureLength);
    auto device = Plug(Gear2Panel::kProductId, 1, {8, 8, c.featureLength});
    device->PanelAs<Gear2Panel>().SetControls(-5, 6, -7, 0x3C);
    PelmDev_Init(nullptr);
    ASSERT_EQ(device->CountOf(LogOp::GetFeature), 1u);
    EXPECT_EQ(device->LogOf(LogOp::GetFeature)[0].bytes.size(), c.featureLength);
    int16_t values[3] = {};
    uint8_t control = 0xFF;
    ASSERT_EQ(PelmGear2_GetControlVals(0, &values[0], &values[1], &values[2], &control), PELM_SUCCESS);
    EXPECT_EQ(std::vector<int16_t>(values, values + 3), c.values);
    EXPECT_EQ(control, c.control);
    EXPECT_EQ(device->CountOf(LogOp::SetFeature) + device->CountOf(LogOp::WriteOutput), 0u);
    PelmDev_Terminate();
    bus().Reset();
  }
}

TEST_F(Gear2PanelTest, ValuesAreSignExtendedAndClearedWhetherTakenOrNot) {
  auto device = Plug(Gear2Panel::kProductId, 1);
  PelmDev_Init(nullptr);
  InputCapture inputs(kGear2RecordSize);
  device->InjectInput({0x00, 0xFF, 0x80, 0x7F, 0x05});
  ASSERT_TRUE(inputs.WaitForCount(1));
  const auto seen = inputs.Calls();
  EXPECT_EQ(seen[0].modelType, PELM_MODEL_GEAR2);
  EXPECT_EQ(seen[0].record, (Report{0xFF, 0xFF, 0x80, 0xFF, 0x7F, 0x00, 0x05}));

  int16_t values[3] = {};
  uint8_t control = 0;
  ASSERT_EQ(PelmGear2_GetControlVals(0, &values[0], nullptr, &values[2], &control), PELM_SUCCESS);
  EXPECT_EQ(values[0], -1);
  EXPECT_EQ(values[2], 127);
  EXPECT_EQ(control, 5);
  ASSERT_EQ(PelmGear2_GetControlVals(0, &values[0], &values[1], &values[2], &control), PELM_SUCCESS);
  EXPECT_EQ(std::vector<int16_t>(values, values + 3), (std::vector<int16_t>{0, 0, 0}));  // -128 was not kept
  EXPECT_EQ(control, 5);
}

}  // namespace
}  // namespace pelm::test
