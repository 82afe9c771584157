// The platform interface over Linux hidraw nodes.

#include <fcntl.h>
#include <linux/hidraw.h>
#include <linux/netlink.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <map>
#include <vector>

#include "platform/linux/hidraw_device.h"
#include "platform/linux/report_descriptor.h"
#include "platform/linux/shared_mutex.h"
#include "platform/linux/sysfs_hidraw.h"
#include "platform/linux/uevent_message.h"
#include "platform/platform.h"

namespace pelm::linux_hid {
namespace {

constexpr char kSysfsRoot[] = "/sys";
constexpr char kDevRoot[] = "/dev/";
constexpr char kHidrawSubsystem[] = "hidraw";
// The udev daemon re-broadcasts kernel events, after its rules ran (so the node
// has its permissions), on this netlink group; without the daemon only the
// kernel's own group carries them.
constexpr unsigned kKernelEventGroup = 1;
constexpr unsigned kUdevEventGroup = 2;
constexpr char kUdevControlSocket[] = "/run/udev/control";
constexpr std::size_t kUeventBufferSize = 8192;

std::optional<ReportLengths> ReadDescriptorLengths(int fd) {
  int size = 0;
  if (ioctl(fd, HIDIOCGRDESCSIZE, &size) < 0 || size <= 0) return std::nullopt;
  hidraw_report_descriptor descriptor{};
  descriptor.size = static_cast<uint32_t>(size);
  if (ioctl(fd, HIDIOCGRDESC, &descriptor) < 0) return std::nullopt;
  return ParseReportDescriptor(std::span<const uint8_t>(descriptor.value, descriptor.size));
}

class HidrawInterfaceList : public platform::InterfaceList {
 public:
  HidrawInterfaceList() {
    for (const HidrawNode& node : ScanHidrawNodes(kSysfsRoot)) paths_.push_back(node.path);
  }
  platform::InterfaceStep At(uint32_t index, std::string& path) override {
    if (index >= paths_.size()) return platform::InterfaceStep::NoMoreItems;
    path = paths_[index];
    return platform::InterfaceStep::Found;
  }

 private:
  std::vector<std::string> paths_;
};

// Arrivals and removals of hidraw nodes from the uevent netlink socket. The
// socket itself is the descriptor a host polls; nothing runs in the background.
class UeventNotifier : public platform::DeviceNotifier {
 public:
  UeventNotifier(int socket, platform::DeviceEventHandler handler) : socket_(socket), handler_(std::move(handler)) {
    // A removed node is gone from sysfs when its event comes, so the path of
    // every node is remembered while it is present.
    for (const HidrawNode& node : ScanHidrawNodes(kSysfsRoot)) knownPaths_[node.devpath] = node.path;
  }
  ~UeventNotifier() override { close(socket_); }

  int EventDescriptor() const override { return socket_; }

  unsigned DispatchPending() override {
    unsigned handled = 0;
    std::vector<char> buffer(kUeventBufferSize);
    for (;;) {
      const ssize_t got = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
      if (got <= 0) return handled;
      const std::optional<Uevent> event = ParseUeventMessage(buffer.data(), static_cast<std::size_t>(got));
      if (!event || event->subsystem != kHidrawSubsystem) continue;
      if (event->action == "add") {
        const std::optional<HidrawNode> node = DescribeNode(kSysfsRoot, event->devname);
        if (!node) continue;
        knownPaths_[event->devpath] = node->path;
        handler_(platform::DeviceEvent::Arrival, node->path.c_str());
        ++handled;
      } else if (event->action == "remove") {
        const auto known = knownPaths_.find(event->devpath);
        if (known == knownPaths_.end()) continue;
        const std::string path = known->second;
        knownPaths_.erase(known);
        handler_(platform::DeviceEvent::Removal, path.c_str());
        ++handled;
      }
    }
  }

 private:
  const int socket_;
  const platform::DeviceEventHandler handler_;
  std::map<std::string, std::string> knownPaths_;
};

class LinuxNamedMutex : public platform::NamedMutex {
 public:
  explicit LinuxNamedMutex(std::unique_ptr<SharedMutex> mutex) : mutex_(std::move(mutex)) {}
  bool LockFor(std::chrono::milliseconds timeout) override { return mutex_->LockFor(timeout); }
  void Unlock() override { mutex_->Unlock(); }

 private:
  const std::unique_ptr<SharedMutex> mutex_;
};

}  // namespace
}  // namespace pelm::linux_hid

namespace pelm::platform {

HidHandle OpenDevice(const char* path, OpenMode mode) {
  for (linux_hid::HidrawNode& node : linux_hid::ScanHidrawNodes(linux_hid::kSysfsRoot)) {
    if (!linux_hid::SamePathIgnoringCase(node.path, path)) continue;
    const int flags = O_RDWR | O_CLOEXEC | (mode == OpenMode::Overlapped ? O_NONBLOCK : 0);
    const int fd = open((linux_hid::kDevRoot + node.node).c_str(), flags);
    if (fd < 0) return nullptr;
    const std::optional<linux_hid::ReportLengths> lengths = linux_hid::ReadDescriptorLengths(fd);
    if (!lengths) {
      close(fd);
      return nullptr;
    }
    return std::make_shared<linux_hid::HidrawDevice>(fd, std::move(node), *lengths);
  }
  return nullptr;
}

std::shared_ptr<ReadCancel> CreateReadCancel() { return std::make_shared<linux_hid::EventFdCancel>(); }

std::unique_ptr<InterfaceList> ListHidInterfaces() { return std::make_unique<linux_hid::HidrawInterfaceList>(); }

std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler) {
  if (instance == nullptr) return nullptr;
  const int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
  if (fd < 0) return nullptr;
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = access(linux_hid::kUdevControlSocket, F_OK) == 0 ? linux_hid::kUdevEventGroup
                                                                         : linux_hid::kKernelEventGroup;
  if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(fd);
    return nullptr;
  }
  return std::make_unique<linux_hid::UeventNotifier>(fd, std::move(handler));
}

std::unique_ptr<NamedMutex> CreateNamedMutex(const char* name) {
  std::unique_ptr<linux_hid::SharedMutex> mutex = linux_hid::SharedMutex::Open(name);
  if (!mutex) return nullptr;
  return std::make_unique<linux_hid::LinuxNamedMutex>(std::move(mutex));
}

}  // namespace pelm::platform
