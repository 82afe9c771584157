// The platform interface over the simulated bus.

#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cerrno>
#include <cstring>

#include "platform/platform.h"
#include "platform/posix/in_process_mutex.h"
#include "platform/sim/sim_bus.h"

namespace pelm::sim {

class SimReadCancel : public platform::ReadCancel {
 public:
  void Signal() override {
    signalled_ = true;
    { std::lock_guard hold(mutex_); }
    changed_.notify_all();
    std::lock_guard hold(waiterMutex_);
    if (waitingOn_ != nullptr) waitingOn_->WakeReaders();
  }

  bool WaitFor(std::chrono::milliseconds timeout) override {
    std::unique_lock hold(mutex_);
    return changed_.wait_for(hold, timeout, [this] { return signalled_.load(); });
  }

  bool Signalled() const { return signalled_; }

  // A reader registers the device it sleeps on so that Signal can wake it.
  void WaitOn(SimDevice* device) {
    std::lock_guard hold(waiterMutex_);
    waitingOn_ = device;
  }

 private:
  std::atomic<bool> signalled_{false};
  std::mutex mutex_;
  std::condition_variable changed_;
  std::mutex waiterMutex_;
  SimDevice* waitingOn_ = nullptr;
};

class SimHidDevice : public platform::HidDevice {
 public:
  SimHidDevice(std::shared_ptr<SimDevice> device, uint64_t generation, uint64_t id, platform::OpenMode mode)
      : device_(std::move(device)), generation_(generation), id_(id), mode_(mode) {}

  ~SimHidDevice() override {
    {
      std::lock_guard hold(device_->mutex_);
      --device_->openHandles_;
    }
    device_->Record(LogOp::Close, id_, mode_, nullptr, 0, true);
  }

  bool GetAttributes(platform::HidAttributes& attributes) override {
    if (!Alive()) return false;
    attributes = {device_->description_.vendorId, device_->description_.productId, device_->description_.versionNumber};
    return true;
  }

  bool GetCaps(platform::HidCaps& caps) override {
    if (!Alive()) return false;
    caps = device_->description_.caps;
    return true;
  }

  bool GetFeature(uint8_t* report, uint32_t length) override {
    device_->Delay();
    bool ok = Alive() && length > 0;
    if (ok) {
      std::lock_guard hold(device_->mutex_);
      ok = !device_->failFeatureReads_;
    }
    if (ok) ok = device_->panel_->AnswerFeature(report, length);
    device_->Record(LogOp::GetFeature, id_, mode_, report, length, ok);
    return ok;
  }

  bool SetFeature(const uint8_t* report, uint32_t length) override {
    device_->Delay();
    const bool ok = Alive() && length > 0 && !device_->ConsumeSendFailure();
    if (ok) device_->panel_->ReceiveFeature(report, length);
    device_->Record(LogOp::SetFeature, id_, mode_, report, length, ok);
    return ok;
  }

  bool WriteOutput(const uint8_t* report, uint32_t length) override {
    device_->Delay();
    const bool ok = Alive() && length > 0 && !device_->ConsumeSendFailure();
    if (ok) device_->panel_->ReceiveOutput(report, length);
    device_->Record(LogOp::WriteOutput, id_, mode_, report, length, ok);
    return ok;
  }

  bool GetSerialNumber(std::u16string& serial) override {
    if (!Alive() || device_->description_.serialNumber.empty()) return false;
    serial = device_->description_.serialNumber;
    return true;
  }

  platform::ReadStatus ReadInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead,
                                 platform::ReadCancel& cancel) override {
    auto& simCancel = static_cast<SimReadCancel&>(cancel);
    simCancel.WaitOn(device_.get());
    platform::ReadStatus status;
    {
      std::unique_lock hold(device_->mutex_);
      device_->changed_.wait(hold, [&] {
        return simCancel.Signalled() || !AliveLocked() || !device_->input_.empty();
      });
      if (simCancel.Signalled()) {
        status = platform::ReadStatus::Cancelled;
      } else if (!AliveLocked()) {
        status = platform::ReadStatus::Failed;
      } else {
        status = TakeReportLocked(buffer, length, bytesRead);
      }
    }
    simCancel.WaitOn(nullptr);
    return status;
  }

  platform::ReadStatus ReadPendingInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) override {
    std::lock_guard hold(device_->mutex_);
    if (!AliveLocked()) return platform::ReadStatus::Failed;
    if (device_->input_.empty()) return platform::ReadStatus::NothingPending;
    return TakeReportLocked(buffer, length, bytesRead);
  }

 private:
  platform::ReadStatus TakeReportLocked(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) {
    const Report report = std::move(device_->input_.front());
    device_->input_.pop_front();
    bytesRead = static_cast<uint32_t>(std::min<std::size_t>(report.size(), length));
    if (bytesRead > 0) std::memcpy(buffer, report.data(), bytesRead);  // an empty report has no data
    return platform::ReadStatus::Completed;
  }

  bool Alive() const {
    std::lock_guard hold(device_->mutex_);
    return AliveLocked();
  }
  bool AliveLocked() const { return device_->present_ && device_->generation_ == generation_; }

  const std::shared_ptr<SimDevice> device_;
  const uint64_t generation_;
  const uint64_t id_;
  const platform::OpenMode mode_;
};

