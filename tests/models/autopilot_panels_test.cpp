// The two autopilot panels through their exports: display reports, byte and
// half-byte dials, switches, the open-time control-state reads, the second
// panel's remembered indicators and its transport to newer devices.

#include <gtest/gtest.h>

#include <cstring>

#include "models/model_test.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "support/guarded_memory.h"

namespace pelm::test {
namespace {

using sim::Autopilot2PanelSim;
using sim::AutopilotPanelSim;

constexpr uint16_t kPaddedOutputVersion = 0x0200;
const uint8_t kSegments[] = {1, 2, 3, 4, 5, 6};

class AutopilotPanelsTest : public ModelTest {};

TEST_F(AutopilotPanelsTest, FirstPanelSendsEachDisplayWithItsLength) {
  auto device = PlugAndInit(AutopilotPanelSim::kProductId);
  ExpectSent(*device, {
      {"leading point lit", [] { return PelmAutopilot_SetADisplayText(0, ".5"); }, {3, 0x80, 0x6D, 0x00}},
      {"doubled point lit", [] { return PelmAutopilot_SetBDisplayText_stdcall(0, "1..2"); }, {5, 0x86, 0x80, 0x5B}},
      {"C takes three", [] { return PelmAutopilot_SetCDisplaySegments(0, kSegments); }, {7, 1, 2, 3}},
      {"D cut at six", [] { return PelmAutopilot_SetDDisplayText(0, "1234567"); },
       {9, 6, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
      {"E takes six", [] { return PelmAutopilot_SetEDisplaySegments(0, kSegments); }, {11, 1, 2, 3, 4, 5, 6}},
  });
}

TEST_F(AutopilotPanelsTest, SecondPanelSendsEachDisplayWithItsLength) {
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId);
  ExpectSent(*device, {
      {"A takes three", [] { return PelmAutopilot2_SetADisplaySegments(0, kSegments); }, {3, 1, 2, 3}},
      {"B takes five", [] { return PelmAutopilot2_SetBDisplaySegments(0, kSegments); }, {5, 1, 2, 3, 4, 5}},
      {"C cut at five", [] { return PelmAutopilot2_SetCDisplayText(0, "12345678"); }, {7, 6, 0x5B, 0x4F, 0x66, 0x6D}},
      {"D", [] { return PelmAutopilot2_SetDDisplayText_stdcall(0, "-"); }, {9, 0x40, 0, 0, 0, 0}},
      {"E", [] { return PelmAutopilot2_SetEDisplaySegments(0, kSegments); }, {11, 1, 2, 3, 4, 5}},
      {"F cut at three", [] { return PelmAutopilot2_SetFDisplayText(0, "8.8.8.8"); }, {13, 0xFF, 0xFF, 0xFF}},
      {"F segments", [] { return PelmAutopilot2_SetFDisplaySegments(0, kSegments); }, {13, 1, 2, 3}},
      {"indicators high byte first", [] { return PelmAutopilot2_SetIndicators(0, 0x01020304); }, {15, 1, 2, 3, 4}},
  });
}

TEST_F(AutopilotPanelsTest, NewerSecondPanelsGetPaddedOutputReports) {
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId, kPaddedOutputVersion);
  constexpr uint8_t kPad = 0xDD;
  ExpectSent(*device,
             {
                 {"brightness", [] { return PelmAutopilot2_SetBrightness(0, 5); },
                  {14, 5, kPad, kPad, kPad, kPad, kPad, kPad}},
                 {"display", [] { return PelmAutopilot2_SetBDisplaySegments(0, kSegments); },
                  {5, 1, 2, 3, 4, 5, kPad, kPad}},
                 {"indicators", [] { return PelmAutopilot2_SetIndicators(0, 0x80000001); },
                  {15, 0x80, 0, 0, 1, kPad, kPad, kPad}},
             },
             sim::LogOp::WriteOutput);
  EXPECT_EQ(device->CountOf(sim::LogOp::SetFeature), 0u);
}

TEST_F(AutopilotPanelsTest, SecondPanelRemembersItsIndicatorsWithoutAskingThePanel) {
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId);
  EXPECT_EQ(Read(PelmAutopilot2_GetIndicators), Values{0});
  ASSERT_EQ(PelmAutopilot2_SetIndicators(0, 0x01020304), PELM_SUCCESS);
  EXPECT_EQ(Read(PelmAutopilot2_GetIndicators_stdcall), Values{0x01020304});
  // Four bytes of which the last is read-only: none of them is written.
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  auto* partlyWritable = memory.LastByteReadOnly<uint32_t>();
  std::memset(partlyWritable, 0xEE, sizeof(uint32_t) - 1);
  EXPECT_EQ(PelmAutopilot2_GetIndicators(0, partlyWritable), PELM_SUCCESS);
  EXPECT_EQ(std::vector<uint8_t>(reinterpret_cast<uint8_t*>(partlyWritable),
                                 reinterpret_cast<uint8_t*>(partlyWritable) + 3),
            (std::vector<uint8_t>{0xEE, 0xEE, 0xEE}));
  EXPECT_EQ(PelmAutopilot2_GetIndicators(0, nullptr), PELM_SUCCESS);
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 1u);  // the open-time read only
}

// The first panel's getter gives its two switch bytes apart, the second's
// its switches as one word.
TEST_F(AutopilotPanelsTest, InputReportsGiveSignedDialsAndSwitches) {
  auto first = Plug(AutopilotPanelSim::kProductId, 1);
  auto second = Plug(Autopilot2PanelSim::kProductId, 1);
  PelmDev_Init(nullptr);
  Deliver(*first, {{0x00, 0xFE, 0x01, 0x00, 0x7F, 0x80, 0x12, 0x34}});
  Deliver(*second, {{0x00, 0x1F, 0x2E, 0x3D, 0x80, 0x00, 0x00, 0x01}});
  EXPECT_EQ(Read(PelmAutopilot_GetControlVals), (Values{-2, 1, 0, 127, -128, 0x12, 0x34}));
  EXPECT_EQ(Read(PelmAutopilot2_GetControlVals_stdcall), (Values{1, 2, -1, 3, -2, -3, 0x80000001}));
}

TEST_F(AutopilotPanelsTest, OpenTimeDialsAreHandedOutOnceThenReset) {
  auto first = Plug(AutopilotPanelSim::kProductId, 1);
  first->PanelAs<AutopilotPanelSim>().SetControlState({0xFE, 0x01, 0x80, 0x00, 0x7F}, 0xA1, 0xB2);
  auto second = Plug(Autopilot2PanelSim::kProductId, 1);
  second->PanelAs<Autopilot2PanelSim>().SetControlState({0x1F, 0x2E, 0x3D}, 0x12345678);
  PelmDev_Init(nullptr);
  // The first panel's bytes count as unsigned; the second's half-bytes come in
  // plain order, not in the input report's.
  EXPECT_EQ(Read(PelmAutopilot_GetControlVals), (Values{254, 1, 128, 0, 127, 0xA1, 0xB2}));
  EXPECT_EQ(Read(PelmAutopilot2_GetControlVals_stdcall), (Values{1, -1, 2, -2, 3, -3, 0x12345678}));
  EXPECT_EQ(Read(PelmAutopilot_GetControlVals), (Values{0, 0, 0, 0, 0, 0xA1, 0xB2}));
  EXPECT_EQ(Read(PelmAutopilot2_GetControlVals_stdcall), (Values{0, 0, 0, 0, 0, 0, 0x12345678}));
}

}  // namespace
}  // namespace pelm::test
