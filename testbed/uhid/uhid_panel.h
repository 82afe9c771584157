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
#include <condition_variable>
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
  uint16_t reportLength = kDefaultReportLength;  // of every declared report, ID included
};

class UhidPanel {
 public:
  // Every report ID from 1 to this one is declared as input, output and
  // feature report of the identity's report length (kReportPayload bytes
  // after the ID by default, as a USB panel gives them).
  static constexpr uint8_t kHighestReportId = vm::kHighestReportId;
  static constexpr uint8_t kReportPayload = kDefaultReportLength - 1;
  // uhid carries reports of at most this many bytes.
  static constexpr uint16_t kLongestReport = 4096;

  // Creates the device (the hidraw node follows asynchronously). Throws
  // std::invalid_argument for a report length outside 2..kLongestReport.
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
  // What was received, cleared in the same step (nothing is lost between).
  std::vector<Transfer> TakeReceived();
  // Waits (bounded) until `predicate` holds for what was received.
  bool WaitForReceived(const std::function<bool(const std::vector<Transfer>&)>& predicate,
                       std::chrono::milliseconds timeout = std::chrono::seconds(10)) const;
  // Whether any hidraw handle of the device is open now, as the kernel tells
  // it: every open and close that returned before the call is counted (the
  // kernel queues their news before it returns; this waits, bounded, until the
  // serving thread took all of it).
  bool IsOpen() const;
  // What the panel answers a feature read of `reportId` with; empty when it
  // refuses the read.
  Report FeatureAnswer(uint8_t reportId) const;

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
  mutable std::condition_variable changed_;
  bool failFeatureReads_ = false;
  bool open_ = false;
  bool handling_ = false;  // the serving thread took an event and has not acted on it yet
  std::thread server_;
};

}  // namespace pelm::vm
