#pragma once
// The knob panel: four knobs that report signed movement counts, a byte of
// switches, a byte of indicator lamps and a backlight level.

#include <atomic>
#include <bit>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives for each input report: the counts as
// little-endian 16-bit integers, then the switch byte.
// What the input callback receives (core/pelm_records.h).
using KnobsInputRecord = PelmKnobsInputRecord;
static_assert(std::endian::native == std::endian::little, "input records carry little-endian counts");
static_assert(sizeof(KnobsInputRecord) == 9);
static_assert(offsetof(KnobsInputRecord, knobCounts) == 0);
static_assert(offsetof(KnobsInputRecord, switchByte) == 8);

class cPelmKnobs final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_KNOBS;
  static constexpr int kKnobCount = 4;
  // Feature reports, two bytes each; byte 1 carries the value.
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  static constexpr uint8_t kSwitchStateReport = 4;  // read once at open
  static constexpr uint32_t kFeatureReportLength = 2;
  // Input report: bytes 1 to 4 are the knob counts (signed), byte 5 the switches.
  static constexpr uint32_t kFirstKnobByte = 1;
  static constexpr uint32_t kSwitchByte = 5;
  static constexpr uint32_t kInputReportLength = 6;

  explicit cPelmKnobs(const char* path);

  int32_t GetControlVals(int16_t* knob1, int16_t* knob2, int16_t* knob3, int16_t* knob4, uint8_t* switches);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t GetBrightness(uint16_t* level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetBrightness(uint32_t level);

  // The count of each knob's latest report, until GetControlVals hands it out.
  std::atomic<int16_t> controlVals[kKnobCount] = {0, 0, 0, 0};
  std::atomic<uint8_t> controlByte{0};
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;
};

}  // namespace pelm