namespace {

bool SamePathIgnoringCase(const std::string& a, const char* b) {
  const std::size_t length = std::strlen(b);
  return a.size() == length && std::equal(a.begin(), a.end(), b, [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
         });
}

// The present device with this path (compared without regard to case).
std::shared_ptr<SimDevice> FindPresent(const char* path) {
  for (const std::string& present : Bus::Instance().PresentPaths()) {
    if (SamePathIgnoringCase(present, path)) return Bus::Instance().Find(present);
  }
  return nullptr;
}

class SimInterfaceList : public platform::InterfaceList {
 public:
  explicit SimInterfaceList(std::vector<std::string> paths) : paths_(std::move(paths)) {}

  platform::InterfaceStep At(uint32_t index, std::string& path) override {
    if (Bus::Instance().ConsumeListStepFailure()) return platform::InterfaceStep::Failed;
    if (index >= paths_.size()) return platform::InterfaceStep::NoMoreItems;
    path = paths_[index];
    return platform::InterfaceStep::Found;
  }

 private:
  const std::vector<std::string> paths_;
};

// Queues arrivals and removals for the thread that pumps them; an eventfd tells
// a host's poll loop that events wait.
class SimNotifier : public platform::DeviceNotifier {
 public:
  explicit SimNotifier(platform::DeviceEventHandler handler)
      : handler_(std::move(handler)), eventFd_(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {
    Bus::Instance().AttachNotifier([this](platform::DeviceEvent event, const std::string& path) {
      {
        std::lock_guard hold(mutex_);
        pending_.emplace_back(event, path);
      }
      const uint64_t one = 1;
      [[maybe_unused]] const ssize_t written = write(eventFd_, &one, sizeof one);
    });
  }

  ~SimNotifier() override {
    Bus::Instance().DetachNotifier();
    if (eventFd_ >= 0) close(eventFd_);
  }

  int EventDescriptor() const override { return eventFd_; }

  unsigned DispatchPending() override {
    uint64_t count = 0;
    [[maybe_unused]] const ssize_t drained = read(eventFd_, &count, sizeof count);
    std::deque<std::pair<platform::DeviceEvent, std::string>> events;
    {
      std::lock_guard hold(mutex_);
      events.swap(pending_);
    }
    for (const auto& [event, path] : events) handler_(event, path.c_str());
    return static_cast<unsigned>(events.size());
  }

 private:
  const platform::DeviceEventHandler handler_;
  const int eventFd_;
  std::mutex mutex_;
  std::deque<std::pair<platform::DeviceEvent, std::string>> pending_;
};

std::atomic<uint64_t> nextHandleId{1};

}  // namespace
}  // namespace pelm::sim

namespace pelm::platform {

HidHandle OpenDevice(const char* path, OpenMode mode) {
  std::shared_ptr<sim::SimDevice> device = sim::FindPresent(path);
  if (!device) return nullptr;
  device->Delay();
  uint64_t generation;
  {
    std::lock_guard hold(device->mutex_);
    if (device->failOpens_ || device->denyAccess_ || !device->present_) {
      generation = 0;
    } else {
      generation = device->generation_;
      ++device->openHandles_;
    }
  }
  if (generation == 0) {
    device->Record(sim::LogOp::OpenFailed, 0, mode, nullptr, 0, false);
    return nullptr;
  }
  const uint64_t id = sim::nextHandleId++;
  device->Record(sim::LogOp::Open, id, mode, nullptr, 0, true);
  return std::make_shared<sim::SimHidDevice>(device, generation, id, mode);
}

std::optional<InterfaceIds> IdsWithoutOpening(const char* path) {
  if (!sim::Bus::Instance().TellsIdsWithoutOpening()) return std::nullopt;
  const std::shared_ptr<sim::SimDevice> device = sim::FindPresent(path);
  if (!device) return std::nullopt;
  const sim::DeviceDescription& description = device->Description();
  return InterfaceIds{description.vendorId, description.productId};
}

OpenAttempt TryOpen(const char* path) {
  std::shared_ptr<sim::SimDevice> device = sim::FindPresent(path);
  if (!device) return {OpenFailure::NotPresent, ENOENT};
  std::lock_guard hold(device->mutex_);
  if (!device->present_) return {OpenFailure::NotPresent, ENOENT};
  if (device->denyAccess_) return {OpenFailure::PermissionDenied, EACCES};
  if (device->failOpens_) return {OpenFailure::Other, EIO};
  return {};
}

std::vector<PresentInterface> ListPresentInterfaces() {
  std::vector<PresentInterface> present;
  for (const std::string& path : sim::Bus::Instance().PresentPaths()) {
    if (const std::shared_ptr<sim::SimDevice> device = sim::Bus::Instance().Find(path)) {
      const sim::DeviceDescription& description = device->Description();
      present.push_back({path, {}, description.vendorId, description.productId});
    }
  }
  return present;
}

std::shared_ptr<ReadCancel> CreateReadCancel() {
  if (sim::Bus::Instance().ReadCancelsFail()) return nullptr;
  return std::make_shared<sim::SimReadCancel>();
}

std::unique_ptr<InterfaceList> ListHidInterfaces() {
  if (sim::Bus::Instance().ListingFails()) return nullptr;
  return std::make_unique<sim::SimInterfaceList>(sim::Bus::Instance().PresentPaths());
}

std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler) {
  if (instance == nullptr) return nullptr;
  return std::make_unique<sim::SimNotifier>(std::move(handler));
}

// Named mutexes of the simulated backend are shared within the process.
std::unique_ptr<NamedMutex> CreateNamedMutex(const char* name) {
  return std::make_unique<SharedNamedMutex<InProcessMutex>>(
      SharedByName<InProcessMutex>(name, [] { return std::make_shared<InProcessMutex>(); }));
}

}  // namespace pelm::platform
