#include "support/sim_fixture.h"

namespace pelm::test {

bool WaitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

std::string InterfacePath(uint16_t productId, int instance) { return sim::PanelPath(productId, instance); }

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
