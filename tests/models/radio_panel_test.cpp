// The radio panel through its exports: display, lamp and brightness reports,
// input decoding and the open-time control-state read.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/guarded_memory.h"

namespace pelm::test {
namespace {

using sim::RadioPanelSim;
using sim::Report;

class RadioPanelTest : public ModelTest {};

TEST_F(RadioPanelTest, SettersSendTheirFeatureReportsByteForByte) {
  static const uint8_t kSegments[] = {0xFF, 0x80, 0x01, 0x02, 0x04, 0x08};
  auto device = PlugAndInit(RadioPanelSim::kProductId);
  ExpectSent(*device, {
      {"leading point blank", [] { return PelmRadio_SetLDisplayText(0, ".5"); }, {3, 0, 0x6D, 0, 0, 0, 0}},
      {"doubled point", [] { return PelmRadio_SetLDisplayText_stdcall(0, "1..2"); }, {3, 0x86, 0, 0x5B, 0, 0, 0}},
      {"cut at six", [] { return PelmRadio_SetRDisplayText(0, "123456789"); }, {5, 6, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
      {"left segments", [] { return PelmRadio_SetLDisplaySegments(0, kSegments); }, {3, 0xFF, 0x80, 1, 2, 4, 8}},
      {"right segments", [] { return PelmRadio_SetRDisplaySegments_stdcall(0, kSegments); },
       {5, 0xFF, 0x80, 1, 2, 4, 8}},
  });
}

TEST_F(RadioPanelTest, TheGettersHandEachDialCountOutOnce) {
  auto device = PlugAndInit(RadioPanelSim::kProductId);
  Deliver(*device, {{0, 0xFF, 0x02, 0x05}});
  EXPECT_EQ(Read(PelmRadio_GetControlVals), (Values{-1, 2, 5}));
  EXPECT_EQ(Read(PelmRadio_GetControlVals_stdcall), (Values{0, 0, 5}));

  // A null or unwritable pointer leaves its dial for a later call.
  Deliver(*device, {{0, 3, 4, 0}});
  int16_t dial1 = 0, dial2 = 0;
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  EXPECT_EQ(PelmRadio_GetControlVals(0, nullptr, &dial2, nullptr), PELM_SUCCESS);
  EXPECT_EQ(PelmRadio_GetControlVals(0, memory.ReadOnly<int16_t>(), nullptr, nullptr), PELM_SUCCESS);
  EXPECT_EQ(PelmRadio_GetControlVals(0, &dial1, nullptr, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial1, 3);
  EXPECT_EQ(dial2, 4);
}

TEST_F(RadioPanelTest, TheOpenTimeReadSeedsTheSwitchesButNotTheDials) {
  auto device = Plug(RadioPanelSim::kProductId, 1);
  device->PanelAs<RadioPanelSim>().SetControlState(5, 6, 0x81);
  PelmDev_Init(nullptr);
  EXPECT_EQ(SentReports(*device, sim::LogOp::GetFeature), (std::vector<Report>{{8, 5, 6, 0x81}}));
  EXPECT_EQ(Read(PelmRadio_GetControlVals), (Values{0, 0, 0x81}));
}

}  // namespace
}  // namespace pelm::test
