// What the six switch and indicator models share: a panel that has gone keeps
// its slot and refuses every operation but the brightness setter.

#include <gtest/gtest.h>

#include <functional>

#include "platform/sim/panels/gear2_panel.h"
#include "platform/sim/panels/gear_panel.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/keypad_panel.h"
#include "platform/sim/panels/knob_panel.h"
#include "platform/sim/panels/warning_panel.h"
#include "switch_model_test.h"

namespace pelm::test {
namespace {

struct ModelCase {
  const char* family;
  uint16_t productId;
  std::function<uint32_t()> count;
  std::function<int32_t(int32_t index)> setBrightness;
  std::function<int32_t(int32_t index)> setLamps;
  std::function<int32_t(int32_t index)> getControls;
  int32_t brightnessWhenGone;  // brightness setters never refuse a panel that has gone
};

std::vector<ModelCase> Models() {
  static uint8_t byte;
  static int16_t value;
  static uint8_t keys[4];
  static uint32_t count;
  return {
      {.family = "PelmKnobs",
       .productId = sim::KnobPanel::kProductId,
       .count = PelmKnobs_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmKnobs_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmKnobs_SetIndicators(i, 1); },
       .getControls = [](int32_t i) { return PelmKnobs_GetControlVals(i, &value, &value, &value, &value, &byte); },
       .brightnessWhenGone = PELM_SUCCESS},
      {.family = "PelmGear",
       .productId = sim::GearPanel::kProductId,
       .count = PelmGear_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmGear_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmGear_SetIndicators(i, 1); },
       .getControls = [](int32_t i) { return PelmGear_GetControlVals(i, &value, &byte); },
       .brightnessWhenGone = PELM_SUCCESS},
      {.family = "PelmKeypad",
       .productId = sim::KeypadPanel::kProductId,
       .count = PelmKeypad_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmKeypad_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmKeypad_SetIndicators(i, 1); },
       .getControls = [](int32_t i) { return PelmKeypad_GetKeycodes(i, keys, &count); },
       .brightnessWhenGone = PELM_SUCCESS},
      {.family = "PelmIoBoard",
       .productId = sim::IoBoardPanel::kProductId,
       .count = PelmIoBoard_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmIoBoard_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmIoBoard_SetIndicators(i, 1, 1, 1, 1); },
       .getControls =
           [](int32_t i) { return PelmIoBoard_GetSwitchVals(i, &byte, &byte, &byte, &byte, &byte, &byte, &byte); },
       .brightnessWhenGone = PELM_ERR_UNSUPPORTED},
      {.family = "PelmGear2",
       .productId = sim::Gear2Panel::kProductId,
       .count = PelmGear2_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmGear2_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmGear2_SetIndicators(i, 1); },
       .getControls = [](int32_t i) { return PelmGear2_GetControlVals(i, &value, &value, &value, &byte); },
       .brightnessWhenGone = PELM_SUCCESS},
      {.family = "PelmWarning",
       .productId = sim::WarningPanel::kProductId,
       .count = PelmWarning_GetNumDevices,
       .setBrightness = [](int32_t i) { return PelmWarning_SetBrightness(i, 1); },
       .setLamps = [](int32_t i) { return PelmWarning_SetIndColorValue(i, 1, 1); },
       .getControls = [](int32_t i) { return PelmWarning_GetControlVals(i, &byte); },
       .brightnessWhenGone = PELM_SUCCESS},
  };
}

class SwitchModelsTest : public SwitchModelTest {};

TEST_F(SwitchModelsTest, APanelThatHasGoneKeepsItsSlotAndIsRefused) {
  for (const ModelCase& model : Models()) {
    SCOPED_TRACE(model.family);
    Plug(model.productId, 1);
    auto gone = Plug(model.productId, 2);
    PelmDev_Init(kHostInstance);
    ASSERT_EQ(model.count(), 2u);
    Disconnect(*gone);
    const std::size_t sentBefore = gone->CountOf(sim::LogOp::SetFeature) + gone->CountOf(sim::LogOp::WriteOutput);
    EXPECT_EQ(model.count(), 1u);
    EXPECT_EQ(model.setBrightness(1), model.brightnessWhenGone);
    EXPECT_EQ(model.setLamps(1), PELM_ERR_NODEVICE);
    EXPECT_EQ(model.getControls(1), PELM_ERR_NODEVICE);
    EXPECT_EQ(gone->CountOf(sim::LogOp::SetFeature) + gone->CountOf(sim::LogOp::WriteOutput), sentBefore);
    EXPECT_EQ(model.getControls(0), PELM_SUCCESS);
    PelmDev_Terminate();
    bus().Reset();
  }
}

}  // namespace
}  // namespace pelm::test
