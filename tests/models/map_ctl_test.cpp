// The display-control panel through its exports: report decoding, dials handed
// out once, the open-time read, and the state across an unplug.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/map_ctl_panel.h"

namespace pelm::test {
namespace {

constexpr uint16_t kMapCtlId = sim::MapCtlPanel::kProductId;

// The getter gives the two dials, the switches and the selectors.
class MapCtlTest : public ModelTest {};

TEST_F(MapCtlTest, EveryInputReportIsDecodedAndReported) {
  const std::pair<sim::Report, Values> cases[] = {
      {{0, 0xFF, 0xFF, 0xFF, 0x01, 0, 0, 0}, {-1, 1, 0, 0}},  // signed dials; bytes 1 and 2 unused
      {{0, 0, 0, 0x80, 0x7F, 0xFF, 0, 0}, {-128, 127, 0x007F, 0}},
      {{0, 0, 0, 0, 0, 0, 0, 0xFF}, {0, 0, 0x3F00, 0}},
      {{0, 0, 0, 0, 0, 0, 0xFF, 0}, {0, 0, 0xC000, 0x73}},
      {{0, 0, 0, 0, 0, 0, 0x08, 0}, {0, 0, 0x8000, 0}},
      {{0, 0, 0, 0, 0, 0, 0xA6, 0}, {0, 0, 0, 0x52}},  // byte 6 bit 2 unused
      {{0, 0, 0, 0, 0, 0, 0, 0}, {0, 0, 0, 0}},        // reported though nothing changed
  };
  auto device = Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  for (const auto& [report, expected] : cases) {
    Deliver(*device, {report});
    EXPECT_EQ(Read(PelmMapCtl_GetControlVals), expected);
  }
}

TEST_F(MapCtlTest, TheOpenTimeReadSeedsTheStateWithUnsignedDials) {
  auto seeded = Plug(kMapCtlId, 1);
  auto& panel = seeded->PanelAs<sim::MapCtlPanel>();
  panel.SetDials(-1, 2);
  panel.SetButtons(0xFF7F);
  panel.SetSelectors(3, 7);
  auto unreadable = Plug(kMapCtlId, 2);
  unreadable->PanelAs<sim::MapCtlPanel>().SetButtons(0x0001);
  unreadable->FailFeatureReads(true);
  PelmDev_Init(nullptr);

  EXPECT_EQ(Read(PelmMapCtl_GetControlVals), (Values{255, 2, 0xFF7F, 0x73}));
  EXPECT_EQ(Read(PelmMapCtl_GetControlVals, 1), (Values{0, 0, 0, 0}));
  // The same byte in an input report is a count of -1.
  Deliver(*seeded, {panel.InputReport()});
  EXPECT_EQ(Read(PelmMapCtl_GetControlVals), (Values{-1, 2, 0xFF7F, 0x73}));
}

TEST_F(MapCtlTest, DialsAreHandedOutOnceAndTheStateOutlivesAnUnplug) {
  auto device = Plug(kMapCtlId, 1);
  PelmDev_Init(kHostInstance);
  Deliver(*device, {{0, 0, 0, 3, 4, 0x01, 0, 0}, {0, 0, 0, 0xFE, 5, 0x02, 0x01, 0}});
  EXPECT_EQ(Read(PelmMapCtl_GetControlVals), (Values{-2, 5, 0x0002, 0x01}));  // the later report's counts
  EXPECT_EQ(Read(PelmMapCtl_GetControlVals), (Values{0, 0, 0x0002, 0x01}));

  // Counts not taken before the unplug are still there after it.
  Deliver(*device, {{0, 0, 0, 7, 8, 0x04, 0, 0}});
  const std::size_t featureReads = device->CountOf(sim::LogOp::GetFeature);
  Disconnect(*device);
  EXPECT_EQ(PelmMapCtl_GetControlVals(0, nullptr, nullptr, nullptr, nullptr), PELM_ERR_NODEVICE);
  Reconnect(*device);
  EXPECT_EQ(Read(PelmMapCtl_GetControlVals), (Values{7, 8, 0x0004, 0}));
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), featureReads);  // no second open-time read
}

}  // namespace
}  // namespace pelm::test
