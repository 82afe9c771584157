// The throttle quadrant through its exports: decoding of its report, null
// pointers, and the pacing of its reader.

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <thread>

#include "models/throttle.h"
#include "platform/sim/panels/throttle_panel.h"
#include "support/input_capture.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kThrottleId = sim::ThrottlePanel::kProductId;

struct Controls {
  std::array<uint8_t, kThrottleLeverCount> levers{0xA5, 0xA5, 0xA5, 0xA5, 0xA5, 0xA5};
  uint8_t switches = 0xA5;
  bool operator==(const Controls&) const = default;
};

Controls ReadControls(int32_t index) {
  Controls c;
  EXPECT_EQ(PelmThrottle_GetControlVals(index, &c.levers[0], &c.levers[1], &c.levers[2], &c.levers[3],
                                        &c.levers[4], &c.levers[5], &c.switches),
            PELM_SUCCESS);
  return c;
}

class ThrottleTest : public LibraryTest {};

TEST_F(ThrottleTest, LeversAreCopiedAndContactsReversed) {
  struct Case {
    uint8_t contacts;  // report byte 7
    uint8_t switches;
  };
  const Case cases[] = {{0x01, 0x10}, {0x02, 0x08}, {0x04, 0x04}, {0x08, 0x02}, {0x0F, 0x1E}, {0xF0, 0x00}};
  auto device = Plug(kThrottleId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(ThrottleInputRecord));
  std::size_t reported = 0;
  for (const Case& c : cases) {
    const uint8_t base = static_cast<uint8_t>(0x10 * reported);
    const Controls expected{{base, uint8_t(base + 1), uint8_t(base + 2), 0x00, 0x80, 0xFF}, c.switches};
    device->InjectInput({0, expected.levers[0], expected.levers[1], expected.levers[2], expected.levers[3],
                         expected.levers[4], expected.levers[5], c.contacts});
    ASSERT_TRUE(capture.WaitForCount(++reported));
    const CapturedInput call = capture.Calls().back();
    EXPECT_EQ(call.modelType, PELM_MODEL_THROTTLE);
    const auto record = call.As<ThrottleInputRecord>();
    EXPECT_EQ(record.switchVals, c.switches) << "contacts 0x" << std::hex << int{c.contacts};
    EXPECT_TRUE(std::equal(expected.levers.begin(), expected.levers.end(), record.axisVals));
    EXPECT_EQ(ReadControls(0), expected);
  }
}

TEST_F(ThrottleTest, NullPointersAreSkippedAndNothingIsReset) {
  auto device = Plug(kThrottleId, 1);
  auto& panel = device->PanelAs<sim::ThrottlePanel>();
  for (int lever = 1; lever <= sim::ThrottlePanel::kLeverCount; ++lever) panel.SetLever(lever, uint8_t(lever * 20));
  panel.SetSwitchContacts(0x05);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(ThrottleInputRecord));
  device->InjectInput(panel.InputReport());
  ASSERT_TRUE(capture.WaitForCount(1));

  EXPECT_EQ(PelmThrottle_GetControlVals(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            PELM_SUCCESS);
  uint8_t lever3 = 0;
  uint8_t switches = 0;
  EXPECT_EQ(PelmThrottle_GetControlVals_stdcall(0, nullptr, nullptr, &lever3, nullptr, nullptr, nullptr, &switches),
            PELM_SUCCESS);
  EXPECT_EQ(lever3, 60);
  EXPECT_EQ(switches, 0x14);
  const Controls expected{{20, 40, 60, 80, 100, 120}, 0x14};
  EXPECT_EQ(ReadControls(0), expected);
  EXPECT_EQ(ReadControls(0), expected);
}

TEST_F(ThrottleTest, AContinuouslySendingQuadrantIsReadAtMostTwentyTimesASecond) {
  auto device = Plug(kThrottleId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(ThrottleInputRecord));
  // The simulated quadrant sends a report about every millisecond, fifty times
  // faster than the reader's pacing; the loop paces the device, it waits for
  // nothing in the library.
  constexpr auto kWindow = 1s;
  constexpr std::size_t kMostExpected = 30;  // 21 at the pacing, with room for a slow clock
  const auto end = std::chrono::steady_clock::now() + kWindow;
  uint8_t position = 0;
  while (std::chrono::steady_clock::now() < end) {
    device->InjectInput({0, ++position, 0, 0, 0, 0, 0, 0});
    std::this_thread::sleep_for(1ms);
  }
  const std::size_t reported = capture.Count();
  EXPECT_GT(reported, 0u);
  EXPECT_LE(reported, kMostExpected);
}

TEST_F(ThrottleTest, IndexAndConnectionAreChecked) {
  auto device = Plug(kThrottleId, 1);
  PelmDev_Init(kHostInstance);
  uint8_t value = 0xA5;
  EXPECT_EQ(PelmThrottle_GetControlVals(4, &value, &value, &value, &value, &value, &value, &value), PELM_ERR_INDEX);
  EXPECT_EQ(PelmThrottle_GetControlVals(1, &value, &value, &value, &value, &value, &value, &value),
            PELM_ERR_NODEVICE);
  bus().Unplug(device->Spec().path);
  PelmDevExt_DispatchEvents();
  EXPECT_EQ(PelmThrottle_GetNumDevices(), 0u);
  EXPECT_EQ(PelmThrottle_GetControlVals(0, &value, &value, &value, &value, &value, &value, &value),
            PELM_ERR_NODEVICE);
  EXPECT_EQ(value, 0xA5);
}

}  // namespace
}  // namespace pelm::test
