// The two alphanumeric panels through their exports: sixteen-segment and
// numeric display reports, dials and switches.

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "models/alpha_panels.h"
#include "models/display_test_support.h"
#include "platform/sim/panels/alpha_panels.h"

namespace pelm::test {
namespace {

using sim::AlphaPanelSim;
using sim::Report;

struct SetterCase {
  std::string description;
  std::function<int32_t()> call;
  Report sent;
};

class AlphaPanelsTest : public DisplayTest {
 protected:
  void ExpectSent(uint16_t productId, const std::vector<SetterCase>& cases) {
    auto device = Plug(productId, 1);
    PelmDev_Init(nullptr);
    for (const SetterCase& c : cases) EXPECT_EQ(c.call(), PELM_SUCCESS) << c.description;
    const std::vector<Report> sent = WaitForSent(*device, cases.size());
    ASSERT_EQ(sent.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(sent[i], cases[i].sent) << cases[i].description;
  }
};

TEST_F(AlphaPanelsTest, FirstPanelSendsItsDisplayReportsByteForByte) {
  static const uint16_t kGlyphs[] = {0x3722, 0x8F0A, 0x0041, 0xFFFF};
  static const uint8_t kNumeric[] = {0x01, 0x02, 0x04, 0x08, 0x10};
  ExpectSent(AlphaPanelSim::kAlphaProductId,
             {
                 {"lower case as upper case", [] { return PelmAlpha_SetAlpha(0, "ab"); },
                  {3, 0x22, 0x37, 0x0A, 0x8F, 0, 0, 0, 0}},
                 {"a joined point", [] { return PelmAlpha_SetAlpha_stdcall(0, "1.2"); },
                  {3, 0x41, 0x06, 0x21, 0x19, 0, 0, 0, 0}},
                 {"a long text is cut at four", [] { return PelmAlpha_SetAlpha(0, "HELLO"); },
                  {3, 0x22, 0x36, 0x20, 0x39, 0x00, 0x38, 0x00, 0x38}},
                 {"a leading point takes a blank position", [] { return PelmAlpha_SetAlpha(0, ".-"); },
                  {3, 0, 0, 0x22, 0x00, 0, 0, 0, 0}},
                 {"glyph codes low byte first", [] { return PelmAlpha_SetAlphaSegments(0, kGlyphs); },
                  {3, 0x22, 0x37, 0x0A, 0x8F, 0x41, 0x00, 0xFF, 0xFF}},
                 {"numeric text right to left", [] { return PelmAlpha_SetNumeric(0, "12.3"); },
                  {5, 0x00, 0x00, 0x4F, 0xDB, 0x06}},
                 {"letters leave numeric positions blank", [] { return PelmAlpha_SetNumeric(0, "AB"); },
                  {5, 0, 0, 0, 0, 0}},
                 {"numeric segments reversed", [] { return PelmAlpha_SetNumericSegments(0, kNumeric); },
                  {5, 0x10, 0x08, 0x04, 0x02, 0x01}},
                 {"brightness keeps four bits", [] { return PelmAlpha_SetBrightness(0, 0x1F); }, {6, 0x0F}},
             });
  auto& panel = bus().Find(InterfacePath(AlphaPanelSim::kAlphaProductId, 1))->PanelAs<AlphaPanelSim>();
  EXPECT_EQ(panel.AlphaDisplay(), (std::array<uint16_t, 4>{0x3722, 0x8F0A, 0x0041, 0xFFFF}));
  EXPECT_EQ(panel.NumericDisplay(), (std::vector<uint8_t>{0x01, 0x02, 0x04, 0x08, 0x10}));
}

TEST_F(AlphaPanelsTest, SecondPanelHasSixNumericPositions) {
  static const uint8_t kNumeric[] = {0x01, 0x02, 0x04, 0x08, 0x10, 0x20};
  ExpectSent(AlphaPanelSim::kAlpha2ProductId,
             {
                 {"a long numeric text is cut at six", [] { return PelmAlpha2_SetNumeric(0, "123456789"); },
                  {5, 0x7D, 0x6D, 0x66, 0x4F, 0x5B, 0x06}},
                 {"numeric segments reversed", [] { return PelmAlpha2_SetNumericSegments_stdcall(0, kNumeric); },
                  {5, 0x20, 0x10, 0x08, 0x04, 0x02, 0x01}},
                 {"alphanumeric text", [] { return PelmAlpha2_SetAlpha(0, "<->"); },
                  {3, 0x05, 0x00, 0x22, 0x00, 0x10, 0x40, 0, 0}},
             });
}

TEST_F(AlphaPanelsTest, FirstPanelDialsAreSignedAndResetWhenRead) {
  auto device = Plug(AlphaPanelSim::kAlphaProductId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 0u);  // nothing is read at open
  InputCapture capture(sizeof(AlphaInputRecord));
  device->InjectInput({0, 0x80, 0x7F});
  const auto received = capture.WaitFor(1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_ALPHA);
  EXPECT_EQ(received[0].record, BytesOf(AlphaInputRecord{{-128, 127}}));

  int16_t dial1 = 0, dial2 = 0;
  ASSERT_EQ(PelmAlpha_GetDialVals(0, &dial1, &dial2), PELM_SUCCESS);
  EXPECT_EQ(dial1, -128);
  EXPECT_EQ(dial2, 127);
  ASSERT_EQ(PelmAlpha_GetDialVals_stdcall(0, &dial1, &dial2), PELM_SUCCESS);
  EXPECT_EQ(dial1, 0);
  EXPECT_EQ(dial2, 0);
}

TEST_F(AlphaPanelsTest, SecondPanelReportsSwitchesThatStay) {
  auto device = Plug(AlphaPanelSim::kAlpha2ProductId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(Alpha2InputRecord));
  device->InjectInput({0, 0xFE, 0x01, 0x5A});
  const auto received = capture.WaitFor(1);
  EXPECT_EQ(received[0].modelType, PELM_MODEL_ALPHA2);
  EXPECT_EQ(received[0].record, BytesOf(Alpha2InputRecord{{-2, 1}, 0x5A}));

  int16_t dial2 = 0;
  uint8_t switches = 0;
  ASSERT_EQ(PelmAlpha2_GetControlVals(0, nullptr, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial2, 1);
  EXPECT_EQ(switches, 0x5A);
  int16_t dial1 = 0;
  switches = 0;
  ASSERT_EQ(PelmAlpha2_GetControlVals(0, &dial1, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(dial1, -2);  // skipped by the first call, so still there
  EXPECT_EQ(dial2, 0);
  EXPECT_EQ(switches, 0x5A);
}

}  // namespace
}  // namespace pelm::test
