#pragma once
// A panel made real to the kernel: a uhid device with the panel's vendor and
// product ID, physical path, serial number and report descriptor, served by a
// thread that answers the kernel's feature requests from a simulated panel's
// behaviour and records every report the host side set or wrote.
//
// Inside the test VM the kernel gives each one a hidraw node, exactly as it
// would a USB panel; the library under test sees nothing else.

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/sim/panel.h"
#include "testbed/panel_report_descriptor.h"
#include "testbed/panel_transfers.h"

namespace pelm::vm {

struct PanelIdentity {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  std::string phys;    // the physical path: the same phys on replug is the same port
  std::string serial;  // HID_UNIQ; empty for none
};

class UhidPanel {
 public:
  // The payload after the report ID of every report the panel declares.
  static constexpr uint8_t kReportPayload = vm::kReportPayload;

  // Creates the device (the hidraw node follows asynchronously).
  UhidPanel(PanelIdentity identity, std::unique_ptr<sim::Panel> behaviour);
  ~UhidPanel();
  UhidPanel(const UhidPanel&) = delete;
  UhidPanel& operator=(const UhidPanel&) = delete;

  // Removes the kernel device / creates it again on the same physical path.
  void Unplug();
  void Replug();

  // Sends an input report (byte 0 is the report ID); false if the kernel refused it.
  bool InjectInput(const Report& report);

  // The next `count` feature sets are answered with an I/O error.
  void FailNextSends(int count);
  void FailFeatureReads(bool fail);

  std::vector<Transfer> Received() const;
  void ClearReceived();
  // Waits (bounded) until `predicate` holds for what was received.
  bool WaitForReceived(const std::function<bool(const std::vector<Transfer>&)>& predicate,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
  // Whether any hidraw handle of the device is open now, as the kernel tells it.
  bool IsOpen() const;

  template <class PanelType>
  PanelType& BehaviourAs() { return static_cast<PanelType&>(*behaviour_); }
  const PanelIdentity& Identity() const { return identity_; }

 private:
  void Create();
  void Serve();
  void AnswerGetReport(uint32_t requestId, uint8_t reportId);
  void AnswerSetReport(uint32_t requestId, const uint8_t* data, uint16_t size);
  bool Send(const void* event, std::size_t size);

  const PanelIdentity identity_;
  const std::unique_ptr<sim::Panel> behaviour_;
  const int uhid_;
  const int stop_;  // eventfd that ends the serving thread

  TransferRecord transfers_;
  mutable std::mutex mutex_;
  bool failFeatureReads_ = false;
  bool open_ = false;
  std::thread server_;
};

}  // namespace pelm::vm
