#pragma once
// What sysfs tells about the hidraw nodes present, and the device path the
// library gives each one.
//
// hidraw node numbers change when a panel is unplugged and plugged in again,
// so the path is built from the kernel's physical path of the HID device
// (HID_PHYS: the port and interface, the same for the same panel on the same
// port). A HID device without one (some virtual devices) falls back on its
// sysfs name, which is unique while it is present. Off USB the physical path
// names the bus's controller, shared by every device on it (a Bluetooth
// adapter's address), so there the serial number (HID_UNIQ) is added.

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pelm::linux_hid {

struct HidrawNode {
  std::string node;       // "hidraw3": the character device is /dev/hidraw3
  std::string devpath;    // the node's sysfs path below the sysfs root, as uevents name it
  std::string hidDevice;  // the HID device's sysfs name, e.g. "0003:FFF0:0050.0007": unique while present
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  uint16_t versionNumber = 0;  // bcdDevice of the USB device above; 0 without one
  std::string uniq;            // HID_UNIQ: the serial number, possibly empty
  std::string path;            // the library's device path for it (upper case)
};

// KEY=VALUE lines of a uevent file.
std::map<std::string, std::string> ParseUeventFile(std::string_view text);

// The device path for a HID device with these uevent values, or nullopt when
// HID_ID is missing or malformed. `sysfsName` is the HID device's directory
// name, the fallback identity. Two devices may get the same path (identical
// virtual devices); the node map tells them apart.
std::optional<std::string> DevicePathFor(const std::map<std::string, std::string>& hidUevent,
                                         const std::string& sysfsName);

// Describes hidraw node `node` (e.g. "hidraw3") from the sysfs tree at
// `sysfsRoot` ("/sys" on a running system).
std::optional<HidrawNode> DescribeNode(const std::string& sysfsRoot, const std::string& node);

// Every hidraw node present, in node-number order.
std::vector<HidrawNode> ScanHidrawNodes(const std::string& sysfsRoot);

// Compares device paths without regard to case.
bool SamePathIgnoringCase(std::string_view a, std::string_view b);

}  // namespace pelm::linux_hid
