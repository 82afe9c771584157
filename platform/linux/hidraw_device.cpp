#include "platform/linux/hidraw_device.h"

#include <linux/hidraw.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <array>
#include <cerrno>

namespace pelm::linux_hid {

EventFdCancel::EventFdCancel() : fd_(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}

EventFdCancel::~EventFdCancel() {
  if (fd_ >= 0) close(fd_);
}

void EventFdCancel::Signal() {
  // The counter is never read back, so the descriptor stays readable.
  const uint64_t one = 1;
  [[maybe_unused]] const ssize_t written = write(fd_, &one, sizeof one);
}

bool EventFdCancel::WaitFor(std::chrono::milliseconds timeout) {
  pollfd wait{fd_, POLLIN, 0};
  return poll(&wait, 1, static_cast<int>(timeout.count())) > 0;
}

HidrawDevice::HidrawDevice(int fd, HidrawNode node, ReportLengths lengths)
    : fd_(fd), node_(std::move(node)), lengths_(lengths) {}

HidrawDevice::~HidrawDevice() { close(fd_); }

int HidrawDevice::Control(unsigned long request, void* argument) { return ioctl(fd_, request, argument); }

bool HidrawDevice::GetAttributes(platform::HidAttributes& attributes) {
  hidraw_devinfo info{};
  if (Control(HIDIOCGRAWINFO, &info) < 0) return false;
  attributes = {static_cast<uint16_t>(info.vendor), static_cast<uint16_t>(info.product), node_.versionNumber};
  return true;
}

bool HidrawDevice::GetCaps(platform::HidCaps& caps) {
  caps = {lengths_.input, lengths_.output, lengths_.feature};
  return true;
}

// hidraw keeps byte 0 as the report number on feature transfers and output
// writes, 0 for devices without report IDs, as Windows does.
bool HidrawDevice::GetFeature(uint8_t* report, uint32_t length) {
  // The ioctl gives the number of bytes the device answered with; the rest of
  // the buffer is whatever it held before, not the device's.
  return Control(HIDIOCGFEATURE(length), report) == static_cast<int>(length);
}

bool HidrawDevice::SetFeature(const uint8_t* report, uint32_t length) {
  return Control(HIDIOCSFEATURE(length), const_cast<uint8_t*>(report)) >= 0;
}

bool HidrawDevice::WriteOutput(const uint8_t* report, uint32_t length) {
  return write(fd_, report, length) == static_cast<ssize_t>(length);
}

bool HidrawDevice::GetSerialNumber(std::u16string& serial) {
  if (node_.uniq.empty()) return false;
  serial.assign(node_.uniq.begin(), node_.uniq.end());
  return true;
}

platform::ReadStatus HidrawDevice::ReadInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead,
                                             platform::ReadCancel& cancel) {
  std::array<pollfd, 2> waits{{{fd_, POLLIN, 0}, {static_cast<EventFdCancel&>(cancel).Descriptor(), POLLIN, 0}}};
  for (;;) {
    if (poll(waits.data(), waits.size(), -1) < 0) {
      if (errno == EINTR) continue;
      return platform::ReadStatus::Failed;
    }
    if (waits[1].revents != 0) return platform::ReadStatus::Cancelled;
    if ((waits[0].revents & POLLIN) == 0) return platform::ReadStatus::Failed;  // gone: error or hang-up
    const platform::ReadStatus status = TakeReport(buffer, length, bytesRead);
    // Another reader of the node may have taken it first.
    if (status != platform::ReadStatus::NothingPending) return status;
  }
}

platform::ReadStatus HidrawDevice::ReadPendingInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) {
  pollfd wait{fd_, POLLIN, 0};
  for (;;) {
    const int ready = poll(&wait, 1, 0);
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) return platform::ReadStatus::Failed;
    if (ready == 0) return platform::ReadStatus::NothingPending;
    if ((wait.revents & POLLIN) == 0) return platform::ReadStatus::Failed;
    return TakeReport(buffer, length, bytesRead);
  }
}

platform::ReadStatus HidrawDevice::TakeReport(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) {
  // Reads of a device without report IDs come without the ID byte: it is put
  // back as 0 so that byte 0 is the report ID on every platform.
  const uint32_t idByte = lengths_.usesReportIds ? 0 : 1;
  if (length <= idByte) return platform::ReadStatus::Failed;
  for (;;) {
    const ssize_t got = read(fd_, buffer + idByte, length - idByte);
    if (got < 0 && errno == EINTR) continue;
    if (got < 0 && errno == EAGAIN) return platform::ReadStatus::NothingPending;
    if (got <= 0) return platform::ReadStatus::Failed;
    if (idByte != 0) buffer[0] = 0;
    bytesRead = static_cast<uint32_t>(got) + idByte;
    return platform::ReadStatus::Completed;
  }
}

}  // namespace pelm::linux_hid
