// The writer thread of a device: takes reports from the head of the output
// report queue and sends them as the device's writer variant says.

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

#include "channel/hid_channel.h"

namespace pelm {
namespace {

// A report put back after a failed send is retried this soon.
constexpr std::chrono::milliseconds kRetryInterval{10};
// A writer whose own handle would not open (the device is away) tries again
// after this pause, doubled after each failed open up to the longest.
constexpr std::chrono::milliseconds kFirstReopenPause{10};
constexpr std::chrono::milliseconds kLongestReopenPause{1000};
// Older version-switched devices need a breath after each feature report.
constexpr std::chrono::milliseconds kFeatureReportSettle{1};
// The counted writer drops a report once this many attempts in a row have failed.
constexpr int32_t kCountedWriterAttempts = 3;

}  // namespace

WriterRule RuleFor(WriterVariant variant, uint16_t versionNumber) {
  using M = WriterRule::Method;
  using F = WriterRule::OnFailure;
  switch (variant) {
    case WriterVariant::Direct:
      return {M::FeatureOnMain, F::Drop, M::FeatureOnMain};
    case WriterVariant::Retrying:
      return {M::FeatureOnOwn, F::RetryAtHead, M::FeatureOnMain};
    case WriterVariant::Counted:
      return {M::FeatureOnOwn, F::RetryThreeInARow, M::FeatureOnMain};
    case WriterVariant::OutputReport:
      return {M::OutputOnOwn, F::RetryAtHead, M::OutputOnOwn};
    case WriterVariant::VersionSwitched:
      if (versionNumber >= kPaddedOutputVersion) return {M::PaddedOutputOnOwn, F::Drop, M::PaddedOutputOnOwn};
      return {M::FeatureOnOwn, F::RetryAtHead, M::FeatureOnMain, kFeatureReportSettle};
    case WriterVariant::ClassBased:
    case WriterVariant::None:
      break;
  }
  return {M::EntryKindOnOwn, F::RetryAtHead, M::EntryKindOnOwn};
}

bool cHidChannel::Send(WriterRule::Method method, QueueEntry& entry, platform::HidHandle& own) {
  using M = WriterRule::Method;
  const uint8_t* bytes = entry.buffer.get();
  switch (method) {
    case M::FeatureOnMain: {
      platform::HidHandle device = MainHandle();
      return device && device->SetFeature(bytes, entry.length);
    }
    case M::FeatureOnOwn:
      return own && own->SetFeature(bytes, entry.length);
    case M::OutputOnOwn:
      return own && own->WriteOutput(bytes, entry.length);
    case M::PaddedOutputOnOwn: {
      std::array<uint8_t, kPaddedOutputLength> padded;
      padded.fill(kPaddedOutputFill);
      std::memcpy(padded.data(), bytes, std::min<uint32_t>(entry.length, kPaddedOutputLength));
      return own && own->WriteOutput(padded.data(), kPaddedOutputLength);
    }
    case M::EntryKindOnOwn:
      if (!own) return false;
      return entry.kind == ReportKind::Output ? own->WriteOutput(bytes, entry.length)
                                              : own->SetFeature(bytes, entry.length);
  }
  return false;
}

bool cHidChannel::SendWhileRunning(const WriterRule& rule, std::unique_ptr<QueueEntry> entry,
                                   platform::HidHandle& own, int32_t& failuresInARow) {
  using F = WriterRule::OnFailure;
  ++failuresInARow;
  if (Send(rule.send, *entry, own)) {
    failuresInARow = 0;
    if (rule.pauseAfterSuccess.count() > 0) std::this_thread::sleep_for(rule.pauseAfterSuccess);
    return false;
  }
  if (rule.failure == F::Drop) return false;
  // The next pass opens the device afresh.
  own.reset();
  if (rule.failure == F::RetryThreeInARow && failuresInARow >= kCountedWriterAttempts) return false;
  if (outputQueue_.PushFront(entry.get()) == 0) return false;
  entry.release();
  return true;
}

void cHidChannel::WriterLoop() {
  using Clock = std::chrono::steady_clock;
  const WriterRule rule = RuleFor(config_.writer, Attributes().versionNumber);
  platform::HidHandle own;
  Clock::time_point reopenDue{};
  std::chrono::milliseconds reopenPause = kFirstReopenPause;
  const auto openOwn = [&] {
    own = platform::OpenDevice(devicePath_.c_str(), platform::OpenMode::Synchronous);
    if (own) {
      reopenPause = kFirstReopenPause;
      return;
    }
    reopenDue = Clock::now() + reopenPause;
    reopenPause = std::min(reopenPause * 2, kLongestReopenPause);
  };
  if (rule.UsesOwnHandle()) openOwn();

  const auto stopping = [this] { return stopThreads_ != 0; };
  const auto hasWork = [this] { return stopThreads_ != 0 || !outputQueue_.IsEmpty(); };
  int32_t failuresInARow = 0;
  // While the head report waits for its retry or for the own handle: when to
  // look at it again. Never, while the writer only waits for reports.
  constexpr Clock::time_point kNever = Clock::time_point::max();
  Clock::time_point lookAgainAt = kNever;
  for (;;) {
    if (lookAgainAt != kNever) {
      const auto left = std::chrono::ceil<std::chrono::milliseconds>(lookAgainAt - Clock::now());
      writerWake_.Sleep(stopping, std::max(left, std::chrono::milliseconds{0}));
    } else {
      writerWake_.Sleep(hasWork);
    }
    ++writerPasses_;
    lookAgainAt = kNever;
    if (stopThreads_ != 0) break;
    if (outputQueue_.IsEmpty()) continue;
    if (rule.UsesOwnHandle() && !own) {
      if (Clock::now() < reopenDue) {
        lookAgainAt = reopenDue;
        continue;
      }
      openOwn();
    }
    if (SendWhileRunning(rule, std::unique_ptr<QueueEntry>(outputQueue_.PopFront()), own, failuresInARow)) {
      lookAgainAt = std::max(Clock::now() + kRetryInterval, reopenDue);
    }
  }

  // Draining at stop: every report queued by now is tried once and released.
  // Reports a busy host queues meanwhile stay queued: draining those too
  // would let a host that keeps calling hold the stop off for ever.
  if (rule.UsesOwnHandle() && !own) own = platform::OpenDevice(devicePath_.c_str(), platform::OpenMode::Synchronous);
  for (uint32_t queuedAtStop = outputQueue_.Count(); queuedAtStop > 0; --queuedAtStop) {
    std::unique_ptr<QueueEntry> entry(outputQueue_.PopFront());
    if (!entry) break;
    Send(rule.drain, *entry, own);
  }
}

}  // namespace pelm
