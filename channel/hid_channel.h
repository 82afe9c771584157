#pragma once
// The machinery that every open device shares, function-based record and
// class-based object alike: the device path and identity, the identification of
// the device, the reader thread that hands input reports on, the output report
// queue and the writer thread that sends it, and the start and stop of both
// threads as the device leaves and comes back.

#include <atomic>
#include <chrono>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

#include "channel/report.h"
#include "channel/report_queue.h"
#include "channel/writer_rule.h"
#include "channel/writer_wake.h"
#include "core/pelm_dev.h"
#include "platform/platform.h"

namespace pelm {

// The longest device path a device object takes: 260 bytes with its terminator.
inline constexpr std::size_t kMaxDevicePathLength = 259;
// Serial numbers are kept as at most this many 8-bit characters.
inline constexpr std::size_t kSerialNumberMaxChars = 32;
// The device index of an object that is not yet in a slot.
inline constexpr int32_t kUnplacedDeviceIndex = -99;

inline constexpr uint32_t kFunctionBasedQueueLimit = 25;
inline constexpr uint32_t kClassBasedQueueLimit = 100;

struct ChannelConfig {
  WriterVariant writer = WriterVariant::None;
  // Reports pending at most.
  uint32_t queueLimit = kFunctionBasedQueueLimit;
  // Pause at the end of every reader pass (the throttle quadrant's pacing).
  // A reader that pauses hands on, of the reports waiting after its pause,
  // only the newest: at most one input per pass, never a stale one.
  std::chrono::milliseconds readerPause{0};
  // The bytes the model's input handling reads. The input buffer is at least
  // this long, zero beyond what the device sent, so a device with shorter
  // reports is never parsed past its buffer.
  uint32_t minInputReportLength = 0;
};

// The device path as every device object keeps it: upper-cased, compared without
// regard to case.
std::string UpperCasePath(const char* path);
bool SamePath(const std::string& upperCased, const char* path);

class cHidChannel {
 public:
  cHidChannel(const cHidChannel&) = delete;
  cHidChannel& operator=(const cHidChannel&) = delete;
  // Owners stop the threads (Close) before they destroy the object.
  virtual ~cHidChannel();

  const std::string& DevicePath() const { return devicePath_; }
  const std::string& SerialNumber() const { return serialNumber_; }

  // 1 while the device is present and its threads run.
  std::atomic<uint32_t> connected{0};
  // The slot position, kUnplacedDeviceIndex until the owner places the object.
  std::atomic<int32_t> deviceIndex{kUnplacedDeviceIndex};
  bool IsConnected() const { return connected.load() == 1; }
  // The device index as input callbacks carry it: its low 16 bits.
  int32_t CallbackIndex() const { return deviceIndex.load() & 0xFFFF; }

  // (Re)opens the main handle and starts the reader and, if the model has one,
  // the writer. Stops running threads first. 1 when they run; 0 when the OS
  // gave no cancellable read or no thread (nothing runs, the handle is closed).
  int StartThreads();
  bool ThreadsRunning() const;
  // Ends both threads promptly (the writer sends each queued report once first)
  // and closes the main handle. Always 1.
  int StopThreads();

  // Takes ownership of `report`. False when the report was refused (queue at its
  // limit, or no memory for the entry); the report is then released.
  bool QueueReport(ReportBytes report, uint32_t length, ReportKind kind);
  uint32_t PendingReports() { return outputQueue_.Count(); }
  // The most reports that were ever pending at once on this object.
  uint32_t PendingReportsHighWater() const { return outputQueue_.HighWater(); }

  // How often the writer woke and the reader went round its loop since the
  // object was made: an idle device costs neither.
  uint64_t WriterPasses() const { return writerPasses_.load(); }
  uint64_t ReaderPasses() const { return readerPasses_.load(); }

  bool Identified() const;
  platform::HidCaps Caps() const;
  platform::HidAttributes Attributes() const;
  // The current main handle; null while stopped or when the device could not be
  // opened.
  platform::HidHandle MainHandle();

