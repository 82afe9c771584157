// The engine-control module through its exports: decoding of its contacts,
// callbacks only for reports with a selector contact, and the open-time read.

#include "models/engine_ctl.h"

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/engine_ctl_panel.h"

namespace pelm::test {
namespace {

constexpr uint16_t kEngineCtlId = sim::EngineCtlPanel::kProductId;

// The selector, the first switch, the three-position switch, the second
// switch and the switch word, as the getter and the record give them.
Values FromRecord(const CapturedInput& call) {
  const auto record = call.As<EngineCtlInputRecord>();
  return {record.controlVals[0], record.controlVals[1], record.controlVals[2], record.controlVals[3],
          record.switchVals};
}

class EngineCtlTest : public ModelTest {};

TEST_F(EngineCtlTest, ReportsAreDecodedAndOnlySelectorReportsCalledBack) {
  // Applied in order; each step changes what the getters show, so the test
  // knows when the reader has handled it.
  struct Step {
    uint8_t b1, b2, b3;
    Values expected;
    bool calledBack;
  };
  const Step steps[] = {
      // All contacts open: active-low bits 2-7 set, the three-position switch in
      // its middle, the selector not yet known.
      {0x00, 0x00, 0x00, {0, 0, 1, 0, 0x00FC}, false},
      // Bits 6 and 2 closed: the lower position wins.
      {0x44, 0x00, 0x00, {1, 0, 1, 0, 0x00FC}, true},
      {0x00, 0x00, 0x40, {1, 0, 0, 0, 0x00FC}, false},  // no selector contact: kept
      {0x01, 0x00, 0x40, {1, 0, 2, 0, 0x00FC}, false},
      {0x04, 0x00, 0x00, {5, 0, 1, 0, 0x00FC}, true},
      {0x20, 0x00, 0x00, {2, 0, 1, 0, 0x00FC}, true},
      {0x10, 0x00, 0x00, {3, 0, 1, 0, 0x00FC}, true},
      {0x08, 0x00, 0x00, {4, 0, 1, 0, 0x00FC}, true},
      {0x82, 0x00, 0x00, {4, 1, 1, 1, 0x00FC}, false},  // either contact closes a two-contact switch
      {0x00, 0x00, 0xD0, {4, 1, 0, 1, 0x00FC}, false},
      {0x00, 0x55, 0x00, {4, 0, 1, 0, 0x00C0}, false},  // active-low contacts of byte 2 closed
      {0x00, 0xAA, 0x00, {4, 0, 1, 0, 0x0FFC}, false},  // active-high contacts of byte 2
      {0x00, 0x00, 0x05, {4, 0, 1, 0, 0x00FF}, false},
      {0x40, 0x00, 0x2A, {1, 0, 1, 0, 0x003C}, true},  // byte 3 bit 5 is not used
  };
  auto device = Plug(kEngineCtlId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(EngineCtlInputRecord));
  std::vector<Values> expectedCalls;
  for (const Step& step : steps) {
    device->InjectInput({0, step.b1, step.b2, step.b3});
    EXPECT_TRUE(WaitUntil([&] { return Read(PelmEngineCtl_GetControlVals) == step.expected; }))
        << "report " << std::hex << int{step.b1} << " " << int{step.b2} << " " << int{step.b3} << " gives "
        << testing::PrintToString(Read(PelmEngineCtl_GetControlVals));
    if (step.calledBack) expectedCalls.push_back(step.expected);
  }
  ASSERT_TRUE(capture.WaitForCount(expectedCalls.size()));
  std::vector<Values> calls;
  for (const CapturedInput& call : capture.Calls()) calls.push_back(FromRecord(call));
  EXPECT_EQ(calls, expectedCalls);
}

TEST_F(EngineCtlTest, TheOpenTimeReportSeedsTheGettersWithoutACallback) {
  PelmDev_Init(kHostInstance);
  InputCapture capture(sizeof(EngineCtlInputRecord));
  auto device = bus().Plug(PanelDescription(kEngineCtlId, 1));
  device->PanelAs<sim::EngineCtlPanel>().SetReportBytes({0x10, 0xFF, 0xFF});
  PelmDevExt_DispatchEvents();
  ASSERT_EQ(PelmEngineCtl_GetNumDevices(), 1u);
  EXPECT_EQ(Read(PelmEngineCtl_GetControlVals), (Values{3, 1, 0, 1, 0x0F03}));

  // The first callback is the first input report's, not the open-time read's.
  device->InjectInput({0, 0x40, 0xFF, 0xFF});
  ASSERT_TRUE(capture.WaitForCount(1));
  ASSERT_EQ(capture.Count(), 1u);
  EXPECT_EQ(FromRecord(capture.Calls()[0]), (Values{1, 1, 0, 1, 0x0F03}));

  Disconnect(*device);
  EXPECT_EQ(PelmEngineCtl_GetControlVals(0, nullptr, nullptr, nullptr, nullptr, nullptr), PELM_ERR_NODEVICE);
}

}  // namespace
}  // namespace pelm::test
