// The display-control panel through its exports: decoding of its reports, the
// dials handed out once, and the open-time read.

#include <gtest/gtest.h>

#include "models/map_ctl.h"
#include "platform/sim/panels/map_ctl_panel.h"
#include "support/guarded_memory.h"
#include "support/input_capture.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kMapCtlId = sim::MapCtlPanel::kProductId;

struct Controls {
  int16_t dial1 = 0x5A5A;
  int16_t dial2 = 0x5A5A;
  uint16_t switches = 0x5A5A;
  uint8_t selectors = 0x5A;
  bool operator==(const Controls&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Controls& c) {
  return out << "{" << c.dial1 << ", " << c.dial2 << ", 0x" << std::hex << c.switches << ", 0x" << int{c.selectors}
             << std::dec << "}";
}

Controls ReadControls(int32_t index) {
  Controls controls;
  EXPECT_EQ(PelmMapCtl_GetControlVals(index, &controls.dial1, &controls.dial2, &controls.switches,
                                      &controls.selectors),
            PELM_SUCCESS);
  return controls;
}

Controls FromRecord(const MapCtlInputRecord& record) {
  return {record.dialVals[0], record.dialVals[1], record.switchVals, record.selectorVals};
}

class MapCtlTest : public LibraryTest {};

TEST_F(MapCtlTest, EveryInputReportIsDecodedAndReported) {
  struct Case {
    sim::Report report;  // bytes 0 to 7
    Controls expected;
  };
  const Case cases[] = {
      {{0, 0xFF, 0xFF, 0xFF, 0x01, 0, 0, 0}, {-1, 1, 0, 0}},          // dials signed; bytes 1, 2 unused
      {{0, 0, 0, 0x80, 0x7F, 0, 0, 0}, {-128, 127, 0, 0}},
      {{0, 0, 0, 0, 0, 0xFF, 0, 0}, {0, 0, 0x007F, 0}},               // byte 5 bit 7 unused
      {{0, 0, 0, 0, 0, 0, 0, 0xFF}, {0, 0, 0x3F00, 0}},               // byte 7 bits 6, 7 unused
      {{0, 0, 0, 0, 0, 0, 0xFF, 0}, {0, 0, 0xC000, 0x73}},
      {{0, 0, 0, 0, 0, 0, 0x08, 0}, {0, 0, 0x8000, 0}},
      {{0, 0, 0, 0, 0, 0, 0x10, 0}, {0, 0, 0x4000, 0}},
      {{0, 0, 0, 0, 0, 0, 0x04, 0}, {0, 0, 0, 0}},                    // byte 6 bit 2 unused
      {{0, 0, 0, 0, 0, 0, 0xA2, 0}, {0, 0, 0, 0x52}},
      {{0, 0, 0, 0, 0, 0, 0x00, 0}, {0, 0, 0, 0}},                    // an unchanged report is reported too
  };
  auto device = Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(MapCtlInputRecord));
  std::size_t reported = 0;
  for (const Case& c : cases) {
    device->InjectInput(c.report);
    ASSERT_TRUE(capture.WaitForCount(++reported));
    const CapturedInput call = capture.Calls().back();
    EXPECT_EQ(call.modelType, PELM_MODEL_MAPCTL);
    EXPECT_EQ(call.deviceIndex, 0);
    EXPECT_EQ(FromRecord(call.As<MapCtlInputRecord>()), c.expected);
    EXPECT_EQ(ReadControls(0), c.expected);
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

  EXPECT_EQ(ReadControls(0), (Controls{255, 2, 0xFF7F, 0x73}));
  EXPECT_EQ(ReadControls(0), (Controls{0, 0, 0xFF7F, 0x73}));
  EXPECT_EQ(ReadControls(1), (Controls{0, 0, 0, 0}));

  // The same byte in an input report is a count of -1.
  InputCapture capture(sizeof(MapCtlInputRecord));
  seeded->InjectInput(panel.InputReport());
  ASSERT_TRUE(capture.WaitForCount(1));
  EXPECT_EQ(ReadControls(0), (Controls{-1, 2, 0xFF7F, 0x73}));
}

TEST_F(MapCtlTest, DialCountsAreTheLatestReportsAndHandedOutOnce) {
  auto device = Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(MapCtlInputRecord));
  device->InjectInput({0, 0, 0, 3, 4, 0x01, 0, 0});
  device->InjectInput({0, 0, 0, 0xFE, 5, 0x02, 0x01, 0});
  ASSERT_TRUE(capture.WaitForCount(2));
  EXPECT_EQ(ReadControls(0), (Controls{-2, 5, 0x0002, 0x01}));
  EXPECT_EQ(ReadControls(0), (Controls{0, 0, 0x0002, 0x01}));

  device->InjectInput({0, 0, 0, 7, 8, 0, 0, 0});
  ASSERT_TRUE(capture.WaitForCount(3));
  // A dial whose pointer is null or unwritable keeps its count for later.
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  int16_t dial2 = 0;
  EXPECT_EQ(PelmMapCtl_GetControlVals(0, nullptr, &dial2, memory.ReadOnly<uint16_t>(), nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial2, 8);
  int16_t dial1 = 0;
  EXPECT_EQ(PelmMapCtl_GetControlVals(0, &dial1, memory.ReadOnly<int16_t>(), nullptr, nullptr), PELM_SUCCESS);
  EXPECT_EQ(dial1, 7);
  EXPECT_EQ(ReadControls(0), (Controls{0, 0, 0, 0}));
}

TEST_F(MapCtlTest, IndexAndConnectionAreCheckedBeforeAnyOutputIsWritten) {
  auto device = Plug(kMapCtlId, 1);
  device->PanelAs<sim::MapCtlPanel>().SetButtons(0x0104);
  PelmDev_Init(kHostInstance);
  Controls untouched;
  for (int32_t index : {-1, 4}) {
    EXPECT_EQ(PelmMapCtl_GetControlVals(index, &untouched.dial1, &untouched.dial2, &untouched.switches,
                                        &untouched.selectors),
              PELM_ERR_INDEX);
  }
  EXPECT_EQ(PelmMapCtl_GetControlVals_stdcall(1, &untouched.dial1, &untouched.dial2, &untouched.switches,
                                              &untouched.selectors),
            PELM_ERR_NODEVICE);

  bus().Unplug(device->Spec().path);
  PelmDevExt_DispatchEvents();
  EXPECT_EQ(PelmMapCtl_GetNumDevices(), 0u);
  EXPECT_EQ(PelmMapCtl_GetControlVals(0, &untouched.dial1, &untouched.dial2, &untouched.switches,
                                      &untouched.selectors),
            PELM_ERR_NODEVICE);
  EXPECT_EQ(untouched, Controls{});

  // Back again: the state is kept and the open-time read is not repeated.
  const std::size_t featureReads = device->CountOf(sim::LogOp::GetFeature);
  bus().Plug(device->Spec());
  PelmDevExt_DispatchEvents();
  EXPECT_EQ(PelmMapCtl_GetNumDevices_stdcall(), 1u);
  EXPECT_EQ(ReadControls(0), (Controls{0, 0, 0x0104, 0}));
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), featureReads);
}

}  // namespace
}  // namespace pelm::test
