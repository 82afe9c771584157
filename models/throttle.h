#pragma once
// The throttle quadrant: six levers and four switch contacts. It only reports,
// and often: lever noise keeps it sending, so its reader rests after every
// pass and the host hears from it at most twenty times a second.

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

inline constexpr int kThrottleLeverCount = 6;

// What the input callback receives (core/pelm_records.h).
using ThrottleInputRecord = PelmThrottleInputRecord;
static_assert(sizeof(ThrottleInputRecord) == 7);
static_assert(offsetof(ThrottleInputRecord, axisVals) == 0 && sizeof(ThrottleInputRecord::axisVals) == kThrottleLeverCount);
static_assert(offsetof(ThrottleInputRecord, switchVals) == 6);

class cPelmThrottle final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_THROTTLE;
  static constexpr int kLeverCount = kThrottleLeverCount;

  // Input report, 8 bytes:
  //   bytes 1-6  lever 1 to 6 positions, unsigned
  //   byte 7     switch contacts in bits 0-3; bits 4-7 not used
  static constexpr uint32_t kInputReportLength = 8;
  static constexpr std::size_t kFirstLeverByte = 1;
  static constexpr std::size_t kSwitchByte = 7;
  static constexpr std::chrono::milliseconds kReaderPause{50};

  explicit cPelmThrottle(const char* path);

  // Writes the six lever positions and the switch bits, each where its pointer
  // is not null (and writable). Nothing is reset.
  int32_t GetControlVals(uint8_t* lever1, uint8_t* lever2, uint8_t* lever3, uint8_t* lever4, uint8_t* lever5,
                         uint8_t* lever6, uint8_t* switches);

  std::atomic<uint8_t> axisVals[kLeverCount] = {0, 0, 0, 0, 0, 0};
  // The contacts of byte 7 in reversed order: bit 0 in bit 4 down to bit 3 in
  // bit 1. Bits 0 and 5-7 are always 0.
  std::atomic<uint8_t> switchVals{0};

 private:
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
