#pragma once
// The gear panel: one signed control value and a control byte in, an indicator
// byte and a backlight level out.

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives for each input report.
// What the input callback receives (core/pelm_records.h).
using GearInputRecord = PelmGearInputRecord;
static_assert(std::endian::native == std::endian::little, "input records carry little-endian values");
static_assert(sizeof(GearInputRecord) == 3);
static_assert(offsetof(GearInputRecord, controlValue) == 0);
static_assert(offsetof(GearInputRecord, controlByte) == 2);

class cPelmGear final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_GEAR;
  // Feature reports, two bytes each; byte 1 carries the value.
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  static constexpr uint8_t kControlStateReport = 4;  // read once at open
  static constexpr uint32_t kFeatureReportLength = 2;
  // The two lowest indicator bits are always sent set.
  static constexpr uint8_t kIndicatorsAlwaysOn = 0x03;
  // Input report: byte 1 the control value (signed), byte 2 the control byte.
  static constexpr uint32_t kControlValueByte = 1;
  static constexpr uint32_t kControlByte = 2;
  static constexpr uint32_t kInputReportLength = 3;

  explicit cPelmGear(const char* path);

  int32_t GetControlVals(int16_t* value, uint8_t* control);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t GetBrightness(uint16_t* level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetBrightness(uint32_t level);

  // The latest report's control value, until GetControlVals hands it out.
  std::atomic<int16_t> controlVals{0};
  std::atomic<uint8_t> controlByte{0};
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
