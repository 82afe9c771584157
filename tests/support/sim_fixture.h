#pragma once
// Shared helpers for tests over the simulated bus.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/sim_bus.h"
#include "testbed/wait_until.h"

namespace pelm::test {

// The simulated bus answers at once: a wait of seconds is a fault, and a
// fault should fail fast.
inline bool WaitUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds deadline = std::chrono::seconds(5)) {
  return testbed::WaitUntil(condition, deadline);
}

// A Windows-style interface path for a simulated device, in lower case as the
// OS reports it.
inline std::string InterfacePath(uint16_t productId, int instance) { return sim::PanelPath(productId, instance); }

inline sim::DeviceDescription PanelDescription(uint16_t productId, int instance, platform::HidCaps caps = {8, 8, 8}) {
  sim::DeviceDescription description;
  description.path = InterfacePath(productId, instance);
  description.vendorId = PELM_VENDOR_ID;
  description.productId = productId;
  description.caps = caps;
  return description;
}

// Resets the simulated bus around every test.
class SimTest : public ::testing::Test {
 protected:
  void SetUp() override { sim::Bus::Instance().Reset(); }
  void TearDown() override { sim::Bus::Instance().Reset(); }
  sim::Bus& bus() { return sim::Bus::Instance(); }
};

// The bytes of every logged entry of one kind.
inline std::vector<sim::Report> SentReports(const sim::SimDevice& device, sim::LogOp op) {
  std::vector<sim::Report> reports;
  for (const sim::LogEntry& entry : device.LogOf(op)) reports.push_back(entry.bytes);
  return reports;
}

}  // namespace pelm::test
