#pragma once
// The transponder-code panel: one seven-segment digit, one rotary dial, a byte
// of switches and a backlight.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"
#include "models/segment_display.h"

namespace pelm {

// What the input callback receives (core/pelm_records.h).
using SquawkInputRecord = PelmSquawkInputRecord;
static_assert(sizeof(SquawkInputRecord) == 3);
static_assert(offsetof(SquawkInputRecord, dialVals) == 0);
static_assert(offsetof(SquawkInputRecord, switchVals) == 2);

class cPelmSquawk final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_SQUAWK;

  // Feature reports, two bytes each; byte 1 carries the value.
  static constexpr SegmentDisplay kDigitDisplay{3, 1};
  static constexpr uint8_t kBrightnessReport = 4;  // sent and read
  // Read once at open, laid out as the input report. The panel's state starts
  // at zero all the same.
  static constexpr uint8_t kControlStateReport = 5;
  static constexpr uint32_t kControlStateReportLength = 3;

  // Input report: byte 1 the dial (a signed count), byte 2 the switches.
  static constexpr uint32_t kDialByte = 1;
  static constexpr uint32_t kSwitchByte = 2;
  static constexpr uint32_t kInputReportLength = 3;

  explicit cPelmSquawk(const char* path);

  int32_t GetControlVals(int16_t* dial, uint8_t* switches);
  // Writes the level as a 32-bit value.
  int32_t GetBrightness(uint32_t* level);
  int32_t SetBrightness(uint32_t level);
  int32_t SetDigit(const char* text);
  int32_t SetDigitSegments(const uint8_t* segments);

  std::atomic<int16_t> dialVals{0};
  std::atomic<uint8_t> switchVals{0};
  // As last read back from the panel; SetBrightness does not change it.
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
