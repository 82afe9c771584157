#pragma once
// Device events as they come off the kernel's uevent netlink socket: either the
// kernel's own message ("add@/devices/...\0KEY=VALUE\0...") or, when the udev
// daemon runs, udev's re-broadcast ("libudev\0" and a binary header in front
// of the same KEY=VALUE list).

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace pelm::linux_hid {

struct Uevent {
  std::string action;     // "add", "remove", ...
  std::string subsystem;  // "hidraw", "hid", ...
  std::string devpath;    // sysfs path below /sys
  std::string devname;    // as sent: "hidraw3" from the kernel, "/dev/hidraw3" from udevd
};

// Nullopt for a message of neither form or one that lacks ACTION or SUBSYSTEM.
std::optional<Uevent> ParseUeventMessage(const char* message, std::size_t length);

// The hidraw node a DEVNAME names ("hidraw3" for both "hidraw3" and
// "/dev/hidraw3"); nullopt for anything that is not a hidraw node's name.
std::optional<std::string> HidrawNodeName(std::string_view devname);

}  // namespace pelm::linux_hid
