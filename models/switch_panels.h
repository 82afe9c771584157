#pragma once
// The button panel and the toggle panel: a byte of switch bits in, a byte of
// indicator lamps and a backlight level out. The two differ only in name, type
// code and product ID.

#include <atomic>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

class cPelmSwitchPanel : public cPelmDeviceRecord {
 public:
  // Feature reports, two bytes each; byte 1 carries the value.
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  static constexpr uint8_t kSwitchStateReport = 4;  // read once at open
  static constexpr uint32_t kFeatureReportLength = 2;
  // Input report: byte 1 is the switch bit mask.
  static constexpr uint32_t kInputReportLength = 2;

  int32_t GetSwitchVals(uint8_t* switches);
  int32_t GetIndicators(uint8_t* indicators);
  int32_t GetBrightness(uint16_t* level);
  int32_t SetIndicators(uint32_t indicators);
  int32_t SetBrightness(uint32_t level);

  std::atomic<uint8_t> switchVals{0};
  std::atomic<uint8_t> indicatorVals{0};
  std::atomic<uint8_t> brightnessVal{0};

 protected:
  cPelmSwitchPanel(const char* path, int32_t typeCode);

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void ApplyStateDefaults() override;
  void OnInputReport(const uint8_t* report) override;

  const int32_t typeCode_;
};

class cPelmButtons final : public cPelmSwitchPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_BUTTONS;
  explicit cPelmButtons(const char* path) : cPelmSwitchPanel(path, kTypeCode) {}
};

class cPelmToggles final : public cPelmSwitchPanel {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_TOGGLES;
  explicit cPelmToggles(const char* path) : cPelmSwitchPanel(path, kTypeCode) {}
};

}  // namespace pelm
