#include "platform/linux/uevent_watch.h"

namespace pelm::linux_hid {
namespace {

constexpr char kHidrawSubsystem[] = "hidraw";

}  // namespace

UeventWatch::UeventWatch(NodeMap& nodes, std::unique_ptr<UeventSource> source, UeventGroup group,
                         platform::DeviceEventHandler handler)
    : nodes_(nodes), source_(std::move(source)), group_(group), handler_(std::move(handler)) {
  for (const HidrawNode& node : nodes_.Rescan()) knownPaths_[node.devpath] = node.path;
}

unsigned UeventWatch::DispatchPending() {
  unsigned handled = 0;
  UeventDatagram datagram;
  while (source_->Receive(datagram) == ReceiveResult::Datagram) {
    if (!FromTrustedSender(datagram, group_)) continue;
    const std::optional<Uevent> event = ParseUeventMessage(datagram.bytes.data(), datagram.bytes.size());
    if (event) handled += Handle(*event);
  }
  return handled;
}

unsigned UeventWatch::Handle(const Uevent& event) {
  if (event.subsystem != kHidrawSubsystem) return 0;
  if (event.action == "add") {
    const std::optional<std::string> name = HidrawNodeName(event.devname);
    if (!name) return 0;
    const std::optional<HidrawNode> node = nodes_.Refresh(*name);
    if (!node) return 0;
    knownPaths_[event.devpath] = node->path;
    handler_(platform::DeviceEvent::Arrival, node->path.c_str());
    return 1;
  }
  if (event.action == "remove") {
    const auto known = knownPaths_.find(event.devpath);
    if (known == knownPaths_.end()) return 0;
    const std::string path = known->second;
    knownPaths_.erase(known);
    handler_(platform::DeviceEvent::Removal, path.c_str());
    return 1;
  }
  return 0;
}

}  // namespace pelm::linux_hid
