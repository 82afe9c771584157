#include "testbed/uhid/uhid_cockpit.h"

#include <filesystem>
#include <system_error>

namespace pelm::vm {
namespace {

constexpr char kHidrawClass[] = "/sys/class/hidraw";

}  // namespace

std::size_t HidrawNodeCount() {
  std::error_code error;
  std::size_t count = 0;
  for (auto entry = std::filesystem::directory_iterator(kHidrawClass, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    ++count;
  }
  return count;
}

std::string PhysFor(int port) { return "usb-0000:00:1d.0-" + std::to_string(port) + "/input0"; }
std::string SerialFor(int port) { return "PV" + std::to_string(1000 + port); }

std::unique_ptr<UhidPanel> MakePanel(uint16_t productId, int port, uint16_t vendorId) {
  return std::make_unique<UhidPanel>(PanelIdentity{vendorId, productId, PhysFor(port), SerialFor(port)},
                                     sim::MakePanel(productId));
}

}  // namespace pelm::vm
