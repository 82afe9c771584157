// The display-control panel through its exports: report decoding, dials handed
// out once, the open-time read, and the state across an unplug.

#include "models/map_ctl.h"

#include <gtest/gtest.h>

#include "platform/sim/panels/map_ctl_panel.h"
#include "support/input_capture.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kMapCtlId = sim::MapCtlPanel::kProductId;

struct Controls {
  int16_t dial1 = 0x5A5A, dial2 = 0x5A5A;
  uint16_t switches = 0x5A5A;
  uint8_t selectors = 0x5A;
  bool operator==(const Controls&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Controls& c) {
  return out << c.dial1 << " " << c.dial2 << std::hex << " 0x" << c.switches << " 0x" << int{c.selectors};
}

int32_t GetControls(int32_t index, Controls& c) {
  return PelmMapCtl_GetControlVals(index, &c.dial1, &c.dial2, &c.switches, &c.selectors);
}

Controls ReadControls() {
  Controls c;
  EXPECT_EQ(GetControls(0, c), PELM_SUCCESS);
  return c;
}

class MapCtlTest : public LibraryTest {};

TEST_F(MapCtlTest, EveryInputReportIsDecodedAndReported) {
  const std::pair<sim::Report, Controls> cases[] = {
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
  InputCapture capture(sizeof(MapCtlInputRecord));
  std::size_t reported = 0;
  for (const auto& [report, expected] : cases) {
    device->InjectInput(report);
    ASSERT_TRUE(capture.WaitForCount(++reported));
    const CapturedInput call = capture.Calls().back();
    EXPECT_EQ(call.modelType, PELM_MODEL_MAPCTL);
    const auto record = call.As<MapCtlInputRecord>();
    EXPECT_EQ((Controls{record.dialVals[0], record.dialVals[1], record.switchVals, record.selectorVals}), expected);
    EXPECT_EQ(ReadControls(), expected);
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

  EXPECT_EQ(ReadControls(), (Controls{255, 2, 0xFF7F, 0x73}));
  Controls second;
  EXPECT_EQ(GetControls(1, second), PELM_SUCCESS);
  EXPECT_EQ(second, (Controls{0, 0, 0, 0}));
  // The same byte in an input report is a count of -1.
  InputCapture capture(sizeof(MapCtlInputRecord));
  seeded->InjectInput(panel.InputReport());
  ASSERT_TRUE(capture.WaitForCount(1));
  EXPECT_EQ(ReadControls(), (Controls{-1, 2, 0xFF7F, 0x73}));
}

TEST_F(MapCtlTest, DialsAreHandedOutOnceAndTheStateOutlivesAnUnplug) {
  auto device = Plug(kMapCtlId, 1);
  PelmDev_Init(kHostInstance);
  InputCapture capture(sizeof(MapCtlInputRecord));
  device->InjectInput({0, 0, 0, 3, 4, 0x01, 0, 0});
  device->InjectInput({0, 0, 0, 0xFE, 5, 0x02, 0x01, 0});
  ASSERT_TRUE(capture.WaitForCount(2));
  EXPECT_EQ(ReadControls(), (Controls{-2, 5, 0x0002, 0x01}));  // the later report's counts
  EXPECT_EQ(ReadControls(), (Controls{0, 0, 0x0002, 0x01}));

  // Counts not taken before the unplug are still there after it.
  device->InjectInput({0, 0, 0, 7, 8, 0x04, 0, 0});
  ASSERT_TRUE(capture.WaitForCount(3));
  Controls c;

  const std::size_t featureReads = device->CountOf(sim::LogOp::GetFeature);
  bus().Unplug(device->Description().path);
  PelmDevExt_DispatchEvents();
  EXPECT_EQ(GetControls(0, c), PELM_ERR_NODEVICE);
  bus().Plug(device->Description());
  PelmDevExt_DispatchEvents();
  EXPECT_EQ(ReadControls(), (Controls{7, 8, 0x0004, 0}));
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), featureReads);  // no second open-time read
}

}  // namespace
}  // namespace pelm::test
