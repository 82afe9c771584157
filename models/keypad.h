#pragma once
// The keyboard unit: one key code per input report, indicator lamps and a
// backlight. Its lamps and backlight are set with HID output reports; their
// state is read back with feature reports.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives for each input report.
// What the input callback receives (core/pelm_records.h).
using KeypadInputRecord = PelmKeypadInputRecord;
static_assert(sizeof(KeypadInputRecord) == 4);
static_assert(offsetof(KeypadInputRecord, keyCode) == 0);
static_assert(offsetof(KeypadInputRecord, unused) == 1);

class cPelmKeypad final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_KEYPAD;
  static constexpr int kKeyCodeCount = 4;
  // Output reports (sent) and feature reports (read back), two bytes each;
  // byte 1 carries the value.
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  // Feature report read once at open: bytes 1 to 3 are key codes 1 to 3. The
  // fourth key code has no byte in it and stays 0.
  static constexpr uint8_t kKeyCodeReport = 4;
  static constexpr uint32_t kKeyCodeReportLength = 4;
  static constexpr int kKeyCodesInReport = 3;
  // A key code of 0 means no key.
  static constexpr uint8_t kNoKey = 0;
  // Input report: byte 1 is the key code; the callback gets bytes 1 to 4 with
  // bytes 2 to 4 cleared.
  static constexpr uint32_t kKeyCodeByte = 1;
  static constexpr uint32_t kInputReportLength = 5;

  explicit cPelmKeypad(const char* path);

  // `keys` takes four bytes: the non-zero key codes first, then zeros; `count`
  // says how many are valid.
  int32_t GetKeycodes(uint8_t* keys, uint32_t* count);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t GetBrightness(uint32_t* level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetBrightness(uint32_t level);

  // Set once at open; input reports do not change them.
  std::atomic<uint8_t> keyCodes[kKeyCodeCount] = {kNoKey, kNoKey, kNoKey, kNoKey};
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
