#pragma once
// How a device's writer thread sends queued reports. The writer loop is one;
// the variants differ only in the handle and HID call a send uses, in what a
// failed send does, and in how the queue is drained at stop.

#include <chrono>
#include <cstdint>

namespace pelm {

enum class WriterVariant {
  None,             // the model never sends: no writer thread
  Direct,           // feature reports on the main handle; failures dropped
  Retrying,         // feature reports on the writer's own handle; retried at the head
  Counted,          // as Retrying, but three failed attempts in a row drop the report
  OutputReport,     // as Retrying, with HID output reports
  VersionSwitched,  // Retrying below kPaddedOutputVersion, padded output reports from it on
  ClassBased,       // each entry's own kind on the writer's own handle; retried at the head
};

// Devices of the version-switched writer from this version on take every report
// as an 8-byte output report.
inline constexpr uint16_t kPaddedOutputVersion = 0x0200;
inline constexpr uint32_t kPaddedOutputLength = 8;
inline constexpr uint8_t kPaddedOutputFill = 0xDD;

struct WriterRule {
  enum class Method {
    FeatureOnMain,      // HidD_SetFeature on the main handle
    FeatureOnOwn,       // HidD_SetFeature on the writer's own handle
    OutputOnOwn,        // WriteFile on the writer's own handle
    PaddedOutputOnOwn,  // WriteFile of the report padded to 8 bytes with 0xDD
    EntryKindOnOwn,     // output or feature report, as the entry says
  };
  enum class OnFailure {
    Drop,              // release the report, keep the own handle
    RetryAtHead,       // put the report back at the head, reopen the own handle
    RetryThreeInARow,  // as RetryAtHead until three attempts in a row have failed
  };

  Method send;
  OnFailure failure;
  Method drain;
  // Pause after each successful send.
  std::chrono::milliseconds pauseAfterSuccess{0};

  bool UsesOwnHandle() const { return send != Method::FeatureOnMain; }
};

WriterRule RuleFor(WriterVariant variant, uint16_t versionNumber);

}  // namespace pelm
