// The two alphanumeric panels through their exports: sixteen-segment and
// numeric display reports, dials and switches.

#include <gtest/gtest.h>

#include "models/alpha_panels.h"
#include "models/model_test.h"
#include "platform/sim/panels/alpha_panels.h"

namespace pelm::test {
namespace {

using sim::AlphaPanelSim;

class AlphaPanelsTest : public ModelTest {};

TEST_F(AlphaPanelsTest, FirstPanelSendsItsDisplayReportsByteForByte) {
  static const uint16_t kGlyphs[] = {0x3722, 0x8F0A, 0x0041, 0xFFFF};
  static const uint8_t kNumeric[] = {0x01, 0x02, 0x04, 0x08, 0x10};
  auto device = PlugAndInit(AlphaPanelSim::kAlphaProductId);
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 0u);  // nothing is read at open
  ExpectSent(*device, {
      {"lower case as upper", [] { return PelmAlpha_SetAlpha(0, "ab"); }, {3, 0x22, 0x37, 0x0A, 0x8F, 0, 0, 0, 0}},
      {"glyphs low byte first", [] { return PelmAlpha_SetAlphaSegments(0, kGlyphs); },
       {3, 0x22, 0x37, 0x0A, 0x8F, 0x41, 0x00, 0xFF, 0xFF}},
      {"numeric right to left", [] { return PelmAlpha_SetNumeric(0, "12.3"); }, {5, 0, 0, 0x4F, 0xDB, 0x06}},
      {"segments reversed", [] { return PelmAlpha_SetNumericSegments(0, kNumeric); }, {5, 0x10, 8, 4, 2, 1}},
  });
}

TEST_F(AlphaPanelsTest, SecondPanelHasSixNumericPositions) {
  static const uint8_t kNumeric[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20};
  auto device = PlugAndInit(AlphaPanelSim::kAlpha2ProductId);
  ExpectSent(*device, {
      {"cut at six", [] { return PelmAlpha2_SetNumeric(0, "123456789"); }, {5, 0x7D, 0x6D, 0x66, 0x4F, 0x5B, 0x06}},
      {"segments reversed", [] { return PelmAlpha2_SetNumericSegments_stdcall(0, kNumeric); }, {5, 32, 16, 8, 4, 2, 1}},
  });
}

TEST_F(AlphaPanelsTest, FirstPanelDialsAreSignedAndResetWhenRead) {
  auto device = PlugAndInit(AlphaPanelSim::kAlphaProductId);
  InputCapture capture(sizeof(AlphaInputRecord));
  device->InjectInput({0, 0x80, 0x7F});
  const auto received = WaitForCalls(capture, 1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_ALPHA);
  EXPECT_EQ(received[0].record, BytesOf(AlphaInputRecord{{-128, 127}}));
  int16_t dial1 = 0, dial2 = 0;
  ASSERT_EQ(PelmAlpha_GetDialVals(0, &dial1, &dial2), PELM_SUCCESS);
  EXPECT_EQ(std::make_pair(dial1, dial2), std::make_pair(int16_t{-128}, int16_t{127}));
  ASSERT_EQ(PelmAlpha_GetDialVals_stdcall(0, &dial1, &dial2), PELM_SUCCESS);
  EXPECT_EQ(std::make_pair(dial1, dial2), std::make_pair(int16_t{0}, int16_t{0}));
}

TEST_F(AlphaPanelsTest, SecondPanelReportsSwitchesThatStay) {
  auto device = PlugAndInit(AlphaPanelSim::kAlpha2ProductId);
  InputCapture capture(sizeof(Alpha2InputRecord));
  device->InjectInput({0, 0xFE, 0x01, 0x5A});
  const auto received = WaitForCalls(capture, 1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_ALPHA2);
  EXPECT_EQ(received[0].record, BytesOf(Alpha2InputRecord{{-2, 1}, 0x5A}));
  int16_t dial1 = 0, dial2 = 0;
  uint8_t switches = 0;
  for (int call = 0; call < 2; ++call) {
    ASSERT_EQ(PelmAlpha2_GetControlVals(0, &dial1, &dial2, &switches), PELM_SUCCESS);
    EXPECT_EQ(switches, 0x5A);
  }
  EXPECT_EQ(std::make_pair(dial1, dial2), std::make_pair(int16_t{0}, int16_t{0}));
}

}  // namespace
}  // namespace pelm::test
