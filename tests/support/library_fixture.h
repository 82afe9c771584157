#pragma once
// Tests of the library through its exports, over the simulated bus. Every test
// ends with PelmDev_Terminate so that no device object outlives it.

#include <memory>
#include <vector>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "support/sim_fixture.h"

namespace pelm::test {

// Any non-null value turns hot-plug notification on.
inline void* const kHostInstance = reinterpret_cast<void*>(0x400000);

class LibraryTest : public SimTest {
 protected:
  void TearDown() override {
    PelmDev_Terminate();
    SimTest::TearDown();
  }

  // Plugs a panel of the model with this product ID (instance numbers make the
  // paths distinct) and returns the simulated device.
  std::shared_ptr<sim::SimDevice> Plug(uint16_t productId, int instance, platform::HidCaps caps = {8, 8, 8}) {
    return bus().Plug(PanelDescription(productId, instance, caps));
  }
};

// Connect events as the callback saw them.
struct ConnectEvent {
  int32_t modelType;
  int32_t deviceIndex;
  int32_t event;
  bool operator==(const ConnectEvent&) const = default;
};

}  // namespace pelm::test
