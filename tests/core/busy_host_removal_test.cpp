// A panel unplugged while a host thread keeps queuing reports for it: the
// removal stops the panel's writer promptly instead of draining for as long as
// the host keeps queuing.

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "core/model_table.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

// Every send to the panel is slow, so a busy host refills the queue as fast as
// a draining writer empties it.
constexpr auto kSlowSend = std::chrono::milliseconds(1);

TEST_F(LibraryTest, RemovalOfAPanelUnderABusyHostEnds) {
  auto device = Plug(ModelByTypeCode(PELM_MODEL_BUTTONS)->productId, 1);
  device->SetOperationDelay(kSlowSend);
  PelmDev_Init(kHostInstance);
  ASSERT_EQ(PelmButtons_GetNumDevices(), 1u);

  std::atomic<bool> hostBusy{true};
  std::thread host([&] {
    for (uint32_t value = 0; hostBusy; ++value) PelmButtons_SetIndicators(0, value);
  });
  ASSERT_TRUE(WaitUntil([&] { return device->CountOf(sim::LogOp::SetFeature) > 0; }));

  bus().Unplug(device->Description().path);
  auto removal = std::async(std::launch::async, [] { return PelmDevExt_DispatchEvents(); });
  const bool removalEnded = WaitUntil([&] { return removal.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
  hostBusy = false;
  host.join();
  EXPECT_TRUE(removalEnded);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
}

}  // namespace
}  // namespace pelm::test
