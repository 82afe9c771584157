#pragma once
// Shared helpers for tests over the simulated bus.

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "platform/sim/sim_bus.h"

namespace pelm::test {

// Polls `condition` until it holds or the (generous) deadline passes.
bool WaitUntil(const std::function<bool()>& condition,
               std::chrono::milliseconds deadline = std::chrono::seconds(5));

// A Windows-style interface path for a simulated device, in lower case as the
// OS reports it.
std::string InterfacePath(uint16_t productId, int instance);

sim::DeviceDescription PanelDescription(uint16_t productId, int instance, platform::HidCaps caps = {8, 8, 8});

// Resets the simulated bus around every test.
class SimTest : public ::testing::Test {
 protected:
  void SetUp() override { sim::Bus::Instance().Reset(); }
  void TearDown() override { sim::Bus::Instance().Reset(); }
  sim::Bus& bus() { return sim::Bus::Instance(); }
};

// The bytes of every logged entry of one kind.
std::vector<sim::Report> SentReports(const sim::SimDevice& device, sim::LogOp op);

}  // namespace pelm::test