  // Reads feature report `reportId` (two bytes) on the main handle and gives
  // byte 1: PELM_SUCCESS, PELM_ERR_NOMEM or PELM_ERR_IO (value untouched).
  int32_t ReadFeatureByte(uint8_t reportId, uint8_t& value);

  // The getter of a cached byte that the device reports in a two-byte feature
  // report: refreshes `cache` and writes it, widened, to `out`. PELM_ERR_PARAM
  // for a null or unwritable `out`; when the read fails neither is changed.
  template <class Out>
  int32_t ReadFeatureInto(uint8_t reportId, std::atomic<uint8_t>& cache, Out* out);

  // Queues the two-byte report of `reportId` and `value`: PELM_SUCCESS,
  // PELM_ERR_NOMEM or PELM_ERR_QUEUE.
  int32_t QueueByteReport(uint8_t reportId, uint8_t value, ReportKind kind = ReportKind::Feature);

  // Builds a zero-filled report of `length` bytes, lets `fill` write it and
  // queues it: PELM_SUCCESS, PELM_ERR_NOMEM or PELM_ERR_QUEUE.
  template <class Fill>
  int32_t BuildAndQueue(uint32_t length, ReportKind kind, Fill&& fill);

 protected:
  cHidChannel(const char* path, const ChannelConfig& config);

  // Opens the main handle and identifies the device; true when the handle opened.
  bool OpenAndIdentify();
  // Reads the serial number on the main handle, narrowed to 8-bit characters.
  void ReadSerialNumber();
  // Closes the main handle and forgets the identification.
  void ReleaseIdentification();

  // Called on the reader thread for each report read while the threads run.
  virtual void DeliverInput(const uint8_t* report, uint32_t bytesRead) = 0;

  cReportQueue outputQueue_;

 private:
  void Identify(platform::HidDevice& device);
  bool LaunchThreads(const platform::HidHandle& device);
  void ReaderLoop(platform::HidHandle device, std::shared_ptr<platform::ReadCancel> cancel);
  void WriterLoop();
  bool Send(WriterRule::Method method, QueueEntry& entry, platform::HidHandle& own);
  // True when the report was put back at the head for a retry.
  bool SendWhileRunning(const WriterRule& rule, std::unique_ptr<QueueEntry> entry,
                        platform::HidHandle& own, int32_t& failuresInARow);

  const ChannelConfig config_;
  const std::string devicePath_;
  std::string serialNumber_;

  mutable std::mutex identityMutex_;
  bool identified_ = false;
  platform::HidCaps caps_;
  platform::HidAttributes attributes_;
  std::unique_ptr<uint8_t[]> inputReportBuffer_;
  uint32_t inputBufferLength_ = 0;

  std::mutex handleMutex_;
  platform::HidHandle deviceHandle_;

  std::atomic<uint32_t> stopThreads_{0};
  std::shared_ptr<platform::ReadCancel> readCancel_;
  WriterWake writerWake_;
  std::atomic<uint64_t> writerPasses_{0};
  std::atomic<uint64_t> readerPasses_{0};
  std::thread readerThread_;
  std::thread writerThread_;
};

template <class Fill>
int32_t cHidChannel::BuildAndQueue(uint32_t length, ReportKind kind, Fill&& fill) {
  ReportBytes report = AllocateReport(length);
  if (!report) return PELM_ERR_NOMEM;
  fill(report.get());
  return QueueReport(std::move(report), length, kind) ? PELM_SUCCESS : PELM_ERR_QUEUE;
}

template <class Out>
int32_t cHidChannel::ReadFeatureInto(uint8_t reportId, std::atomic<uint8_t>& cache, Out* out) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (out == nullptr) return PELM_ERR_PARAM;
  uint8_t value = 0;
  const int32_t status = ReadFeatureByte(reportId, value);
  if (status != PELM_SUCCESS) return status;
  cache = value;
  const Out widened = value;
  return platform::WriteToHostMemory(out, &widened, sizeof widened) ? PELM_SUCCESS : PELM_ERR_PARAM;
}

}  // namespace pelm
