#pragma once
// Where device events come from: the kernel's uevent netlink socket, bound to
// the kernel's own multicast group or to the udev daemon's re-broadcast. Each
// datagram comes with what the socket says of its sender, so that a message
// that neither the kernel nor udevd sent can be told apart and dropped.

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace pelm::linux_hid {

// The netlink multicast groups of NETLINK_KOBJECT_UEVENT.
enum class UeventGroup : uint32_t {
  Kernel = 1,  // the kernel's own messages, before any udev rule ran
  Udev = 2,    // udevd's re-broadcast, after its rules ran (the node has its permissions)
};

struct UeventDatagram {
  std::string bytes;
  uint32_t senderPortId = 0;  // 0 for the kernel
  uint32_t senderGroups = 0;  // the multicast groups it was sent to; 0 for a unicast message
  std::optional<uint32_t> senderUid;  // from the credentials passed with it
};

enum class ReceiveResult {
  Datagram,  // `datagram` holds the next message
  Empty,     // nothing waits
  Overrun,   // the socket's buffer overflowed: messages were lost
};

class UeventSource {
 public:
  virtual ~UeventSource() = default;
  // Readable while datagrams wait; -1 for a source without a descriptor.
  virtual int Descriptor() const = 0;
  // Never blocks.
  virtual ReceiveResult Receive(UeventDatagram& datagram) = 0;
};

// True when the datagram comes from whoever may speak on `group`: the kernel
// itself on the kernel's group, a root process (udevd) on udev's. A unicast
// message, which any local process may send to the socket, is nobody's event.
bool FromTrustedSender(const UeventDatagram& datagram, UeventGroup group);

// A non-blocking uevent netlink socket subscribed to `group`; null when it
// cannot be opened.
std::unique_ptr<UeventSource> OpenUeventSocket(UeventGroup group);

}  // namespace pelm::linux_hid
