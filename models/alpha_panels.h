#pragma once
// The two alphanumeric panels: a four-character sixteen-segment display, a
// seven-segment numeric display, two rotary dials and a backlight. The second
// model adds a byte of switches and a brightness read-back, and its numeric
// display has six digits instead of five.

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives (core/pelm_records.h).
using AlphaInputRecord = PelmAlphaInputRecord;
using Alpha2InputRecord = PelmAlpha2InputRecord;
static_assert(sizeof(AlphaInputRecord) == 4);
static_assert(offsetof(AlphaInputRecord, dialVals) == 0 && sizeof(AlphaInputRecord::dialVals) == 4);
static_assert(sizeof(Alpha2InputRecord) == 5);
static_assert(offsetof(Alpha2InputRecord, dialVals) == 0 && sizeof(Alpha2InputRecord::dialVals) == 4);
static_assert(offsetof(Alpha2InputRecord, switchVals) == 4);

class cPelmAlphaPanel : public cPelmDeviceRecord {
 public:
  static constexpr int kDialCount = 2;
  // Input report: bytes 1 and 2 are the dials (signed counts).
  static constexpr uint32_t kFirstDialByte = 1;

  // Feature report of the alphanumeric display: four sixteen-segment glyphs,
  // each low byte first, position 0 in bytes 1 and 2.
  static constexpr uint8_t kAlphaReport = 3;
  static constexpr uint16_t kAlphaPositions = 4;
  static constexpr uint32_t kAlphaReportLength = 1 + 2 * kAlphaPositions;
  // Feature report of the numeric display: one segment byte per position in
  // reverse order, position 0 in the last byte.
  static constexpr uint8_t kNumericReport = 5;
  static constexpr uint8_t kBrightnessReport = 6;  // byte 1: level

  int32_t SetAlpha(const char* text);
  int32_t SetAlphaSegments(const uint16_t* glyphs);
  int32_t SetNumeric(const char* text);
  int32_t SetNumericSegments(const uint8_t* segments);
  int32_t SetBrightness(uint32_t level);

  std::atomic<int16_t> dialVals[kDialCount] = {0, 0};

 protected:
  cPelmAlphaPanel(const char* path, const RecordParams& params, uint16_t numericPositions);

  void ApplyStateDefaults() override;
  // Stores the dials of an input report and gives them for the callback record.
  std::array<int16_t, kDialCount> StoreDials(const uint8_t* report);
  void HandOutDials(int16_t* dial1, int16_t* dial2);

 private:
  const uint16_t numericPositions_;
};

class cPelmAlpha final : public cPelmAlphaPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_ALPHA;
  static constexpr uint16_t kNumericPositions = 5;
  static constexpr uint32_t kInputReportLength = 3;

  explicit cPelmAlpha(const char* path);

  int32_t GetDialVals(int16_t* dial1, int16_t* dial2);

 private:
  void OnInputReport(const uint8_t* report) override;
};

class cPelmAlpha2 final : public cPelmAlphaPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_ALPHA2;
  static constexpr uint16_t kNumericPositions = 6;
  // Input report: byte 3 holds the switches.
  static constexpr uint32_t kSwitchByte = 3;
  static constexpr uint32_t kInputReportLength = 4;

  explicit cPelmAlpha2(const char* path);

  int32_t GetControlVals(int16_t* dial1, int16_t* dial2, uint8_t* switches);
  int32_t GetBrightness(uint16_t* level);

  std::atomic<uint8_t> switchVals{0};
  // As last read back from the panel; SetBrightness does not change it.
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
