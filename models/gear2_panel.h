#pragma once
// The second gear panel: three signed control values and a control byte in, an
// indicator byte and a backlight level out.

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives for each input report.
// What the input callback receives (core/pelm_records.h).
using Gear2InputRecord = PelmGear2InputRecord;
static_assert(std::endian::native == std::endian::little, "input records carry little-endian values");
static_assert(sizeof(Gear2InputRecord) == 7);
static_assert(offsetof(Gear2InputRecord, controlValues) == 0);
static_assert(offsetof(Gear2InputRecord, controlByte) == 6);

class cPelmGear2 final : public cPelmHidDevice {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_GEAR2;
  static constexpr int kControlValueCount = 3;
  // Feature reports, two bytes each; byte 1 carries the value.
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  // Feature report read once at open, as long as the device's feature report;
  // bytes 1 to 4 as in the input report.
  static constexpr uint8_t kControlStateReport = 4;
  // Input report: bytes 1 to 3 the control values (signed), byte 4 the control byte.
  static constexpr uint32_t kFirstControlValueByte = 1;
  static constexpr uint32_t kControlByte = 4;
  static constexpr uint32_t kControlStateLength = 5;

  explicit cPelmGear2(const char* path);

  platform::HidHandle Open() override;
  uint32_t OnInputReport(const uint8_t* report, uint32_t bytesRead) override;

  int32_t GetControlVals(int16_t* value1, int16_t* value2, int16_t* value3, uint8_t* control);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t GetBrightness(uint16_t* level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetBrightness(uint32_t level);

  // The latest report's values, until GetControlVals hands them out.
  std::atomic<int16_t> controlVals[kControlValueCount] = {0, 0, 0};
  std::atomic<uint8_t> controlByte{0};
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 private:
  // Stores the control values and byte of a report laid out as the input report
  // and gives them as the input callback record.
  Gear2InputRecord Decode(const uint8_t* report);
};

}  // namespace pelm
