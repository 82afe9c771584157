#include "platform/linux/node_map.h"

namespace pelm::linux_hid {

NodeMap::NodeMap(std::string sysfsRoot) : sysfsRoot_(std::move(sysfsRoot)) {}

std::vector<HidrawNode> NodeMap::Rescan() { return ScanHidrawNodes(sysfsRoot_); }

std::optional<HidrawNode> NodeMap::Find(std::string_view path) {
  for (HidrawNode& node : ScanHidrawNodes(sysfsRoot_)) {
    if (SamePathIgnoringCase(node.path, path)) return std::move(node);
  }
  return std::nullopt;
}

std::optional<HidrawNode> NodeMap::Refresh(const std::string& name) { return DescribeNode(sysfsRoot_, name); }

}  // namespace pelm::linux_hid
