#include "platform/linux/node_map.h"

#include <algorithm>

#include "platform/linux/uevent_message.h"

namespace pelm::linux_hid {
namespace {

constexpr char kHidrawSubsystem[] = "hidraw";
// Between a shared path and the HID device's name that sets a node apart.
constexpr char kDuplicateSeparator = '#';

}  // namespace

NodeMap::NodeMap(std::string sysfsRoot, std::unique_ptr<UeventSource> kernelEvents)
    : sysfsRoot_(std::move(sysfsRoot)), kernelEvents_(std::move(kernelEvents)) {}

std::vector<HidrawNode> NodeMap::Rescan() {
  std::lock_guard hold(mutex_);
  return RescanLocked();
}

std::optional<HidrawNode> NodeMap::Find(std::string_view path) {
  std::lock_guard hold(mutex_);
  CatchUpLocked();
  for (const auto& [name, node] : nodes_) {
    if (SamePathIgnoringCase(node.path, path)) return node;
  }
  return std::nullopt;
}

std::vector<HidrawNode> NodeMap::Present() {
  std::lock_guard hold(mutex_);
  CatchUpLocked();
  std::vector<HidrawNode> present;
  for (const auto& [name, node] : nodes_) present.push_back(node);
  // Names differ only in their number: shorter is lower.
  std::sort(present.begin(), present.end(), [](const HidrawNode& a, const HidrawNode& b) {
    return a.node.size() != b.node.size() ? a.node.size() < b.node.size() : a.node < b.node;
  });
  return present;
}

std::optional<HidrawNode> NodeMap::Refresh(const std::string& name) {
  std::lock_guard hold(mutex_);
  return RefreshLocked(name);
}

void NodeMap::NoteOpenResult(const std::string& path, int error) {
  std::lock_guard hold(mutex_);
  openErrors_[path] = error;
}

bool NodeMap::LastOpenFailed(const std::string& path) const {
  std::lock_guard hold(mutex_);
  const auto known = openErrors_.find(path);
  return known != openErrors_.end() && known->second != 0;
}

std::vector<HidrawNode> NodeMap::RescanLocked() {
  // Events queued now are older than the scan, which sees their outcome.
  if (kernelEvents_) {
    UeventDatagram stale;
    while (kernelEvents_->Receive(stale) != ReceiveResult::Empty) {
    }
  }
  std::map<std::string, HidrawNode> before;
  before.swap(nodes_);
  std::vector<HidrawNode> scanned = ScanHidrawNodes(sysfsRoot_);
  const auto knownBefore = [&before](const HidrawNode& node) {
    const auto known = before.find(node.node);
    return known != before.end() && known->second.hidDevice == node.hidDevice ? &known->second : nullptr;
  };
  // Nodes known before are placed first, so that they keep their paths.
  for (HidrawNode& node : scanned) {
    if (const HidrawNode* known = knownBefore(node)) {
      node.path = known->path;
      node = PlaceLocked(std::move(node));
    }
  }
  for (HidrawNode& node : scanned) {
    if (!knownBefore(node)) node = PlaceLocked(std::move(node));
  }
  scanned_ = true;
  return scanned;
}

std::optional<HidrawNode> NodeMap::RefreshLocked(const std::string& name) {
  std::optional<HidrawNode> node = DescribeNode(sysfsRoot_, name);
  const auto known = nodes_.find(name);
  if (known != nodes_.end()) {
    if (node && known->second.hidDevice == node->hidDevice) node->path = known->second.path;
    nodes_.erase(known);
  }
  if (!node) return std::nullopt;
  return PlaceLocked(std::move(*node));
}

const HidrawNode& NodeMap::PlaceLocked(HidrawNode node) {
  const bool taken = std::any_of(nodes_.begin(), nodes_.end(), [&node](const auto& other) {
    return SamePathIgnoringCase(other.second.path, node.path);
  });
  // The kernel names HID devices in upper-case hexadecimal, as paths are kept.
  if (taken) node.path += kDuplicateSeparator + node.hidDevice;
  const std::string name = node.node;
  return nodes_[name] = std::move(node);
}

void NodeMap::CatchUpLocked() {
  if (!kernelEvents_ || !scanned_) {
    RescanLocked();
  } else {
    TakeInEventsLocked();
  }
}

void NodeMap::TakeInEventsLocked() {
  UeventDatagram datagram;
  for (;;) {
    switch (kernelEvents_->Receive(datagram)) {
      case ReceiveResult::Empty:
        return;
      case ReceiveResult::Overrun:
        RescanLocked();
        return;
      case ReceiveResult::Datagram:
        break;
    }
    if (!FromTrustedSender(datagram, UeventGroup::Kernel)) continue;
    const std::optional<Uevent> event = ParseUeventMessage(datagram.bytes.data(), datagram.bytes.size());
    if (!event || event->subsystem != kHidrawSubsystem) continue;
    const std::optional<std::string> name = HidrawNodeName(event->devname);
    if (!name) continue;
    if (event->action == "remove") {
      nodes_.erase(*name);
    } else {
      RefreshLocked(*name);
    }
  }
}

}  // namespace pelm::linux_hid
