#pragma once
// One open hidraw node as the library's HID device, and the read cancellation
// that goes with it. Works on any descriptor that behaves like a hidraw node,
// which is how it is tested.

#include <cstdint>

#include "platform/linux/report_descriptor.h"
#include "platform/linux/sysfs_hidraw.h"
#include "platform/platform.h"

namespace pelm::linux_hid {

// An eventfd that, once signalled, stays readable: every later poll on it
// returns at once.
class EventFdCancel : public platform::ReadCancel {
 public:
  EventFdCancel();
  ~EventFdCancel() override;
  // False when the system gave no eventfd: such a cancel can never be signalled.
  bool Usable() const { return fd_ >= 0; }
  void Signal() override;
  bool WaitFor(std::chrono::milliseconds timeout) override;
  int Descriptor() const { return fd_; }

 private:
  // One read of a node that poll found readable (or that may have nothing).
  platform::ReadStatus TakeReport(uint8_t* buffer, uint32_t length, uint32_t& bytesRead);

  const int fd_;
};

class HidrawDevice : public platform::HidDevice {
 public:
  // Takes ownership of `fd`.
  HidrawDevice(int fd, HidrawNode node, ReportLengths lengths);
  ~HidrawDevice() override;

  bool GetAttributes(platform::HidAttributes& attributes) override;
  bool GetCaps(platform::HidCaps& caps) override;
  bool GetFeature(uint8_t* report, uint32_t length) override;
  bool SetFeature(const uint8_t* report, uint32_t length) override;
  bool WriteOutput(const uint8_t* report, uint32_t length) override;
  bool GetSerialNumber(std::u16string& serial) override;
  platform::ReadStatus ReadInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead,
                                 platform::ReadCancel& cancel) override;
  platform::ReadStatus ReadPendingInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) override;

 protected:
  // The hidraw ioctl, a seam for tests of what devices answer.
  virtual int Control(unsigned long request, void* argument);

 private:
  // One read of a node that poll found readable (or that may have nothing).
  platform::ReadStatus TakeReport(uint8_t* buffer, uint32_t length, uint32_t& bytesRead);

  const int fd_;
  const HidrawNode node_;
  const ReportLengths lengths_;
};

}  // namespace pelm::linux_hid
