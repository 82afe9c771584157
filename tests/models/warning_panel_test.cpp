// The warning panel: its open sequence, colours scaled by the brightness it
// keeps itself, directly set components, and the indicator numbers it takes.

#include <gtest/gtest.h>

#include "models/warning_colors.h"
#include "models/model_test.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::test {
namespace {

using sim::LogOp;
using sim::Report;
using sim::WarningPanel;

constexpr int kIndicators = 6;
constexpr std::size_t kOpenSequenceLength = 2 * kIndicators;

class WarningPanelTest : public ModelTest {
 protected:
  // Plugs a panel, opens it at Init and waits for its open sequence.
  std::shared_ptr<sim::SimDevice> OpenPanel(void* instance = nullptr) {
    auto device = Plug(WarningPanel::kProductId, 1);
    PelmDev_Init(instance);
    WaitForSent(*device, kOpenSequenceLength, LogOp::WriteOutput);
    return device;
  }

  // The reports sent after the open sequence, once `count` of them have been.
  static std::vector<Report> SentAfterOpen(const sim::SimDevice& device, std::size_t count) {
    const auto sent = WaitForSent(device, kOpenSequenceLength + count, LogOp::WriteOutput);
    return std::vector<Report>(sent.begin() + std::min(sent.size(), kOpenSequenceLength), sent.end());
  }

