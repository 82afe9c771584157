// The keyboard unit: key codes of the open-time report and lamps as output
// reports.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/keypad_panel.h"

namespace pelm::test {
namespace {

using sim::KeypadPanel;
using sim::LogOp;
using sim::Report;

class KeypadTest : public ModelTest {};

TEST_F(KeypadTest, KeyCodesComeNonZeroFirst) {
  struct Case {
    Report codesAtOpen;
    bool readFails;
    Report keys;
    uint32_t count;
  };
  const Case cases[] = {
      {{0x21, 0x00, 0x35}, false, {0x21, 0x35, 0, 0}, 2},
      {{0x11, 0x12, 0x13}, false, {0x11, 0x12, 0x13, 0}, 3},
      {{0x00, 0x00, 0x00}, false, {0, 0, 0, 0}, 0},
      {{0x21, 0x22, 0x23}, true, {0, 0, 0, 0}, 0},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << "case " << &c - cases);
    auto device = Plug(KeypadPanel::kProductId, 1);
    device->PanelAs<KeypadPanel>().SetKeyCodes(c.codesAtOpen[0], c.codesAtOpen[1], c.codesAtOpen[2]);
    device->FailFeatureReads(c.readFails);
    PelmDev_Init(nullptr);
    uint8_t keys[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    uint32_t count = 99;
    ASSERT_EQ(PelmKeypad_GetKeycodes(0, keys, &count), PELM_SUCCESS);
    EXPECT_EQ(Report(keys, keys + 4), c.keys);
    EXPECT_EQ(count, c.count);
    EXPECT_EQ(device->LogOf(LogOp::GetFeature).at(0).bytes.size(), 4u);  // read with length 4
    EXPECT_EQ(PelmKeypad_GetKeycodes(0, keys, nullptr), PELM_ERR_PARAM);
    PelmDev_Terminate();
    bus().Reset();
  }
}

TEST_F(KeypadTest, LampsGoOutAsOutputReportsRetriedOnAFreshHandle) {
  auto device = Plug(KeypadPanel::kProductId, 1);
  PelmDev_Init(nullptr);
  device->FailNextSends(1);
  ASSERT_EQ(PelmKeypad_SetBrightness(0, 0xFF), PELM_SUCCESS);
  ASSERT_EQ(PelmKeypad_SetIndicators(0, 0x142), PELM_SUCCESS);
  ASSERT_EQ(WaitForSent(*device, 2, LogOp::WriteOutput), (std::vector<Report>{{3, 0x0F}, {2, 0x42}}));
  const auto attempts = device->LogOf(LogOp::WriteOutput);
  ASSERT_EQ(attempts.size(), 3u);
  EXPECT_FALSE(attempts[0].succeeded);
  EXPECT_NE(attempts[1].handleId, attempts[0].handleId);
  EXPECT_EQ(device->CountOf(LogOp::SetFeature), 0u);
  EXPECT_EQ(Read(PelmKeypad_GetBrightness), Values{0x0F});
}

}  // namespace
}  // namespace pelm::test
