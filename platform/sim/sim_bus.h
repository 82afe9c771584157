#pragma once
// The simulated HID bus: the hardware of the test suite, the demo and the
// benchmarks. Devices are plugged and unplugged by the caller; the library sees
// them through the ordinary platform interface. Every open, close and transfer
// is logged, and faults can be injected per device.
//
// This is a C++ interface for tests and tools; it is not exported from the
// shared library.

#include <array>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/platform.h"
#include "platform/sim/panel.h"

namespace pelm::sim {

struct DeviceDescription {
  std::string path;
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  uint16_t versionNumber = 0x0100;
  std::u16string serialNumber;
  platform::HidCaps caps;
};

enum class LogOp { Open, OpenFailed, Close, GetFeature, SetFeature, WriteOutput };
inline constexpr std::size_t kLogOpCount = static_cast<std::size_t>(LogOp::WriteOutput) + 1;

struct LogEntry {
  LogOp op;
  uint64_t handleId;  // 0 for a failed open
  platform::OpenMode mode;
  Report bytes;       // the report as the library passed it (empty for open and close)
  bool succeeded;
  std::chrono::steady_clock::time_point time;
};

class Bus;

// Counts the changes a viewer of the bus shows (a report received, an input
// injected, a plug or unplug) and wakes whoever waits for the next one.
class ChangeCounter {
 public:
  void Bump();
  uint64_t Count() const;
  // Waits until the count passes `seen`, `timeout` passes or WakeWaiters is
  // called; returns the count then.
  uint64_t WaitPast(uint64_t seen, std::chrono::milliseconds timeout) const;
  void WakeWaiters();

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  uint64_t count_ = 0;
  uint64_t wakes_ = 0;
};

// The interface path of simulated panel `instance` of a product, in lower case,
// shaped as Windows names HID interfaces.
std::string PanelPath(uint16_t productId, int instance);

// One simulated device. It keeps its log and faults across unplug and replug.
class SimDevice {
 public:
  const DeviceDescription& Description() const { return description_; }
  Panel& PanelBehaviour() { return *panel_; }
  template <class PanelType>
  PanelType& PanelAs() { return static_cast<PanelType&>(*panel_); }
  bool Present() const;

  // Queues an input report (byte 0 is the report ID) for the reader. As
  // hidraw does for an open node, the device buffers at most
  // kInputBufferDepth unread reports and drops the newest beyond that, so a
  // reader that falls behind is left with stale reports.
  void InjectInput(const Report& report);
  // Injected reports the reader has not taken yet.
  std::size_t UnreadInput() const;
  // The last report injected (empty before the first): where its controls stand.
  Report LastInput() const;
  // hidraw's ring of 64 entries, one of which always stays free.
  static constexpr std::size_t kInputBufferDepth = 63;

  std::vector<LogEntry> Log() const;
  // Logged entries of one kind, in order.
  std::vector<LogEntry> LogOf(LogOp op) const;
  // Operations of one kind, logged or only counted.
  std::size_t CountOf(LogOp op) const;
  void ClearLog();
  // With logging off the device only counts its operations (CountOf still
  // tells them), so that long runs neither grow the log nor spend their time
  // copying report bytes into it. On by default.
  void SetLogging(bool on);
  // Waits (bounded) until `predicate` holds for the log; true if it did.
  bool WaitForLog(const std::function<bool(const std::vector<LogEntry>&)>& predicate,
                  std::chrono::milliseconds timeout = std::chrono::seconds(5)) const;
  // Number of handles open now.
  int OpenHandles() const;

  // Faults.
  void FailOpens(bool fail);
  // Opens fail as for a user who may not open the device (TryOpen tells
  // PermissionDenied); it stays present and listed.
  void DenyAccess(bool deny);
  void FailNextSends(int count);  // feature sets and output writes
  void FailFeatureReads(bool fail);
  void SetOperationDelay(std::chrono::milliseconds delay);

