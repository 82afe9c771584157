// The two autopilot panels through their exports: display reports, byte and
// half-byte dials, switches, the open-time control-state reads, the second
// panel's remembered indicators and its transport to newer devices.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "models/autopilot_panels.h"
#include "models/display_test_support.h"
#include "platform/sim/panels/autopilot_panels.h"

namespace pelm::test {
namespace {

using sim::Autopilot2PanelSim;
using sim::AutopilotPanelSim;
using sim::Report;

constexpr uint16_t kPaddedOutputVersion = 0x0200;

struct SetterCase {
  std::string description;
  std::function<int32_t()> call;
  Report sent;
};

class AutopilotPanelsTest : public DisplayTest {
 protected:
  std::shared_ptr<sim::SimDevice> PlugAndInit(uint16_t productId, uint16_t version = 0x0100) {
    sim::DeviceSpec spec = PanelSpec(productId, 1);
    spec.versionNumber = version;
    auto device = bus().Plug(spec);
    PelmDev_Init(nullptr);
    return device;
  }

  void ExpectSent(sim::SimDevice& device, const std::vector<SetterCase>& cases,
                  sim::LogOp op = sim::LogOp::SetFeature) {
    for (const SetterCase& c : cases) EXPECT_EQ(c.call(), PELM_SUCCESS) << c.description;
    const std::vector<Report> sent = WaitForSent(device, cases.size(), op);
    ASSERT_EQ(sent.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(sent[i], cases[i].sent) << cases[i].description;
  }
};

TEST_F(AutopilotPanelsTest, FirstPanelSendsEachDisplayWithItsLength) {
  static const uint8_t kSix[] = {1, 2, 3, 4, 5, 6};
  auto device = PlugAndInit(AutopilotPanelSim::kProductId);
  ExpectSent(*device, {
      {"a leading point lights on its own", [] { return PelmAutopilot_SetADisplayText(0, ".5"); },
       {3, 0x80, 0x6D, 0x00}},
      {"a doubled point lights on its own", [] { return PelmAutopilot_SetBDisplayText_stdcall(0, "1..2"); },
       {5, 0x86, 0x80, 0x5B}},
      {"C takes three", [] { return PelmAutopilot_SetCDisplaySegments(0, kSix); }, {7, 1, 2, 3}},
      {"a long text is cut at six", [] { return PelmAutopilot_SetDDisplayText(0, "1234567"); },
       {9, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
      {"E takes six", [] { return PelmAutopilot_SetEDisplaySegments(0, kSix); }, {11, 1, 2, 3, 4, 5, 6}},
      {"brightness keeps four bits", [] { return PelmAutopilot_SetBrightness(0, 0x1F); }, {12, 0x0F}},
      {"indicators use the low byte", [] { return PelmAutopilot_SetIndicators(0, 0x3C3); }, {13, 0xC3}},
  });
  auto& panel = device->PanelAs<AutopilotPanelSim>();
  EXPECT_EQ(panel.Display('A'), (std::vector<uint8_t>{0x80, 0x6D, 0x00}));
  EXPECT_EQ(panel.Display('E'), (std::vector<uint8_t>{1, 2, 3, 4, 5, 6}));
}

TEST_F(AutopilotPanelsTest, SecondPanelSendsEachDisplayWithItsLength) {
  static const uint8_t kSix[] = {1, 2, 3, 4, 5, 6};
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId);
  ExpectSent(*device, {
      {"A takes three", [] { return PelmAutopilot2_SetADisplaySegments(0, kSix); }, {3, 1, 2, 3}},
      {"B takes five", [] { return PelmAutopilot2_SetBDisplaySegments(0, kSix); }, {5, 1, 2, 3, 4, 5}},
      {"C", [] { return PelmAutopilot2_SetCDisplayText(0, "12345678"); }, {7, 0x06, 0x5B, 0x4F, 0x66, 0x6D}},
      {"D", [] { return PelmAutopilot2_SetDDisplayText_stdcall(0, "-"); }, {9, 0x40, 0, 0, 0, 0}},
      {"E", [] { return PelmAutopilot2_SetEDisplaySegments(0, kSix); }, {11, 1, 2, 3, 4, 5}},
      {"F takes three", [] { return PelmAutopilot2_SetFDisplayText(0, "8.8.8.8"); }, {13, 0xFF, 0xFF, 0xFF}},
      {"F segments", [] { return PelmAutopilot2_SetFDisplaySegments(0, kSix); }, {13, 1, 2, 3}},
      {"brightness keeps four bits", [] { return PelmAutopilot2_SetBrightness(0, 0x25); }, {14, 0x05}},
      {"indicators most significant byte first", [] { return PelmAutopilot2_SetIndicators(0, 0x01020304); },
       {15, 0x01, 0x02, 0x03, 0x04}},
  });
  EXPECT_EQ(device->PanelAs<Autopilot2PanelSim>().Indicators(), 0x01020304u);
}

TEST_F(AutopilotPanelsTest, SecondPanelRemembersItsIndicatorsWithoutAskingThePanel) {
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId);
  uint32_t indicators = 0xFFFFFFFF;
  ASSERT_EQ(PelmAutopilot2_GetIndicators(0, &indicators), PELM_SUCCESS);
  EXPECT_EQ(indicators, 0u);
  ASSERT_EQ(PelmAutopilot2_SetIndicators(0, 0x01020304), PELM_SUCCESS);
  ASSERT_EQ(PelmAutopilot2_GetIndicators_stdcall(0, &indicators), PELM_SUCCESS);
  EXPECT_EQ(indicators, 0x01020304u);
  static const uint32_t kReadOnly = 0;
  EXPECT_EQ(PelmAutopilot2_GetIndicators(0, const_cast<uint32_t*>(&kReadOnly)), PELM_SUCCESS);
  EXPECT_EQ(PelmAutopilot2_GetIndicators(0, nullptr), PELM_SUCCESS);
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 1u);  // the open-time read only
}

TEST_F(AutopilotPanelsTest, NewerSecondPanelsGetPaddedOutputReports) {
  static const uint8_t kFive[] = {1, 2, 3, 4, 5};
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId, kPaddedOutputVersion);
  ExpectSent(*device,
             {
                 {"brightness", [] { return PelmAutopilot2_SetBrightness(0, 5); },
                  {0x0E, 0x05, 0xDD, 0xDD, 0xDD, 0xDD, 0xDD, 0xDD}},
                 {"a five-position display", [] { return PelmAutopilot2_SetBDisplaySegments(0, kFive); },
                  {5, 1, 2, 3, 4, 5, 0xDD, 0xDD}},
                 {"indicators", [] { return PelmAutopilot2_SetIndicators(0, 0x80000001); },
                  {15, 0x80, 0x00, 0x00, 0x01, 0xDD, 0xDD, 0xDD}},
             },
             sim::LogOp::WriteOutput);
  EXPECT_EQ(device->CountOf(sim::LogOp::SetFeature), 0u);
  auto& panel = device->PanelAs<Autopilot2PanelSim>();
  EXPECT_EQ(panel.Display('B'), (std::vector<uint8_t>{1, 2, 3, 4, 5}));
  EXPECT_EQ(panel.Indicators(), 0x80000001u);
}

TEST_F(AutopilotPanelsTest, FirstPanelDecodesSignedDialsAndSwitchBytes) {
  auto device = PlugAndInit(AutopilotPanelSim::kProductId);
  InputCapture capture(sizeof(AutopilotInputRecord));
  device->InjectInput({0x00, 0xFE, 0x01, 0x00, 0x7F, 0x80, 0x12, 0x34});
  const auto received = capture.WaitFor(1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_AUTOPILOT);
  EXPECT_EQ(received[0].record, BytesOf(AutopilotInputRecord{{-2, 1, 0, 127, -128}, {0x12, 0x34}}));

  int16_t dials[5] = {};
  uint8_t switches[2] = {};
  ASSERT_EQ(PelmAutopilot_GetControlVals(0, &dials[0], &dials[1], &dials[2], &dials[3], &dials[4], &switches[0],
                                         &switches[1]),
            PELM_SUCCESS);
  EXPECT_EQ(std::vector<int16_t>(dials, dials + 5), (std::vector<int16_t>{-2, 1, 0, 127, -128}));
  EXPECT_EQ(switches[0], 0x12);
  EXPECT_EQ(switches[1], 0x34);
}

TEST_F(AutopilotPanelsTest, FirstPanelTakesOpenTimeDialsUnsignedAndHandsThemOutOnce) {
  auto device = Plug(AutopilotPanelSim::kProductId, 1);
  device->PanelAs<AutopilotPanelSim>().SetControlState({0xFE, 0x01, 0x80, 0x00, 0x7F}, 0xA1, 0xB2);
  PelmDev_Init(nullptr);
  int16_t dials[5] = {};
  uint8_t switch1 = 0, switch2 = 0;
  ASSERT_EQ(PelmAutopilot_GetControlVals_stdcall(0, &dials[0], &dials[1], &dials[2], &dials[3], &dials[4],
                                                 &switch1, &switch2),
            PELM_SUCCESS);
  EXPECT_EQ(std::vector<int16_t>(dials, dials + 5), (std::vector<int16_t>{254, 1, 128, 0, 127}));
  EXPECT_EQ(switch1, 0xA1);
  EXPECT_EQ(switch2, 0xB2);
  ASSERT_EQ(PelmAutopilot_GetControlVals(0, &dials[0], nullptr, nullptr, nullptr, nullptr, &switch1, nullptr),
            PELM_SUCCESS);
  EXPECT_EQ(dials[0], 0);
  EXPECT_EQ(switch1, 0xA1);
}

TEST_F(AutopilotPanelsTest, SecondPanelDecodesHalfByteDialsAndTheSwitchWord) {
  auto device = PlugAndInit(Autopilot2PanelSim::kProductId);
  InputCapture capture(sizeof(Autopilot2InputRecord));
  device->InjectInput({0x00, 0x1F, 0x2E, 0x3D, 0x80, 0x00, 0x00, 0x01});
  const auto received = capture.WaitFor(1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_AUTOPILOT2);
  EXPECT_EQ(received[0].record, BytesOf(Autopilot2InputRecord{{1, 2, -1, 3, -2, -3}, 0x80000001}));

  int16_t dials[6] = {};
  uint32_t switches = 0;
  ASSERT_EQ(PelmAutopilot2_GetControlVals(0, &dials[0], &dials[1], &dials[2], &dials[3], &dials[4], &dials[5],
                                          &switches),
            PELM_SUCCESS);
  EXPECT_EQ(std::vector<int16_t>(dials, dials + 6), (std::vector<int16_t>{1, 2, -1, 3, -2, -3}));
  EXPECT_EQ(switches, 0x80000001u);
}

TEST_F(AutopilotPanelsTest, SecondPanelOpenTimeHalfBytesComeInPlainOrder) {
  auto device = Plug(Autopilot2PanelSim::kProductId, 1);
  device->PanelAs<Autopilot2PanelSim>().SetControlState({0x1F, 0x2E, 0x3D}, 0x12345678);
  PelmDev_Init(nullptr);
  int16_t dials[6] = {};
  uint32_t switches = 0;
  ASSERT_EQ(PelmAutopilot2_GetControlVals(0, &dials[0], &dials[1], &dials[2], &dials[3], &dials[4], &dials[5],
                                          &switches),
            PELM_SUCCESS);
  EXPECT_EQ(std::vector<int16_t>(dials, dials + 6), (std::vector<int16_t>{1, -1, 2, -2, 3, -3}));
  EXPECT_EQ(switches, 0x12345678u);
}

}  // namespace
}  // namespace pelm::test
