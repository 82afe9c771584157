#include "support/sim_fixture.h"

#include <cstdio>

namespace pelm::test {

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

std::string InterfacePath(uint16_t productId, int instance) {
  char path[160];
  std::snprintf(path, sizeof path,
                "\\\\?\\hid#vid_%04x&pid_%04x#7&sim&0&%04d#{4d1e55b2-f16f-11cf-88cb-001111000030}",
                PELM_VENDOR_ID, productId, instance);
  return path;
}

sim::DeviceDescription PanelDescription(uint16_t productId, int instance, platform::HidCaps caps) {
  sim::DeviceDescription description;
  description.path = InterfacePath(productId, instance);
  description.vendorId = PELM_VENDOR_ID;
  description.productId = productId;
  description.caps = caps;
  return description;
}

std::vector<sim::Report> SentReports(const sim::SimDevice& device, sim::LogOp op) {
  std::vector<sim::Report> reports;
  for (const sim::LogEntry& entry : device.LogOf(op)) reports.push_back(entry.bytes);
  return reports;
}

}  // namespace pelm::test
