#pragma once
// A panel made a real USB device: a gadget on one of dummy_hcd's emulated
// controllers, bound through configfs, whose single HID interface is served
// from userspace through FunctionFS. The kernel enumerates it like a panel on
// a USB port and binds its own USB HID driver to it, so the library sees the
// version number in the USB device's bcdDevice, the USB form of the physical
// path, and transfers that go over a control endpoint and an interrupt
// endpoint, including the device refusing one with a STALL.
//
// The serving thread answers the control requests from a simulated panel's
// behaviour: the report descriptor, feature reads (GET_REPORT) and report
// sets (SET_REPORT). The panel has no interrupt OUT endpoint, so the kernel
// sends output reports as SET_REPORT on the control endpoint too, which lets
// the panel refuse them. Input reports go out on the interrupt IN endpoint.
//
// Needs root, configfs mounted at /sys/kernel/config, and the dummy_hcd,
// libcomposite, usb_f_fs and usbhid modules loaded (the test VM does this).

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "platform/sim/panel.h"
#include "testbed/panel_transfers.h"

namespace pelm::vm {

struct UsbIdentity {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  uint16_t bcdDevice = 0;  // the version number the host reads
  std::string serial;      // the serial number string; empty for none
};

// How the panel answers GET_REPORT for a feature report.
enum class FeatureReads {
  Answered,     // the whole report, from the model's behaviour
  IdOnly,       // a short answer: the report ID alone
  Refused,      // a STALL
};

class GadgetPanel {
 public:
  // Builds the gadget on a free emulated controller and plugs it in (the
  // hidraw node follows asynchronously). Throws std::runtime_error, naming the
  // step that failed, when the gadget cannot be built.
  GadgetPanel(UsbIdentity identity, std::unique_ptr<sim::Panel> behaviour);
  ~GadgetPanel();
  GadgetPanel(const GadgetPanel&) = delete;
  GadgetPanel& operator=(const GadgetPanel&) = delete;

  // Detaches the device from its port / attaches it again to the same port.
  void Unplug();
  void Replug();

  // Sends an input report (byte 0 is the report ID) on the interrupt
  // endpoint. Blocks until the host has polled it, so call it only while the
  // hidraw node is open; false if the transfer failed.
  bool InjectInput(const Report& report);

  // The next `count` SET_REPORT requests, feature or output, are refused with
  // a STALL. The panel refuses before the data stage, so a refused transfer
  // is recorded with its report ID only.
  void FailNextSends(int count) { transfers_.RefuseNext(count); }
  void AnswerFeatureReads(FeatureReads how) { featureReads_ = how; }
  std::vector<Transfer> Received() const { return transfers_.All(); }
  void ClearReceived() { transfers_.Clear(); }
  bool WaitForReceived(const std::function<bool(const std::vector<Transfer>&)>& predicate,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10)) const {
    return transfers_.WaitFor(predicate, timeout);
  }

  // The kernel's physical path of the HID interface, e.g. "usb-dummy_hcd.3-1/input0".
  std::string PhysicalPath() const;
  const UsbIdentity& Identity() const { return identity_; }

 private:
  void Build();
  void TearDown();
  void Serve();
  void AnswerSetup(const void* request);
  void AnswerGetReport(uint8_t reportType, uint8_t reportId, uint16_t length);
  void AnswerSetReport(uint8_t reportType, uint8_t reportId, uint16_t length);
  void Reply(const uint8_t* data, std::size_t size, uint16_t length);
  void Stall(bool directionIn);

  const UsbIdentity identity_;
  const std::unique_ptr<sim::Panel> behaviour_;
  const int controller_;       // index of the emulated controller, and of the gadget's names
  const std::string gadget_;   // the gadget's configfs directory
  const std::string mount_;    // where its FunctionFS instance is mounted
  const int stop_;             // eventfd that ends the serving thread
  int ep0_ = -1;
  int interruptIn_ = -1;
  TransferRecord transfers_;
  std::atomic<FeatureReads> featureReads_ = FeatureReads::Answered;
  std::thread server_;
};

}  // namespace pelm::vm
