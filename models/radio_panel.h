#pragma once
// The radio panel: two six-digit seven-segment displays (left and right), two
// rotary dials, a byte of switches, a byte of indicator lamps and a backlight.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"
#include "models/segment_display.h"

namespace pelm {

// What the input callback receives (core/pelm_records.h).
using RadioInputRecord = PelmRadioInputRecord;
static_assert(sizeof(RadioInputRecord) == 5);
static_assert(offsetof(RadioInputRecord, dialVals) == 0 && sizeof(RadioInputRecord::dialVals) == 4);
static_assert(offsetof(RadioInputRecord, switchVals) == 4);

class cPelmRadio final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_RADIO;
  static constexpr int kDialCount = 2;

  // Feature reports. Each display report carries its six segment bytes,
  // position 0 in byte 1.
  static constexpr SegmentDisplay kLeftDisplay{3, 6};
  static constexpr SegmentDisplay kRightDisplay{5, 6};
  static constexpr uint8_t kBrightnessReport = 6;  // byte 1: level, sent and read
  static constexpr uint8_t kIndicatorReport = 7;   // byte 1: lamp bits, sent and read
  // Read once at open, laid out as the input report; only its switches are kept.
  static constexpr uint8_t kControlStateReport = 8;
  static constexpr uint32_t kControlStateReportLength = 4;

  // Input report: bytes 1 and 2 the dials (signed counts), byte 3 the switches.
  static constexpr uint32_t kFirstDialByte = 1;
  static constexpr uint32_t kSwitchByte = 3;
  static constexpr uint32_t kInputReportLength = 4;

  explicit cPelmRadio(const char* path);

  int32_t GetControlVals(int16_t* dial1, int16_t* dial2, uint8_t* switches);
  int32_t GetBrightness(uint16_t* level);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t SetBrightness(uint32_t level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetLDisplaySegments(const uint8_t* segments);
  int32_t SetLDisplayText(const char* text);
  int32_t SetRDisplaySegments(const uint8_t* segments);
  int32_t SetRDisplayText(const char* text);

  std::atomic<int16_t> dialVals[kDialCount] = {0, 0};
  std::atomic<uint8_t> switchVals{0};
  // As last read back from the panel; the setters do not change them.
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
