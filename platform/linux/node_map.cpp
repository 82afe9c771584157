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

void NodeMap::NoteOpenResult(const std::string& path, int error) {
  std::lock_guard hold(mutex_);
  openErrors_[path] = error;
}

bool NodeMap::LastOpenFailed(const std::string& path) const {
  std::lock_guard hold(mutex_);
  const auto known = openErrors_.find(path);
  return known != openErrors_.end() && known->second != 0;
}

}  // namespace pelm::linux_hid
