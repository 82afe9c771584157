// The radio panel through its exports: display, lamp and brightness reports,
// input decoding, the open-time control-state read and the read-backs.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "core/model_table.h"
#include "core/slot_tables.h"
#include "models/display_test_support.h"
#include "models/radio_panel.h"
#include "platform/sim/panels/radio_panel.h"

namespace pelm::test {
namespace {

using sim::Report;
using sim::RadioPanelSim;

class RadioPanelTest : public DisplayTest {
 protected:
  std::shared_ptr<sim::SimDevice> PlugAndInit() {
    auto device = Plug(RadioPanelSim::kProductId, 1);
    PelmDev_Init(nullptr);
    return device;
  }
};

struct SetterCase {
  std::string description;
  std::function<int32_t()> call;
  Report sent;
};

TEST_F(RadioPanelTest, SettersSendTheirFeatureReportsByteForByte) {
  static const uint8_t kSegments[] = {0xFF, 0x80, 0x01, 0x02, 0x04, 0x08};
  const std::vector<SetterCase> cases = {
      {"text with a joined point", [] { return PelmRadio_SetLDisplayText(0, "123.45"); },
       {3, 0x06, 0x5B, 0xCF, 0x66, 0x6D, 0x00}},
      {"a point at the start stays blank", [] { return PelmRadio_SetLDisplayText(0, ".5"); },
       {3, 0x00, 0x6D, 0x00, 0x00, 0x00, 0x00}},
      {"a doubled point takes a blank position", [] { return PelmRadio_SetLDisplayText_stdcall(0, "1..2"); },
       {3, 0x86, 0x00, 0x5B, 0x00, 0x00, 0x00}},
      {"a long text is cut at six positions", [] { return PelmRadio_SetRDisplayText(0, "123456789"); },
       {5, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
      {"an empty text blanks the display", [] { return PelmRadio_SetRDisplayText(0, ""); }, {5, 0, 0, 0, 0, 0, 0}},
      {"left segments unchanged", [] { return PelmRadio_SetLDisplaySegments(0, kSegments); },
       {3, 0xFF, 0x80, 0x01, 0x02, 0x04, 0x08}},
      {"right segments unchanged", [] { return PelmRadio_SetRDisplaySegments_stdcall(0, kSegments); },
       {5, 0xFF, 0x80, 0x01, 0x02, 0x04, 0x08}},
      {"brightness keeps four bits", [] { return PelmRadio_SetBrightness(0, 0x1F); }, {6, 0x0F}},
      {"brightness uses the low byte", [] { return PelmRadio_SetBrightness_stdcall(0, 0x127); }, {6, 0x07}},
      {"indicators use the low byte", [] { return PelmRadio_SetIndicators(0, 0x1A5); }, {7, 0xA5}},
  };
  auto device = PlugAndInit();
  for (const SetterCase& c : cases) EXPECT_EQ(c.call(), PELM_SUCCESS) << c.description;
  const std::vector<Report> sent = WaitForSent(*device, cases.size());
  ASSERT_EQ(sent.size(), cases.size());
  for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(sent[i], cases[i].sent) << cases[i].description;

  const auto& panel = device->PanelAs<RadioPanelSim>();
  EXPECT_EQ(panel.LeftDisplay(), (std::array<uint8_t, 6>{0xFF, 0x80, 0x01, 0x02, 0x04, 0x08}));
  EXPECT_EQ(panel.RightDisplay(), (std::array<uint8_t, 6>{0xFF, 0x80, 0x01, 0x02, 0x04, 0x08}));
  EXPECT_EQ(panel.Indicators(), 0xA5);
}

TEST_F(RadioPanelTest, InputReportsReachTheCallbackAndTheGettersThatResetTheDials) {
  auto device = PlugAndInit();
  InputCapture capture(sizeof(RadioInputRecord));
  device->InjectInput({0, 0xFF, 0x02, 0x05});
  const auto received = capture.WaitFor(1);
  ASSERT_EQ(received.size(), 1u);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_RADIO);
  EXPECT_EQ(received[0].deviceIndex, 0);
  EXPECT_EQ(received[0].record, BytesOf(RadioInputRecord{{-1, 2}, 0x05}));

  int16_t dial1 = 0, dial2 = 0;
  uint8_t switches = 0;
  ASSERT_EQ(PelmRadio_GetControlVals(0, &dial1, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial1, -1);
  EXPECT_EQ(dial2, 2);
  EXPECT_EQ(switches, 0x05);
  ASSERT_EQ(PelmRadio_GetControlVals_stdcall(0, &dial1, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial1, 0);
  EXPECT_EQ(dial2, 0);
  EXPECT_EQ(switches, 0x05);
}

TEST_F(RadioPanelTest, ASkippedPointerLeavesItsDialForALaterCall) {
  auto device = PlugAndInit();
  InputCapture capture(sizeof(RadioInputRecord));
  device->InjectInput({0, 3, 4, 0});
  capture.WaitFor(1);

  static const int16_t kReadOnlyDial = 0;
  int16_t dial2 = 0;
  EXPECT_EQ(PelmRadio_GetControlVals(0, nullptr, &dial2, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial2, 4);
  EXPECT_EQ(PelmRadio_GetControlVals(0, const_cast<int16_t*>(&kReadOnlyDial), nullptr, nullptr), PELM_SUCCESS);
  int16_t dial1 = 0;
  EXPECT_EQ(PelmRadio_GetControlVals(0, &dial1, &dial2, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial1, 3);
  EXPECT_EQ(dial2, 0);
}

TEST_F(RadioPanelTest, TheOpenTimeReadSeedsTheSwitchesButNotTheDials) {
  auto device = Plug(RadioPanelSim::kProductId, 1);
  device->PanelAs<RadioPanelSim>().SetControlState(5, 6, 0x81);
  PelmDev_Init(nullptr);
  EXPECT_EQ(SentReports(*device, sim::LogOp::GetFeature), (std::vector<Report>{{8, 5, 6, 0x81}}));
  int16_t dial1 = 7, dial2 = 7;
  uint8_t switches = 0;
  ASSERT_EQ(PelmRadio_GetControlVals(0, &dial1, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial1, 0);
  EXPECT_EQ(dial2, 0);
  EXPECT_EQ(switches, 0x81);
}

TEST_F(RadioPanelTest, TheSerialNumberIsReadAtOpen) {
  sim::DeviceSpec spec = PanelSpec(RadioPanelSim::kProductId, 1);
  spec.serialNumber = u"AB12";
  bus().Plug(spec);
  PelmDev_Init(nullptr);
  const cHidChannel* radio = ReadSlot(*ModelByTypeCode(PELM_MODEL_RADIO), 0);
  ASSERT_NE(radio, nullptr);
  EXPECT_EQ(radio->SerialNumber(), "AB12");
}

}  // namespace
}  // namespace pelm::test
