#include "channel/hid_channel.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>

#include "channel/thread_entry.h"

namespace pelm {
namespace {

// A read that fails at once (device unplugged, handle gone) is tried again after
// a pause that doubles each time, in case the failure passes. After this many
// failures in a row the handle is taken for dead and the reader only waits for
// its stop: the removal handler stops it, and the device's return starts a
// reader on a fresh handle.
constexpr std::chrono::milliseconds kFirstFailedReadPause{10};
constexpr int kFailedReadsBeforeGivingUp = 5;

// A reader that rests between passes reads at most this many waiting reports
// per pass: more than any HID driver buffers, so it always reaches the newest,
// while a device that never stops sending cannot hold the reader.
constexpr int kMostPendingReportsPerPass = 256;

// While the reader rested the device went on reporting and its driver kept
// the reports, oldest first: the newest is the one that tells where the
// controls are now. `buffer` ends up holding it.
void TakeNewestPending(platform::HidDevice& device, uint8_t* buffer, uint32_t length, uint32_t& bytesRead) {
  uint32_t got = 0;
  for (int taken = 0; taken < kMostPendingReportsPerPass; ++taken) {
    if (device.ReadPendingInput(buffer, length, got) != platform::ReadStatus::Completed) return;
    bytesRead = got;
  }
}

void WaitForStop(platform::ReadCancel& cancel) {
  while (!cancel.WaitFor(std::chrono::hours(1))) {
  }
}

// Reports of one value: the report ID, then the value.
constexpr uint32_t kFeatureByteReportLength = 2;

}  // namespace

std::string UpperCasePath(const char* path) {
  std::string upper(path);
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

bool SamePath(const std::string& upperCased, const char* path) {
  const std::size_t length = std::strlen(path);
  if (length != upperCased.size()) return false;
  for (std::size_t i = 0; i < length; ++i) {
    if (std::toupper(static_cast<unsigned char>(path[i])) !=
        static_cast<unsigned char>(upperCased[i])) {
      return false;
    }
  }
  return true;
}

cHidChannel::cHidChannel(const char* path, const ChannelConfig& config)
    : config_(config), devicePath_(UpperCasePath(path)) {
  outputQueue_.Create();
}

cHidChannel::~cHidChannel() {
  // Owners run StopThreads (through Close) first; this is the last safety net
  // against a thread outliving its object.
  StopThreads();
  // Models without a writer never drain their queue.
  while (QueueEntry* entry = outputQueue_.PopFront()) delete entry;
  outputQueue_.Destroy();
}

bool cHidChannel::OpenAndIdentify() {
  platform::HidHandle device = platform::OpenDevice(devicePath_.c_str(), platform::OpenMode::Overlapped);
  {
    std::lock_guard hold(handleMutex_);
    deviceHandle_ = device;
  }
  if (!device) return false;
  Identify(*device);
  return true;
}

void cHidChannel::Identify(platform::HidDevice& device) {
  platform::HidCaps caps;
  platform::HidAttributes attributes;
  const bool haveCaps = device.GetCaps(caps);
  const bool haveAttributes = device.GetAttributes(attributes);

  std::lock_guard hold(identityMutex_);
  if (haveAttributes) attributes_ = attributes;
  if (!haveCaps || !haveAttributes) return;
  caps_ = caps;
  inputBufferLength_ = std::max<uint32_t>(caps.inputReportByteLength, config_.minInputReportLength);
  inputReportBuffer_.reset(new (std::nothrow) uint8_t[inputBufferLength_]());
  identified_ = inputReportBuffer_ != nullptr;
}

void cHidChannel::ReadSerialNumber() {
  platform::HidHandle device = MainHandle();
  std::u16string serial;
  if (!device || !device->GetSerialNumber(serial)) return;
  std::string narrowed;
  for (char16_t unit : serial) {
    const auto low = static_cast<char>(unit & 0xFF);
    if (low == '\0' || narrowed.size() == kSerialNumberMaxChars) break;
    narrowed.push_back(low);
  }
  serialNumber_ = std::move(narrowed);
}

void cHidChannel::ReleaseIdentification() {
  {
    std::lock_guard hold(handleMutex_);
    deviceHandle_.reset();
  }
  std::lock_guard hold(identityMutex_);
  identified_ = false;
  inputReportBuffer_.reset();
  inputBufferLength_ = 0;
}

bool cHidChannel::Identified() const {
  std::lock_guard hold(identityMutex_);
  return identified_;
}

platform::HidCaps cHidChannel::Caps() const {
  std::lock_guard hold(identityMutex_);
  return caps_;
}

platform::HidAttributes cHidChannel::Attributes() const {
  std::lock_guard hold(identityMutex_);
  return attributes_;
}

platform::HidHandle cHidChannel::MainHandle() {
  std::lock_guard hold(handleMutex_);
  return deviceHandle_;
}

int cHidChannel::StartThreads() {
  if (readerThread_.joinable() || writerThread_.joinable()) StopThreads();
  stopThreads_ = 0;

  // The handle of the identification is replaced by a fresh one: a device that
  // comes back is a new handle for the OS. The fresh one opens before the old
  // one closes, so that a USB HID driver does not pause on the first open of a
  // closed device once more.
  platform::HidHandle device = platform::OpenDevice(devicePath_.c_str(), platform::OpenMode::Overlapped);
  {
    std::lock_guard hold(handleMutex_);
    deviceHandle_ = device;
  }
  // A device that could not be identified when its object was opened gets
  // another chance each time it comes back.
  if (device && !Identified()) Identify(*device);

  readCancel_ = platform::CreateReadCancel();
  if (readCancel_ && LaunchThreads(device)) return 1;
  // Without a read that can be cancelled, or without its threads, the device
  // does not run: a reader that nothing can stop would hang every later stop.
  StopThreads();
  return 0;
}

bool cHidChannel::ThreadsRunning() const { return readerThread_.joinable(); }

bool cHidChannel::LaunchThreads(const platform::HidHandle& device) {
  try {
    readerThread_ = std::thread([this, device, cancel = readCancel_] {
      RunThreadBody([&] { ReaderLoop(device, cancel); });
    });
    if (config_.writer != WriterVariant::None) {
      writerThread_ = std::thread([this] { RunThreadBody([this] { WriterLoop(); }); });
    }
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

int cHidChannel::StopThreads() {
  stopThreads_ = 1;
  if (readCancel_) readCancel_->Signal();
  writerWake_.Wake();
  if (readerThread_.joinable()) readerThread_.join();
  if (writerThread_.joinable()) writerThread_.join();
  readCancel_.reset();
  std::lock_guard hold(handleMutex_);
  deviceHandle_.reset();
  return 1;
}

void cHidChannel::ReaderLoop(platform::HidHandle device, std::shared_ptr<platform::ReadCancel> cancel) {
  uint8_t* buffer = nullptr;
  uint32_t readLength = 0;
  {
    std::lock_guard hold(identityMutex_);
    if (identified_) {
      buffer = inputReportBuffer_.get();
      readLength = caps_.inputReportByteLength;
    }
  }
  if (!device || buffer == nullptr || readLength == 0) {
    // Nothing can be read from this device.
    WaitForStop(*cancel);
    return;
  }

  std::chrono::milliseconds failedReadPause = kFirstFailedReadPause;
  int failedReadsInARow = 0;
  while (stopThreads_ == 0) {
    ++readerPasses_;
    uint32_t bytesRead = 0;
    const platform::ReadStatus status = device->ReadInput(buffer, readLength, bytesRead, *cancel);
    if (status != platform::ReadStatus::Failed) {
      failedReadsInARow = 0;
      failedReadPause = kFirstFailedReadPause;
    }
    if (status == platform::ReadStatus::Completed) {
      if (config_.readerPause.count() > 0) TakeNewestPending(*device, buffer, readLength, bytesRead);
      if (stopThreads_ != 0) break;
      bytesRead = std::min(bytesRead, readLength);
      std::fill(buffer + bytesRead, buffer + inputBufferLength_, uint8_t{0});
      DeliverInput(buffer, bytesRead);
    } else if (status == platform::ReadStatus::Failed) {
      if (++failedReadsInARow >= kFailedReadsBeforeGivingUp) {
        WaitForStop(*cancel);
        return;
      }
      cancel->WaitFor(failedReadPause);
      failedReadPause *= 2;
    }
    if (config_.readerPause.count() > 0) cancel->WaitFor(config_.readerPause);
  }
}

bool cHidChannel::QueueReport(ReportBytes report, uint32_t length, ReportKind kind) {
  std::unique_ptr<QueueEntry> entry(new (std::nothrow) QueueEntry{length, std::move(report), kind});
  if (!entry) return false;
  if (outputQueue_.PushBack(entry.get(), config_.queueLimit) == 0) return false;
  entry.release();
  writerWake_.WakeIfAsleep();
  return true;
}

int32_t cHidChannel::QueueByteReport(uint8_t reportId, uint8_t value, ReportKind kind) {
  return BuildAndQueue(kFeatureByteReportLength, kind, [reportId, value](uint8_t* report) {
    report[0] = reportId;
    report[1] = value;
  });
}

int32_t cHidChannel::ReadFeatureByte(uint8_t reportId, uint8_t& value) {
  ReportBytes report = AllocateReport(kFeatureByteReportLength);
  if (!report) return PELM_ERR_NOMEM;
  report[0] = reportId;
  platform::HidHandle device = MainHandle();
  if (!device || !device->GetFeature(report.get(), kFeatureByteReportLength)) return PELM_ERR_IO;
  value = report[1];
  return PELM_SUCCESS;
}

}  // namespace pelm
