#include "platform/sim/sim_bus.h"

#include <algorithm>
#include <cstdio>
#include <thread>

namespace pelm::sim {

void ChangeCounter::Bump() {
  {
    std::lock_guard hold(mutex_);
    ++count_;
  }
  changed_.notify_all();
}

uint64_t ChangeCounter::Count() const {
  std::lock_guard hold(mutex_);
  return count_;
}

uint64_t ChangeCounter::WaitPast(uint64_t seen, std::chrono::milliseconds timeout) const {
  std::unique_lock hold(mutex_);
  const uint64_t wakes = wakes_;
  changed_.wait_for(hold, timeout, [&] { return count_ > seen || wakes_ != wakes; });
  return count_;
}

void ChangeCounter::WakeWaiters() {
  {
    std::lock_guard hold(mutex_);
    ++wakes_;
  }
  changed_.notify_all();
}

SimDevice::SimDevice(DeviceDescription description, std::unique_ptr<Panel> panel, ChangeCounter& changes)
    : description_(std::move(description)), panel_(std::move(panel)), changes_(changes) {}

bool SimDevice::Present() const {
  std::lock_guard hold(mutex_);
  return present_;
}

std::size_t SimDevice::UnreadInput() const {
  std::lock_guard hold(mutex_);
  return input_.size();
}

void SimDevice::InjectInput(const Report& report) {
  {
    std::lock_guard hold(mutex_);
    lastInput_ = report;
    if (input_.size() < kInputBufferDepth) input_.push_back(report);
  }
  changed_.notify_all();
  changes_.Bump();
}

Report SimDevice::LastInput() const {
  std::lock_guard hold(mutex_);
  return lastInput_;
}

std::vector<LogEntry> SimDevice::Log() const {
  std::lock_guard hold(mutex_);
  return log_;
}

std::vector<LogEntry> SimDevice::LogOf(LogOp op) const {
  std::lock_guard hold(mutex_);
  std::vector<LogEntry> entries;
  std::copy_if(log_.begin(), log_.end(), std::back_inserter(entries),
               [op](const LogEntry& entry) { return entry.op == op; });
  return entries;
}

std::size_t SimDevice::CountOf(LogOp op) const {
  std::lock_guard hold(mutex_);
  const auto logged = static_cast<std::size_t>(
      std::count_if(log_.begin(), log_.end(), [op](const LogEntry& entry) { return entry.op == op; }));
  return logged + unloggedCounts_[static_cast<std::size_t>(op)];
}

void SimDevice::ClearLog() {
  std::lock_guard hold(mutex_);
  log_.clear();
  unloggedCounts_.fill(0);
}

void SimDevice::SetLogging(bool on) {
  std::lock_guard hold(mutex_);
  logging_ = on;
}

bool SimDevice::WaitForLog(const std::function<bool(const std::vector<LogEntry>&)>& predicate,
                           std::chrono::milliseconds timeout) const {
  std::unique_lock hold(mutex_);
  return changed_.wait_for(hold, timeout, [&] { return predicate(log_); });
}

int SimDevice::OpenHandles() const {
  std::lock_guard hold(mutex_);
  return openHandles_;
}

void SimDevice::FailOpens(bool fail) {
  std::lock_guard hold(mutex_);
  failOpens_ = fail;
}

void SimDevice::DenyAccess(bool deny) {
  std::lock_guard hold(mutex_);
  denyAccess_ = deny;
}

void SimDevice::FailNextSends(int count) {
  std::lock_guard hold(mutex_);
  failSends_ = count;
}

void SimDevice::FailFeatureReads(bool fail) {
  std::lock_guard hold(mutex_);
  failFeatureReads_ = fail;
}

void SimDevice::SetOperationDelay(std::chrono::milliseconds delay) {
  std::lock_guard hold(mutex_);
  delay_ = delay;
}

void SimDevice::Record(LogOp op, uint64_t handleId, platform::OpenMode mode, const uint8_t* bytes,
                       std::size_t length, bool succeeded) {
  bool logged;
  {
    std::lock_guard hold(mutex_);
    logged = logging_;
    if (logged) {
      log_.push_back(LogEntry{op, handleId, mode, Report(bytes, bytes + length), succeeded,
                              std::chrono::steady_clock::now()});
    } else {
      ++unloggedCounts_[static_cast<std::size_t>(op)];
    }
  }
  if (logged) changed_.notify_all();
  if (succeeded && (op == LogOp::SetFeature || op == LogOp::WriteOutput)) changes_.Bump();
}

void SimDevice::Delay() const {
  std::chrono::milliseconds delay;
  {
    std::lock_guard hold(mutex_);
    delay = delay_;
  }
  if (delay.count() > 0) std::this_thread::sleep_for(delay);
}

bool SimDevice::ConsumeSendFailure() {
  std::lock_guard hold(mutex_);
  if (failSends_ <= 0) return false;
  --failSends_;
  return true;
}

void SimDevice::WakeReaders() {
  // Taking the mutex orders the wake-up after a reader's test of its predicate.
  { std::lock_guard hold(mutex_); }
  changed_.notify_all();
}

Bus& Bus::Instance() {
  // Destroyed with the library, so that a host that loads and unloads it again
  // and again loses no memory; hosts call Terminate, which ends every reader,
  // before they unload it.
  static Bus bus;
  return bus;
}

std::shared_ptr<SimDevice> Bus::Plug(const DeviceDescription& description, bool notify) {
  return PlugWithPanel(description, nullptr, notify);
}

std::shared_ptr<SimDevice> Bus::PlugWithPanel(const DeviceDescription& description, std::unique_ptr<Panel> panel, bool notify) {
  std::shared_ptr<SimDevice> device;
  {
    std::lock_guard hold(mutex_);
    for (const auto& known : devices_) {
      if (known->description_.path == description.path) device = known;
    }
    if (!device) {
      device.reset(
          new SimDevice(description, panel ? std::move(panel) : MakePanel(description.productId), changes_));
      devices_.push_back(device);
    }
    std::erase(presentOrder_, description.path);
    presentOrder_.push_back(description.path);
  }
  {
    std::lock_guard hold(device->mutex_);
    device->present_ = true;
    ++device->generation_;
  }
  changes_.Bump();
  if (notify) Notify(platform::DeviceEvent::Arrival, description.path);
  return device;
}

void Bus::Unplug(const std::string& path, bool notify) {
  std::shared_ptr<SimDevice> device = Find(path);
  if (!device) return;
  {
    std::lock_guard hold(mutex_);
    std::erase(presentOrder_, path);
  }
  {
    std::lock_guard hold(device->mutex_);
    device->present_ = false;
    device->input_.clear();
  }
  device->changed_.notify_all();
  changes_.Bump();
  if (notify) Notify(platform::DeviceEvent::Removal, path);
}

std::shared_ptr<SimDevice> Bus::Find(const std::string& path) const {
  std::lock_guard hold(mutex_);
  for (const auto& device : devices_) {
    if (device->description_.path == path) return device;
  }
  return nullptr;
}

std::string PanelPath(uint16_t productId, int instance) {
  char path[160];
  std::snprintf(path, sizeof path,
                "\\\\?\\hid#vid_%04x&pid_%04x#7&sim&0&%04d#{4d1e55b2-f16f-11cf-88cb-001111000030}",
                PELM_VENDOR_ID, productId, instance);
  return path;
}

void Bus::Reset() {
  std::vector<std::shared_ptr<SimDevice>> devices;
  {
    std::lock_guard hold(mutex_);
    devices.swap(devices_);
    presentOrder_.clear();
    failListing_ = false;
    failReadCancels_ = false;
    tellIdsWithoutOpening_ = false;
    failListSteps_ = 0;
  }
  for (const auto& device : devices) {
    {
      std::lock_guard hold(device->mutex_);
      device->present_ = false;
    }
    device->changed_.notify_all();
  }
  changes_.Bump();
}

void Bus::FailListing(bool fail) {
  std::lock_guard hold(mutex_);
  failListing_ = fail;
}

void Bus::FailReadCancels(bool fail) {
  std::lock_guard hold(mutex_);
  failReadCancels_ = fail;
}

void Bus::TellIdsWithoutOpening(bool tell) {
  std::lock_guard hold(mutex_);
  tellIdsWithoutOpening_ = tell;
}

bool Bus::TellsIdsWithoutOpening() const {
  std::lock_guard hold(mutex_);
  return tellIdsWithoutOpening_;
}

void Bus::FailNextListSteps(int count) {
  std::lock_guard hold(mutex_);
  failListSteps_ = count;
}

std::vector<std::string> Bus::PresentPaths() const {
  std::lock_guard hold(mutex_);
  return presentOrder_;
}

std::vector<std::shared_ptr<SimDevice>> Bus::Devices() const {
  std::lock_guard hold(mutex_);
  return devices_;
}

bool Bus::ListingFails() const {
  std::lock_guard hold(mutex_);
  return failListing_;
}

bool Bus::ReadCancelsFail() const {
  std::lock_guard hold(mutex_);
  return failReadCancels_;
}

bool Bus::ConsumeListStepFailure() {
  std::lock_guard hold(mutex_);
  if (failListSteps_ == kEveryListStep) return true;
  if (failListSteps_ <= 0) return false;
  --failListSteps_;
  return true;
}

void Bus::AttachNotifier(const std::function<void(platform::DeviceEvent, const std::string&)>& post) {
  std::lock_guard hold(notifierMutex_);
  notifier_ = post;
}

void Bus::DetachNotifier() {
  std::lock_guard hold(notifierMutex_);
  notifier_ = nullptr;
}

void Bus::Notify(platform::DeviceEvent event, const std::string& path) {
  // Held while the notifier runs, so that once DetachNotifier returns no call
  // into the detached notifier is still under way.
  std::lock_guard hold(notifierMutex_);
  if (notifier_) notifier_(event, path);
}

}  // namespace pelm::sim
