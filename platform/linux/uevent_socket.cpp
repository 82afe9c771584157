// The uevent netlink socket as a source of datagrams with their sender.

#include <linux/netlink.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "platform/linux/uevent_source.h"

namespace pelm::linux_hid {
namespace {

// Large enough for any uevent: the kernel caps its environment at 2048 bytes,
// udevd's messages add a header and the properties its rules set.
constexpr std::size_t kDatagramBufferSize = 8192;

class NetlinkUeventSocket : public UeventSource {
 public:
  explicit NetlinkUeventSocket(int fd) : fd_(fd) {}
  ~NetlinkUeventSocket() override { close(fd_); }

  int Descriptor() const override { return fd_; }

  ReceiveResult Receive(UeventDatagram& datagram) override {
    char buffer[kDatagramBufferSize];
    iovec data{buffer, sizeof buffer};
    sockaddr_nl sender{};
    alignas(cmsghdr) char control[CMSG_SPACE(sizeof(ucred))];
    msghdr message{};
    message.msg_name = &sender;
    message.msg_namelen = sizeof sender;
    message.msg_iov = &data;
    message.msg_iovlen = 1;
    message.msg_control = control;
    message.msg_controllen = sizeof control;
    for (;;) {
      const ssize_t got = recvmsg(fd_, &message, MSG_DONTWAIT);
      if (got < 0 && errno == EINTR) continue;
      if (got < 0 && errno == ENOBUFS) return ReceiveResult::Overrun;
      if (got <= 0) return ReceiveResult::Empty;
      datagram.bytes.assign(buffer, static_cast<std::size_t>(got));
      datagram.senderPortId = sender.nl_pid;
      datagram.senderGroups = sender.nl_groups;
      datagram.senderUid.reset();
      for (cmsghdr* header = CMSG_FIRSTHDR(&message); header != nullptr; header = CMSG_NXTHDR(&message, header)) {
        if (header->cmsg_level == SOL_SOCKET && header->cmsg_type == SCM_CREDENTIALS) {
          ucred credentials;
          std::memcpy(&credentials, CMSG_DATA(header), sizeof credentials);
          datagram.senderUid = credentials.uid;
        }
      }
      return ReceiveResult::Datagram;
    }
  }

 private:
  const int fd_;
};

}  // namespace

bool FromTrustedSender(const UeventDatagram& datagram, UeventGroup group) {
  constexpr uint32_t kKernelPortId = 0;
  constexpr uint32_t kRootUid = 0;
  if (datagram.senderGroups == 0) return false;
  if (group == UeventGroup::Kernel) return datagram.senderPortId == kKernelPortId;
  return datagram.senderUid == kRootUid;
}

std::unique_ptr<UeventSource> OpenUeventSocket(UeventGroup group) {
  const int fd = socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, NETLINK_KOBJECT_UEVENT);
  if (fd < 0) return nullptr;
  // The sender's credentials come with every message, so udevd's can be told
  // from a local impostor's.
  const int on = 1;
  sockaddr_nl address{};
  address.nl_family = AF_NETLINK;
  address.nl_groups = static_cast<uint32_t>(group);
  if (setsockopt(fd, SOL_SOCKET, SO_PASSCRED, &on, sizeof on) != 0 ||
      bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(fd);
    return nullptr;
  }
  return std::make_unique<NetlinkUeventSocket>(fd);
}

}  // namespace pelm::linux_hid
