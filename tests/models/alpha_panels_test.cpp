// The two alphanumeric panels through their exports: sixteen-segment and
// numeric display reports, dials and switches.

#include <gtest/gtest.h>

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

TEST_F(AlphaPanelsTest, FirstPanelDialsAreHandedOutOnce) {
  auto device = PlugAndInit(AlphaPanelSim::kAlphaProductId);
  Deliver(*device, {{0, 0x80, 0x7F}});
  EXPECT_EQ(Read(PelmAlpha_GetDialVals), (Values{-128, 127}));
  EXPECT_EQ(Read(PelmAlpha_GetDialVals_stdcall), (Values{0, 0}));
}

TEST_F(AlphaPanelsTest, SecondPanelReportsSwitchesThatStay) {
  auto device = PlugAndInit(AlphaPanelSim::kAlpha2ProductId);
  Deliver(*device, {{0, 0xFE, 0x01, 0x5A}});
  EXPECT_EQ(Read(PelmAlpha2_GetControlVals), (Values{-2, 1, 0x5A}));
  EXPECT_EQ(Read(PelmAlpha2_GetControlVals), (Values{0, 0, 0x5A}));
}

}  // namespace
}  // namespace pelm::test
