#pragma once
// Uevent datagrams as the kernel and udevd put them on the netlink socket, and
// a source that hands them out.

#include <cstdint>
#include <cstring>
#include <deque>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/uevent_source.h"

namespace pelm::test {

// KEY=VALUE pairs, each ending in a NUL.
inline std::string UeventProperties(const std::vector<std::string>& pairs) {
  std::string properties;
  for (const std::string& pair : pairs) properties += pair + '\0';
  return properties;
}

// "action@devpath", a NUL, then the properties.
inline std::string KernelMessage(const std::string& action, const std::string& devpath,
                                 const std::string& properties) {
  return action + "@" + devpath + '\0' + properties;
}

// "libudev", udevd's header, then the properties.
inline std::string UdevMessage(const std::string& properties) {
  constexpr uint32_t kHeaderSize = 40;
  std::string message(kHeaderSize, '\0');
  std::memcpy(message.data(), "libudev", 8);
  const auto length = static_cast<uint32_t>(properties.size());
  std::memcpy(message.data() + 16, &kHeaderSize, 4);
  std::memcpy(message.data() + 20, &length, 4);
  return message + properties;
}

inline constexpr uint32_t kUdevdPortId = 4242;

// The datagram as the kernel sends it on its own group.
inline linux_hid::UeventDatagram FromKernel(std::string bytes) {
  return {std::move(bytes), 0, static_cast<uint32_t>(linux_hid::UeventGroup::Kernel), 0};
}

// The datagram as udevd (root) re-broadcasts it.
inline linux_hid::UeventDatagram FromUdevd(std::string bytes) {
  return {std::move(bytes), kUdevdPortId, static_cast<uint32_t>(linux_hid::UeventGroup::Udev), 0};
}

class FakeUeventSource : public linux_hid::UeventSource {
 public:
  int Descriptor() const override { return -1; }
  linux_hid::ReceiveResult Receive(linux_hid::UeventDatagram& datagram) override {
    if (queued_.empty()) return linux_hid::ReceiveResult::Empty;
    auto [result, next] = std::move(queued_.front());
    queued_.pop_front();
    datagram = std::move(next);
    return result;
  }
  void Push(linux_hid::UeventDatagram datagram) {
    queued_.emplace_back(linux_hid::ReceiveResult::Datagram, std::move(datagram));
  }
  void Overrun() { queued_.emplace_back(linux_hid::ReceiveResult::Overrun, linux_hid::UeventDatagram{}); }

 private:
  std::deque<std::pair<linux_hid::ReceiveResult, linux_hid::UeventDatagram>> queued_;
};

}  // namespace pelm::test