  static std::vector<uint8_t> IndColor(uint32_t indicator) {
    uint8_t c[3] = {0xEE, 0xEE, 0xEE};
    EXPECT_EQ(PelmWarning_GetIndColor(0, indicator, &c[0], &c[1], &c[2]), PELM_SUCCESS);
    return {c[0], c[1], c[2]};
  }
};

TEST_F(WarningPanelTest, InitSendsFullBrightnessThenEveryIndicatorOff) {
  auto device = Plug(WarningPanel::kProductId, 1);
  device->PanelAs<WarningPanel>().SetControlByte(0x42);
  PelmDev_Init(kHostInstance);
  std::vector<Report> expected;
  for (int pass = 0; pass < 2; ++pass) {
    for (uint8_t n = 1; n <= kIndicators; ++n) expected.push_back({2, n, 0, 0, 0});
  }
  EXPECT_EQ(WaitForSent(*device, kOpenSequenceLength, LogOp::WriteOutput), expected);
  EXPECT_EQ(Read(PelmWarning_GetBrightness), Values{15});
  EXPECT_EQ(Read(PelmWarning_GetControlVals), Values{0x42});

  // A panel that arrives while the host runs is sent nothing, yet starts at
  // full brightness with every indicator dark.
  auto arriving = Plug(WarningPanel::kProductId, 2);
  PelmDevExt_DispatchEvents();
  ASSERT_EQ(PelmWarning_GetNumDevices(), 2u);
  EXPECT_EQ(Read(PelmWarning_GetBrightness, 1), Values{15});
  ASSERT_EQ(PelmWarning_SetIndColorValue(1, 2, 1), PELM_SUCCESS);
  EXPECT_EQ(WaitForSent(*arriving, 1, LogOp::WriteOutput), (std::vector<Report>{{2, 2, 100, 100, 100}}));
}

TEST_F(WarningPanelTest, ColourIndicesAtFullBrightness) {
  auto device = OpenPanel();
  const std::vector<uint8_t> components[] = {{0, 0, 0},   {100, 100, 100}, {100, 0, 0},   {0, 100, 0},
                                             {0, 0, 100}, {100, 0, 100},   {100, 100, 1}, {0, 100, 100}};
  std::vector<Report> expected;
  for (uint8_t color = 0; color < kColorIndexCount; ++color) {
    const uint8_t indicator = color % kIndicators + 1;
    ASSERT_EQ(PelmWarning_SetIndColorValue(0, indicator, color), PELM_SUCCESS);
    expected.push_back({2, indicator, components[color][0], components[color][1], components[color][2]});
    EXPECT_EQ(IndColor(indicator), components[color]) << int{color};
    uint8_t stored = 0xEE;
    ASSERT_EQ(PelmWarning_GetIndColorValue(0, indicator, &stored), PELM_SUCCESS);
    EXPECT_EQ(stored, color);
  }
  EXPECT_EQ(SentAfterOpen(*device, kColorIndexCount), expected);
}

TEST_F(WarningPanelTest, ABrightnessChangeResendsEveryIndicatorFromItsColourIndex) {
  auto device = OpenPanel();
  ASSERT_EQ(PelmWarning_SetIndColorValue(0, 2, 1), PELM_SUCCESS);
  ASSERT_EQ(PelmWarning_SetIndColor(0, 4, 10, 20, 0x11E), PELM_SUCCESS);  // unscaled, low byte
  EXPECT_EQ(IndColor(4), (std::vector<uint8_t>{10, 20, 30}));
  ASSERT_EQ(PelmWarning_SetBrightness(0, 8), PELM_SUCCESS);
  const auto sent = SentAfterOpen(*device, 2 + kIndicators);
  ASSERT_EQ(sent.size(), 2u + kIndicators);
  EXPECT_EQ(sent[1], (Report{2, 4, 10, 20, 30}));
  EXPECT_EQ(std::vector<Report>(sent.begin() + 2, sent.end()),
            (std::vector<Report>{{2, 1, 0, 0, 0}, {2, 2, 53, 53, 53}, {2, 3, 0, 0, 0},
                                 {2, 4, 0, 0, 0}, {2, 5, 0, 0, 0}, {2, 6, 0, 0, 0}}));
  EXPECT_EQ(IndColor(4), (std::vector<uint8_t>{0, 0, 0}));

  // Neither clamped nor refused; only the low 16 bits are kept.
  ASSERT_EQ(PelmWarning_SetBrightness(0, 0x10027), PELM_SUCCESS);
  EXPECT_EQ(Read(PelmWarning_GetBrightness), Values{39});
  EXPECT_EQ(IndColor(2), (std::vector<uint8_t>{4, 4, 4}));
}

TEST_F(WarningPanelTest, IndicatorNumbersAndColourIndicesOutsideTheirRange) {
  auto device = OpenPanel();
  uint8_t byte = 0;
  for (uint32_t indicator : {0u, 7u, 0x100u}) {
    EXPECT_EQ(PelmWarning_SetIndColor(0, indicator, 1, 1, 1), PELM_ERR_PARAM) << indicator;
    EXPECT_EQ(PelmWarning_SetIndColorValue(0, indicator, 1), PELM_ERR_PARAM) << indicator;
    EXPECT_EQ(PelmWarning_GetIndColor(0, indicator, &byte, &byte, &byte), PELM_ERR_PARAM) << indicator;
    EXPECT_EQ(PelmWarning_GetIndColorValue(0, indicator, &byte), PELM_ERR_PARAM) << indicator;
  }
  EXPECT_EQ(PelmWarning_SetIndColorValue(0, 1, 8), PELM_SUCCESS);
  ASSERT_EQ(PelmWarning_GetIndColorValue(0, 1, &byte), PELM_SUCCESS);
  EXPECT_EQ(byte, 0);
  ASSERT_EQ(PelmWarning_SetIndColorValue(0, 257, 3), PELM_SUCCESS);  // indicator 1
  EXPECT_EQ(SentAfterOpen(*device, 1), (std::vector<Report>{{2, 1, 0, 100, 0}}));
  EXPECT_EQ(PelmWarning_GetControlVals(0, nullptr), PELM_SUCCESS);
  EXPECT_EQ(PelmWarning_GetIndColor(0, 1, nullptr, nullptr, nullptr), PELM_SUCCESS);
  EXPECT_EQ(PelmWarning_GetBrightness(0, nullptr), PELM_ERR_PARAM);
}

TEST_F(WarningPanelTest, AColourRefusedByAFullQueueLeavesTheStoredComponents) {
  auto device = OpenPanel();
  device->FailNextSends(1000000);  // the writer keeps retrying the head report
  uint32_t accepted = 0;
  int32_t status = PELM_SUCCESS;
  for (uint32_t attempt = 1; attempt < 1000 && status == PELM_SUCCESS; ++attempt) {
    status = PelmWarning_SetIndColor(0, 5, attempt & 0xFF, 0, 0);
    if (status == PELM_SUCCESS) accepted = attempt;
  }
  ASSERT_EQ(status, PELM_ERR_QUEUE);
  EXPECT_EQ(IndColor(5), (std::vector<uint8_t>{static_cast<uint8_t>(accepted), 0, 0}));
  device->FailNextSends(0);
}

TEST_F(WarningPanelTest, TheControlByteFollowsEveryReport) {
  auto device = OpenPanel();
  Deliver(*device, {{0, 0x81}, {0, 0x81}});  // a repeated report is delivered too
  EXPECT_EQ(Read(PelmWarning_GetControlVals), Values{0x81});
}

}  // namespace
}  // namespace pelm::test
