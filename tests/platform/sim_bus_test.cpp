// The simulated bus's own switches that benchmarks rely on, and its hot-plug
// notifier's hand-over at Terminate.

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "support/sim_fixture.h"

namespace pelm::test {
namespace {

class SimBusTest : public SimTest {};

// As hidraw does for each open node: a full buffer drops what comes, not what
// waits.
TEST_F(SimBusTest, ADeviceKeepsTheFirstUnreadReportsAndDropsTheNewestWhenFull) {
  auto device = bus().Plug(PanelDescription(0x0200, 1));
  platform::HidHandle handle = platform::OpenDevice(device->Description().path.c_str(), platform::OpenMode::Overlapped);
  ASSERT_TRUE(handle);
  constexpr int kInjected = 100;
  for (int i = 0; i < kInjected; ++i) device->InjectInput({0, static_cast<uint8_t>(i)});
  ASSERT_EQ(device->UnreadInput(), sim::SimDevice::kInputBufferDepth);
  const auto cancel = platform::CreateReadCancel();
  for (std::size_t i = 0; i < sim::SimDevice::kInputBufferDepth; ++i) {
    uint8_t report[2] = {};
    uint32_t bytesRead = 0;
    ASSERT_EQ(handle->ReadInput(report, sizeof report, bytesRead, *cancel), platform::ReadStatus::Completed);
    EXPECT_EQ(report[1], i);
  }
}

// Terminate detaches the notifier and then frees it: a removal being reported
// on another thread at that moment must have finished by then.
TEST_F(SimBusTest, DetachingTheNotifierWaitsForANotificationUnderWay) {
  auto device = bus().Plug(PanelDescription(0x0050, 1), false);
  std::atomic<bool> entered{false}, release{false}, finished{false};
  bus().AttachNotifier([&](platform::DeviceEvent, const std::string&) {
    entered = true;
    WaitUntil([&] { return release.load(); });
    finished = true;
  });
  std::thread unplugging([&] { bus().Unplug(device->Description().path); });
  ASSERT_TRUE(WaitUntil([&] { return entered.load(); }));

  std::atomic<bool> detaching{false}, finishedAtDetach{false};
  std::thread detach([&] {
    detaching = true;
    bus().DetachNotifier();
    finishedAtDetach = finished.load();
  });
  ASSERT_TRUE(WaitUntil([&] { return detaching.load(); }));
  release = true;
  detach.join();
  unplugging.join();
  EXPECT_TRUE(finishedAtDetach);
}

}  // namespace
}  // namespace pelm::test