 private:
  friend class Bus;
  friend class SimHidDevice;
  friend class SimReadCancel;
  friend platform::HidHandle platform::OpenDevice(const char* path, platform::OpenMode mode);
  friend platform::OpenAttempt platform::TryOpen(const char* path);
  SimDevice(DeviceDescription description, std::unique_ptr<Panel> panel, ChangeCounter& changes);

  void Record(LogOp op, uint64_t handleId, platform::OpenMode mode, const uint8_t* bytes, std::size_t length,
              bool succeeded);
  void Delay() const;
  bool ConsumeSendFailure();
  void WakeReaders();

  const DeviceDescription description_;
  const std::unique_ptr<Panel> panel_;
  ChangeCounter& changes_;

  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;  // input, presence, log
  uint64_t generation_ = 0;                  // bumped at every plug; handles of an older one are dead
  bool present_ = false;
  std::deque<Report> input_;
  Report lastInput_;
  std::vector<LogEntry> log_;
  bool logging_ = true;
  std::array<std::size_t, kLogOpCount> unloggedCounts_{};
  int openHandles_ = 0;
  bool failOpens_ = false;
  bool denyAccess_ = false;
  int failSends_ = 0;
  bool failFeatureReads_ = false;
  std::chrono::milliseconds delay_{0};
};

class Bus {
 public:
  static Bus& Instance();

  // Makes a device present (a new one, or the one that had this path before,
  // which keeps its log and panel state) and tells the notifier.
  std::shared_ptr<SimDevice> Plug(const DeviceDescription& description, bool notify = true);
  // As Plug, for a device never seen before whose reports `panel` answers
  // instead of its model's panel (a device that misbehaves).
  std::shared_ptr<SimDevice> PlugWithPanel(const DeviceDescription& description, std::unique_ptr<Panel> panel, bool notify = true);
  // Makes the device absent: its handles fail from now on, a pending read ends
  // with a failure, and the notifier hears of the removal.
  void Unplug(const std::string& path, bool notify = true);
  std::shared_ptr<SimDevice> Find(const std::string& path) const;
  // Forgets every device and fault (between tests).
  void Reset();

  // Enumeration faults: the list cannot be obtained, or the next `count` steps
  // fail (kEveryListStep: every step, as on a system whose enumerator refuses
  // every request).
  static constexpr int kEveryListStep = -1;
  void FailListing(bool fail);
  void FailNextListSteps(int count);
  // The OS has no signal left to cancel reads with (no eventfd, no event).
  void FailReadCancels(bool fail);
  // The bus tells a device's vendor and product IDs without opening it, as
  // Linux does; by default only an open handle tells them, as on Windows.
  void TellIdsWithoutOpening(bool tell);

  // Paths present now, in plug order.
  std::vector<std::string> PresentPaths() const;
  // Every device plugged since the last Reset, present or not, in the order of
  // their first plug.
  std::vector<std::shared_ptr<SimDevice>> Devices() const;
  ChangeCounter& Changes() { return changes_; }

  // Used by the platform functions of the simulated backend.
  bool ListingFails() const;
  bool ReadCancelsFail() const;
  bool TellsIdsWithoutOpening() const;
  bool ConsumeListStepFailure();
  void AttachNotifier(const std::function<void(platform::DeviceEvent, const std::string&)>& post);
  void DetachNotifier();

 private:
  Bus() = default;
  void Notify(platform::DeviceEvent event, const std::string& path);

  ChangeCounter changes_;
  mutable std::mutex mutex_;
  std::vector<std::shared_ptr<SimDevice>> devices_;  // plug order of first plug
  std::vector<std::string> presentOrder_;
  bool failListing_ = false;
  int failListSteps_ = 0;
  bool failReadCancels_ = false;
  bool tellIdsWithoutOpening_ = false;
  // Guards the notifier and every call of it; never held with mutex_.
  std::mutex notifierMutex_;
  std::function<void(platform::DeviceEvent, const std::string&)> notifier_;
};

}  // namespace pelm::sim
