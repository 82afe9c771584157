#pragma once
// The two autopilot panels: short seven-segment displays (A to E, and F on the
// second model), a row of rotary dials, switches, indicator lamps and a
// backlight. The first model has five dials of signed byte counts, two switch
// bytes and an indicator byte that it reads back from the panel; the second has
// six dials of signed half-byte counts, a 32-bit switch word and a 32-bit
// indicator word that the library remembers.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <span>

#include "channel/device_record.h"
#include "core/pelm_dev.h"
#include "models/segment_display.h"

namespace pelm {

// What the input callback receives (core/pelm_records.h).
using AutopilotInputRecord = PelmAutopilotInputRecord;
using Autopilot2InputRecord = PelmAutopilot2InputRecord;
static_assert(sizeof(AutopilotInputRecord) == 12);
static_assert(offsetof(AutopilotInputRecord, dialVals) == 0 && sizeof(AutopilotInputRecord::dialVals) == 10);
static_assert(offsetof(AutopilotInputRecord, switchVals) == 10 && sizeof(AutopilotInputRecord::switchVals) == 2);
static_assert(sizeof(Autopilot2InputRecord) == 16);
static_assert(offsetof(Autopilot2InputRecord, dialVals) == 0 && sizeof(Autopilot2InputRecord::dialVals) == 12);
static_assert(offsetof(Autopilot2InputRecord, switchVals) == 12 && sizeof(Autopilot2InputRecord::switchVals) == 4);

// What both panels share: their displays A to E and their backlight.
class cPelmAutopilotPanel : public cPelmDeviceRecord {
 public:
  int32_t GetBrightness(uint16_t* level);
  int32_t SetBrightness(uint32_t level);
  int32_t SetADisplaySegments(const uint8_t* segments);
  int32_t SetADisplayText(const char* text);
  int32_t SetBDisplaySegments(const uint8_t* segments);
  int32_t SetBDisplayText(const char* text);
  int32_t SetCDisplaySegments(const uint8_t* segments);
  int32_t SetCDisplayText(const char* text);
  int32_t SetDDisplaySegments(const uint8_t* segments);
  int32_t SetDDisplayText(const char* text);
  int32_t SetEDisplaySegments(const uint8_t* segments);
  int32_t SetEDisplayText(const char* text);

  // As last read back from the panel; SetBrightness does not change it.
  std::atomic<uint8_t> brightnessVal{0};

 protected:
  enum DisplayName { kA, kB, kC, kD, kE, kF };

  cPelmAutopilotPanel(const char* path, const RecordParams& params, uint8_t brightnessReport,
                      std::span<const SegmentDisplay> displays);

  int32_t SetDisplaySegments(DisplayName name, const uint8_t* segments);
  int32_t SetDisplayText(DisplayName name, const char* text);

 private:
  const uint8_t brightnessReport_;
  const std::span<const SegmentDisplay> displays_;
};

class cPelmAutopilot final : public cPelmAutopilotPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_AUTOPILOT;
  static constexpr int kDialCount = 5;
  static constexpr int kSwitchByteCount = 2;

  // Display reports, A to E: the segment bytes, position 0 in byte 1.
  static constexpr std::array<SegmentDisplay, 5> kDisplays = {{{3, 3}, {5, 3}, {7, 3}, {9, 6}, {11, 6}}};
  static constexpr uint8_t kBrightnessReport = 12;  // sent and read
  static constexpr uint8_t kIndicatorReport = 13;   // byte 1: lamp bits, sent and read
  // Read once at open, laid out as the input report, but with the dials as
  // unsigned bytes.
  static constexpr uint8_t kControlStateReport = 14;
  static constexpr uint32_t kControlStateReportLength = 8;

  // Input report: bytes 1 to 5 the dials (signed counts), bytes 6 and 7 the
  // switch bytes.
  static constexpr uint32_t kFirstDialByte = 1;
  static constexpr uint32_t kFirstSwitchByte = 6;
  static constexpr uint32_t kInputReportLength = 8;

  explicit cPelmAutopilot(const char* path);

  int32_t GetControlVals(int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4, int16_t* dial5,
                         uint8_t* switches1, uint8_t* switches2);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t SetIndicators(uint32_t indicators);

  std::atomic<int16_t> dialVals[kDialCount] = {0, 0, 0, 0, 0};
  std::atomic<uint8_t> switchVals[kSwitchByteCount] = {0, 0};
  // As last read back from the panel; SetIndicators does not change it.
  std::atomic<uint8_t> indicatorVals{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void OnInputReport(const uint8_t* report) override;
};

class cPelmAutopilot2 final : public cPelmAutopilotPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_AUTOPILOT2;
  static constexpr int kDialCount = 6;

  // Display reports, A to F: the segment bytes, position 0 in byte 1.
  static constexpr std::array<SegmentDisplay, 6> kDisplays = {{{3, 3}, {5, 5}, {7, 5}, {9, 5}, {11, 5}, {13, 3}}};
  static constexpr uint8_t kBrightnessReport = 14;  // sent and read
  // Bytes 1 to 4: the indicator word, most significant byte first. Never read.
  static constexpr uint8_t kIndicatorReport = 15;
  static constexpr uint32_t kIndicatorReportLength = 5;
  // Read once at open: six signed half-byte dials in bytes 1 to 3 (in another
  // order than the input report's), the switch word in bytes 4 to 7.
  static constexpr uint8_t kControlStateReport = 16;
  static constexpr uint32_t kControlStateReportLength = 8;

  // Input report: six signed half-byte dials in bytes 1 to 3, the switch word in
  // bytes 4 to 7, most significant byte first.
  static constexpr uint32_t kFirstSwitchByte = 4;
  static constexpr uint32_t kInputReportLength = 8;

  explicit cPelmAutopilot2(const char* path);

  int32_t GetControlVals(int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4, int16_t* dial5,
                         int16_t* dial6, uint32_t* switches);
  // Gives the indicator word of the last queued SetIndicators; the panel is not asked.
  int32_t GetIndicators(uint32_t* indicators);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetFDisplaySegments(const uint8_t* segments);
  int32_t SetFDisplayText(const char* text);

  std::atomic<int16_t> dialVals[kDialCount] = {0, 0, 0, 0, 0, 0};
  std::atomic<uint32_t> switchVals{0};
  std::atomic<uint32_t> indicatorVals{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
