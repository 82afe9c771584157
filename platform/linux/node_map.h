#pragma once
// The hidraw nodes present and the device path of each: what the backend
// looks a path up in when it opens a device, and what the hot-plug watch
// describes a node with.

#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/sysfs_hidraw.h"
#include "platform/linux/uevent_source.h"

namespace pelm::linux_hid {

class NodeMap {
 public:
  // `sysfsRoot` is "/sys" on a running system.
  explicit NodeMap(std::string sysfsRoot);

  const std::string& SysfsRoot() const { return sysfsRoot_; }

  // Reads every node from sysfs afresh; returns them in node-number order.
  std::vector<HidrawNode> Rescan();
  // The node whose device path is `path` (compared without regard to case).
  std::optional<HidrawNode> Find(std::string_view path);
  // Describes node `name` (e.g. "hidraw3") afresh, as after its add or change
  // event; nullopt when it is gone or not a HID device's node.
  std::optional<HidrawNode> Refresh(const std::string& name);

 private:
  const std::string sysfsRoot_;
};

}  // namespace pelm::linux_hid
