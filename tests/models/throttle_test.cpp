// The throttle quadrant through its exports: report decoding, null pointers,
// and the pacing of its reader.

#include "models/throttle.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <thread>

#include "models/model_test.h"
#include "platform/sim/panels/throttle_panel.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kThrottleId = sim::ThrottlePanel::kProductId;

class ThrottleTest : public ModelTest {};

TEST_F(ThrottleTest, LeversAreCopiedAndContactsReversed) {
  const std::pair<uint8_t, uint8_t> contactsToSwitches[] = {{0x01, 0x10}, {0x02, 0x08}, {0x04, 0x04},
                                                            {0x08, 0x02}, {0x0F, 0x1E}, {0xF0, 0x00}};
  auto device = Plug(kThrottleId, 1);
  auto& panel = device->PanelAs<sim::ThrottlePanel>();
  PelmDev_Init(kHostInstance);
  for (const auto& [contacts, switches] : contactsToSwitches) {
    const std::array<uint8_t, kThrottleLeverCount> levers = {contacts, 1, 0x7F, 0x80, 0xFE, 0xFF};
    for (int lever = 0; lever < kThrottleLeverCount; ++lever) panel.SetLever(lever + 1, levers[lever]);
    panel.SetSwitchContacts(contacts);
    Deliver(*device, {panel.InputReport()});
    Values expected(levers.begin(), levers.end());
    expected.push_back(switches);
    // Twice: nothing is reset.
    EXPECT_EQ(Read(PelmThrottle_GetControlVals), expected) << "contacts " << int{contacts};
    EXPECT_EQ(Read(PelmThrottle_GetControlVals), expected);
  }
  EXPECT_EQ(PelmThrottle_GetControlVals_stdcall(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            PELM_SUCCESS);

  Disconnect(*device);
  EXPECT_EQ(PelmThrottle_GetControlVals(0, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            PELM_ERR_NODEVICE);
}

// The quadrant's lever noise keeps it sending; the device buffers a few dozen
// reports and drops what comes when they are unread. The host hears from it
// at most twenty times a second, and always of where the levers are now.
TEST_F(ThrottleTest, AContinuouslySendingQuadrantIsReadAtMostTwentyTimesASecondAndItsLastPositionArrives) {
  auto device = Plug(kThrottleId, 1);
  PelmDev_Init(nullptr);
  InputCapture capture(sizeof(ThrottleInputRecord));
  // The simulated quadrant sends a report about every millisecond, fifty times
  // faster than the reader's pacing; the loop paces the device, it waits for
  // nothing in the library.
  constexpr auto kWindow = 1s;
  constexpr std::size_t kMostExpected = 30;  // 21 at the pacing, with room for a slow clock
  const auto end = std::chrono::steady_clock::now() + kWindow;
  for (uint8_t position = 0; std::chrono::steady_clock::now() < end; ++position) {
    device->InjectInput({0, position, 0, 0, 0, 0, 0, 0});
    std::this_thread::sleep_for(1ms);
  }
  const std::size_t reported = capture.Count();
  EXPECT_GT(reported, 0u);
  EXPECT_LE(reported, kMostExpected);

  // Lever 2, never moved in the loop, goes to its stop and stays there, the
  // quadrant still sending. The next callback but one at the latest tells it.
  constexpr uint8_t kLastPosition = 0xAB;
  const std::size_t before = capture.Count();
  const auto atLastPosition = [](const CapturedInput& call) {
    return call.As<ThrottleInputRecord>().axisVals[1] == kLastPosition;
  };
  ASSERT_TRUE(WaitUntil([&] {
    device->InjectInput({0, 0, kLastPosition, 0, 0, 0, 0, 0});
    const std::vector<CapturedInput> calls = capture.Calls();
    return std::any_of(calls.begin(), calls.end(), atLastPosition);
  })) << "the host never saw the lever's last position";
  const std::vector<CapturedInput> calls = capture.Calls();
  const auto first = std::find_if(calls.begin() + static_cast<std::ptrdiff_t>(before), calls.end(), atLastPosition);
  EXPECT_LE(first - calls.begin() - static_cast<std::ptrdiff_t>(before), 1) << "stale positions reached the host first";
}

}  // namespace
}  // namespace pelm::test
