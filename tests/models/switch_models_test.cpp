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

uint8_t byte[7];
int16_t value[4];
uint32_t count;

struct ModelCase {
  const char* family;
  uint16_t productId;
  uint32_t (*devices)();
  // The statuses of the brightness setter, a lamp setter and a control getter.
  std::function<std::vector<int32_t>(int32_t index)> statuses;
  int32_t brightnessWhenGone;
};

const ModelCase kModels[] = {
    {"PelmKnobs", sim::KnobPanel::kProductId, PelmKnobs_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmKnobs_SetBrightness(i, 1), PelmKnobs_SetIndicators(i, 1),
               PelmKnobs_GetControlVals(i, &value[0], &value[1], &value[2], &value[3], byte)};
     },
     PELM_SUCCESS},
    {"PelmGear", sim::GearPanel::kProductId, PelmGear_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmGear_SetBrightness(i, 1), PelmGear_SetIndicators(i, 1), PelmGear_GetControlVals(i, value, byte)};
     },
     PELM_SUCCESS},
    {"PelmKeypad", sim::KeypadPanel::kProductId, PelmKeypad_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmKeypad_SetBrightness(i, 1), PelmKeypad_SetIndicators(i, 1), PelmKeypad_GetKeycodes(i, byte, &count)};
     },
     PELM_SUCCESS},
    {"PelmIoBoard", sim::IoBoardPanel::kProductId, PelmIoBoard_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmIoBoard_SetBrightness(i, 1), PelmIoBoard_SetIndicators(i, 1, 1, 1, 1),
               PelmIoBoard_GetSwitchVals(i, &byte[0], &byte[1], &byte[2], &byte[3], &byte[4], &byte[5], &byte[6])};
     },
     PELM_ERR_UNSUPPORTED},  // the board has no brightness at all
    {"PelmGear2", sim::Gear2Panel::kProductId, PelmGear2_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmGear2_SetBrightness(i, 1), PelmGear2_SetIndicators(i, 1),
               PelmGear2_GetControlVals(i, &value[0], &value[1], &value[2], byte)};
     },
     PELM_SUCCESS},
    {"PelmWarning", sim::WarningPanel::kProductId, PelmWarning_GetNumDevices,
     [](int32_t i) -> std::vector<int32_t> {
       return {PelmWarning_SetBrightness(i, 1), PelmWarning_SetIndColorValue(i, 1, 1),
               PelmWarning_GetControlVals(i, byte)};
     },
     PELM_SUCCESS},
};

class SwitchModelsTest : public SwitchModelTest {};

TEST_F(SwitchModelsTest, APanelThatHasGoneKeepsItsSlotAndIsRefused) {
  for (const ModelCase& model : kModels) {
    SCOPED_TRACE(model.family);
    Plug(model.productId, 1);
    auto gone = Plug(model.productId, 2);
    PelmDev_Init(kHostInstance);
    ASSERT_EQ(model.devices(), 2u);
    Disconnect(*gone);
    const std::size_t sentBefore = gone->CountOf(sim::LogOp::SetFeature) + gone->CountOf(sim::LogOp::WriteOutput);
    EXPECT_EQ(model.devices(), 1u);
    const std::vector<int32_t> refused = {model.brightnessWhenGone, PELM_ERR_NODEVICE, PELM_ERR_NODEVICE};
    EXPECT_EQ(model.statuses(1), refused);
    EXPECT_EQ(gone->CountOf(sim::LogOp::SetFeature) + gone->CountOf(sim::LogOp::WriteOutput), sentBefore);
    EXPECT_EQ(model.statuses(0).back(), PELM_SUCCESS);
    PelmDev_Terminate();
    bus().Reset();
  }
}

}  // namespace
}  // namespace pelm::test
