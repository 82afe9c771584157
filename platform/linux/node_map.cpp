#include "platform/linux/node_map.h"

#include "platform/linux/uevent_message.h"

namespace pelm::linux_hid {
namespace {

constexpr char kHidrawSubsystem[] = "hidraw";

}  // namespace

NodeMap::NodeMap(std::string sysfsRoot, std::unique_ptr<UeventSource> kernelEvents)
    : sysfsRoot_(std::move(sysfsRoot)), kernelEvents_(std::move(kernelEvents)) {}

std::vector<HidrawNode> NodeMap::Rescan() {
  std::lock_guard hold(mutex_);
  return RescanLocked();
}

std::optional<HidrawNode> NodeMap::Find(std::string_view path) {
  std::lock_guard hold(mutex_);
  if (!kernelEvents_ || !scanned_) {
    RescanLocked();
  } else {
    TakeInEventsLocked();
  }
  for (const auto& [name, node] : nodes_) {
    if (SamePathIgnoringCase(node.path, path)) return node;
  }
  return std::nullopt;
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
  std::vector<HidrawNode> present = ScanHidrawNodes(sysfsRoot_);
  nodes_.clear();
  for (const HidrawNode& node : present) nodes_[node.node] = node;
  scanned_ = true;
  return present;
}

std::optional<HidrawNode> NodeMap::RefreshLocked(const std::string& name) {
  std::optional<HidrawNode> node = DescribeNode(sysfsRoot_, name);
  if (node) {
    nodes_[name] = *node;
  } else {
    nodes_.erase(name);
  }
  return node;
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
