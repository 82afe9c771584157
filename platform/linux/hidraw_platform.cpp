// The platform interface over Linux hidraw nodes.

#include <fcntl.h>
#include <linux/hidraw.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/linux/hidraw_device.h"
#include "platform/linux/node_map.h"
#include "platform/linux/report_descriptor.h"
#include "platform/linux/uevent_source.h"
#include "platform/linux/uevent_watch.h"
#include "platform/linux/user_mutex.h"
#include "platform/platform.h"
#include "platform/posix/in_process_mutex.h"

namespace pelm::linux_hid {
namespace {

constexpr char kSysfsRoot[] = "/sys";
constexpr char kDevRoot[] = "/dev/";
// Present while the udev daemon runs.
constexpr char kUdevControlSocket[] = "/run/udev/control";
// Where the user's private runtime directory is, and where lock files go
// without one (a system without a login manager, root in a container).
constexpr char kRunUserRoot[] = "/run/user";
constexpr char kFallbackLockRoot[] = "/tmp";

std::optional<ReportLengths> ReadDescriptorLengths(int fd) {
  int size = 0;
  if (ioctl(fd, HIDIOCGRDESCSIZE, &size) < 0 || size <= 0) return std::nullopt;
  hidraw_report_descriptor descriptor{};
  descriptor.size = static_cast<uint32_t>(size);
  if (ioctl(fd, HIDIOCGRDESC, &descriptor) < 0) return std::nullopt;
  return ParseReportDescriptor(std::span<const uint8_t>(descriptor.value, descriptor.size));
}

// Every lookup of a path goes through this one map of the nodes present.
NodeMap& Nodes() {
  // Never destroyed: reader and writer threads of a host that never called
  // Terminate may still open devices while the process exits.
  static auto* nodes = new NodeMap(kSysfsRoot, OpenUeventSocket(UeventGroup::Kernel));
  return *nodes;
}

// Opens the node's character device; -1 with errno set when that fails.
int OpenNode(const HidrawNode& node, int flags) {
  const int fd = open((kDevRoot + node.node).c_str(), flags);
  const int error = fd < 0 ? errno : 0;
  // Remembered so that a node that could not be opened (no permission yet) is
  // looked at again when udev changes it.
  Nodes().NoteOpenResult(node.path, error);
  errno = error;
  return fd;
}

class HidrawInterfaceList : public platform::InterfaceList {
 public:
  HidrawInterfaceList() {
    for (const HidrawNode& node : Nodes().Rescan()) paths_.push_back(node.path);
  }
  platform::InterfaceStep At(uint32_t index, std::string& path) override {
    if (index >= paths_.size()) return platform::InterfaceStep::NoMoreItems;
    path = paths_[index];
    return platform::InterfaceStep::Found;
  }

 private:
  std::vector<std::string> paths_;
};

}  // namespace
}  // namespace pelm::linux_hid

namespace pelm::platform {

HidHandle OpenDevice(const char* path, OpenMode mode) {
  std::optional<linux_hid::HidrawNode> node = linux_hid::Nodes().Find(path);
  if (!node) return nullptr;
  const int fd = linux_hid::OpenNode(*node, O_RDWR | O_CLOEXEC | (mode == OpenMode::Overlapped ? O_NONBLOCK : 0));
  if (fd < 0) return nullptr;
  const std::optional<linux_hid::ReportLengths> lengths = linux_hid::ReadDescriptorLengths(fd);
  if (!lengths) {
    close(fd);
    return nullptr;
  }
  return std::make_shared<linux_hid::HidrawDevice>(fd, std::move(*node), *lengths);
}

std::optional<InterfaceIds> IdsWithoutOpening(const char* path) {
  const std::optional<linux_hid::HidrawNode> node = linux_hid::Nodes().Find(path);
  if (!node) return std::nullopt;
  return InterfaceIds{node->vendorId, node->productId};
}

OpenAttempt TryOpen(const char* path) {
  const std::optional<linux_hid::HidrawNode> node = linux_hid::Nodes().Find(path);
  if (!node) return {OpenFailure::NotPresent, ENOENT};
  const int fd = linux_hid::OpenNode(*node, O_RDWR | O_CLOEXEC | O_NONBLOCK);
  if (fd >= 0) {
    close(fd);
    return {};
  }
  const int error = errno;
  switch (error) {
    case EACCES:
    case EPERM:
      return {OpenFailure::PermissionDenied, error};
    case ENOENT:
    case ENODEV:
    case ENXIO:
      return {OpenFailure::NotPresent, error};
    default:
      return {OpenFailure::Other, error};
  }
}

std::vector<PresentInterface> ListPresentInterfaces() {
  std::vector<PresentInterface> present;
  for (const linux_hid::HidrawNode& node : linux_hid::Nodes().Present()) {
    present.push_back({node.path, linux_hid::kDevRoot + node.node, node.vendorId, node.productId});
  }
  return present;
}

std::shared_ptr<ReadCancel> CreateReadCancel() {
  auto cancel = std::make_shared<linux_hid::EventFdCancel>();
  return cancel->Usable() ? cancel : nullptr;
}

std::unique_ptr<InterfaceList> ListHidInterfaces() { return std::make_unique<linux_hid::HidrawInterfaceList>(); }

std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler) {
  if (instance == nullptr) return nullptr;
  // With the udev daemon running, its re-broadcast is the one to follow: it
  // comes after its rules gave the node its permissions.
  const linux_hid::UeventGroup group = access(linux_hid::kUdevControlSocket, F_OK) == 0
                                           ? linux_hid::UeventGroup::Udev
                                           : linux_hid::UeventGroup::Kernel;
  std::unique_ptr<linux_hid::UeventSource> source = linux_hid::OpenUeventSocket(group);
  if (!source) return nullptr;
  return std::make_unique<linux_hid::UeventWatch>(linux_hid::Nodes(), std::move(source), group,
                                                 std::move(handler));
}

// Shared by the user's processes, never by another user's: derived from the
// user's id, not from the environment, as the library reads none.
std::unique_ptr<NamedMutex> CreateNamedMutex(const char* name) {
  return std::make_unique<SharedNamedMutex<linux_hid::UserMutex>>(
      SharedByName<linux_hid::UserMutex>(name, [name] {
        const uid_t user = geteuid();
        return std::make_shared<linux_hid::UserMutex>(
            linux_hid::OpenUserLockDirectory(linux_hid::kRunUserRoot, linux_hid::kFallbackLockRoot, user), name, user);
      }));
}

}  // namespace pelm::platform
