#include "platform/linux/uevent_watch.h"

#include <filesystem>
#include <system_error>

namespace pelm::linux_hid {
namespace {

constexpr char kHidrawSubsystem[] = "hidraw";
constexpr char kHidSubsystem[] = "hid";
// Where a HID device's hidraw node sits below it in sysfs.
constexpr char kHidrawChildren[] = "hidraw";

}  // namespace

UeventWatch::UeventWatch(NodeMap& nodes, std::unique_ptr<UeventSource> source, UeventGroup group,
                         platform::DeviceEventHandler handler)
    : nodes_(nodes), source_(std::move(source)), group_(group), handler_(std::move(handler)) {
  for (const HidrawNode& node : nodes_.Rescan()) knownPaths_[node.devpath] = node.path;
}

unsigned UeventWatch::DispatchPending() {
  unsigned handled = 0;
  UeventDatagram datagram;
  for (;;) {
    switch (source_->Receive(datagram)) {
      case ReceiveResult::Empty:
        return handled;
      case ReceiveResult::Overrun:
        handled += Reconcile();
        break;
      case ReceiveResult::Datagram:
        if (!FromTrustedSender(datagram, group_)) break;
        if (const std::optional<Uevent> event = ParseUeventMessage(datagram.bytes.data(), datagram.bytes.size())) {
          handled += Handle(*event);
        }
        break;
    }
  }
}

unsigned UeventWatch::Reconcile() {
  // What is still queued was sent before the rescan, which sees its outcome:
  // handling it as well would report some of it twice.
  UeventDatagram stale;
  while (source_->Receive(stale) != ReceiveResult::Empty) {
  }
  std::map<std::string, std::string> present;
  for (const HidrawNode& node : nodes_.Rescan()) present[node.devpath] = node.path;

  unsigned handled = 0;
  for (auto known = knownPaths_.begin(); known != knownPaths_.end();) {
    if (present.contains(known->first)) {
      ++known;
      continue;
    }
    const std::string path = known->second;
    known = knownPaths_.erase(known);
    handler_(platform::DeviceEvent::Removal, path.c_str());
    ++handled;
  }
  for (const auto& [devpath, path] : present) {
    // A lost change may have given a node that could not be opened its permissions.
    const bool known = knownPaths_.contains(devpath);
    if (known && !nodes_.LastOpenFailed(path)) continue;
    knownPaths_[devpath] = path;
    handler_(platform::DeviceEvent::Arrival, path.c_str());
    ++handled;
  }
  return handled;
}

unsigned UeventWatch::Handle(const Uevent& event) {
  if (event.subsystem == kHidSubsystem && event.action == "bind") return ReexamineNodesOf(event.devpath);
  if (event.subsystem != kHidrawSubsystem) return 0;
  if (event.action == "remove") {
    const auto known = knownPaths_.find(event.devpath);
    if (known == knownPaths_.end()) return 0;
    const std::string path = known->second;
    knownPaths_.erase(known);
    handler_(platform::DeviceEvent::Removal, path.c_str());
    return 1;
  }
  const std::optional<std::string> name = HidrawNodeName(event.devname);
  if (!name) return 0;
  if (event.action == "add") return Arrive(*name, event.devpath);
  if (event.action == "change") return Reexamine(*name, event.devpath);
  return 0;
}

unsigned UeventWatch::Arrive(const std::string& name, const std::string& devpath) {
  const std::optional<HidrawNode> node = nodes_.Refresh(name);
  if (!node) return 0;
  knownPaths_[devpath] = node->path;
  handler_(platform::DeviceEvent::Arrival, node->path.c_str());
  return 1;
}

unsigned UeventWatch::Reexamine(const std::string& name, const std::string& devpath) {
  const auto known = knownPaths_.find(devpath);
  if (known != knownPaths_.end() && !nodes_.LastOpenFailed(known->second)) return 0;
  return Arrive(name, devpath);
}

unsigned UeventWatch::ReexamineNodesOf(const std::string& hidDevpath) {
  if (!hidDevpath.starts_with('/')) return 0;
  unsigned handled = 0;
  std::error_code error;
  const std::filesystem::path children = std::filesystem::path(nodes_.SysfsRoot()) / hidDevpath.substr(1) / kHidrawChildren;
  for (const auto& child : std::filesystem::directory_iterator(children, error)) {
    const std::string name = child.path().filename().string();
    if (HidrawNodeName(name)) handled += Reexamine(name, hidDevpath + "/" + kHidrawChildren + "/" + name);
  }
  return handled;
}

}  // namespace pelm::linux_hid
