#pragma once
// What the tests of the switch and indicator models share: a fixture that
// waits for what the writer sends and takes devices away.

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/library_fixture.h"

namespace pelm::test {

class SwitchModelTest : public LibraryTest {
 protected:
  // The reports of `op` that reached the device, once `count` of them have.
  static std::vector<sim::Report> WaitForSent(const sim::SimDevice& device, sim::LogOp op, std::size_t count) {
    const auto succeeded = [op](const sim::LogEntry& entry) { return entry.op == op && entry.succeeded; };
    device.WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return static_cast<std::size_t>(std::count_if(log.begin(), log.end(), succeeded)) >= count;
    });
    std::vector<sim::Report> sent;
    for (const sim::LogEntry& entry : device.LogOf(op)) {
      if (entry.succeeded) sent.push_back(entry.bytes);
    }
    return sent;
  }

  // Unplugs a device that the library follows (PelmDev_Init with an instance)
  // and lets the library hear of it.
  void Disconnect(const sim::SimDevice& device) {
    bus().Unplug(device.Description().path);
    PelmDevExt_DispatchEvents();
  }
};

}  // namespace pelm::test
