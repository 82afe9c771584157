// The writer thread of a device: takes reports from the head of the output
// report queue and sends them as the device's writer variant says.

#include <algorithm>
#include <array>
#include <cstring>
#include <thread>

#include "channel/hid_channel.h"

namespace pelm {
namespace {

// The writer wakes at once for each queued report and otherwise looks at the
// queue this often; a report put back after a failure is retried this soon.
constexpr std::chrono::milliseconds kWriterLookInterval{10};
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

void cHidChannel::SendWhileRunning(const WriterRule& rule, std::unique_ptr<QueueEntry> entry,
                                   platform::HidHandle& own, int32_t& failuresInARow) {
  using F = WriterRule::OnFailure;
  ++failuresInARow;
  if (Send(rule.send, *entry, own)) {
    failuresInARow = 0;
    if (rule.pauseAfterSuccess.count() > 0) std::this_thread::sleep_for(rule.pauseAfterSuccess);
    return;
  }
  if (rule.failure == F::Drop) return;
  // The next pass opens the device afresh.
  own.reset();
  if (rule.failure == F::RetryThreeInARow && failuresInARow >= kCountedWriterAttempts) return;
  if (outputQueue_.PushFront(entry.get()) == 1) entry.release();
}

void cHidChannel::WriterLoop() {
  const WriterRule rule = RuleFor(config_.writer, Attributes().versionNumber);
  platform::HidHandle own;
  int32_t failuresInARow = 0;
  bool draining = false;
  for (;;) {
    if (rule.UsesOwnHandle() && !own) {
      own = platform::OpenDevice(devicePath_.c_str(), platform::OpenMode::Synchronous);
    }
    if (!draining) {
      writeSemaphore_.AcquireFor(kWriterLookInterval);
      if (!outputQueue_.IsEmpty()) {
        SendWhileRunning(rule, std::unique_ptr<QueueEntry>(outputQueue_.PopFront()), own, failuresInARow);
      }
      if (stopThreads_ == 1) draining = true;
      continue;
    }
    // Draining at stop: every report queued by now is tried once and released.
    // Reports a busy host queues meanwhile stay queued: draining those too
    // would let a host that keeps calling hold the stop off for ever.
    for (uint32_t queuedAtStop = outputQueue_.Count(); queuedAtStop > 0; --queuedAtStop) {
      std::unique_ptr<QueueEntry> entry(outputQueue_.PopFront());
      if (!entry) break;
      Send(rule.drain, *entry, own);
    }
    return;
  }
}

}  // namespace pelm
