#pragma once
// The warning panel: six colour indicators and a byte of switches. Each
// indicator is set by a colour index, which follows the panel's brightness, or
// by three components given directly.

#include <atomic>
#include <cstdint>

#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"
#include "models/warning_colors.h"

namespace pelm {

class cPelmWarning final : public cPelmHidDevice {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_WARNING;
  static constexpr int kIndicatorCount = 6;  // numbered 1 to 6
  static constexpr int kComponentCount = 3;
  // Feature report read once at open: byte 1 is the control byte.
  static constexpr uint8_t kControlStateReport = 4;
  static constexpr uint32_t kControlStateReportLength = 2;
  // Input report: byte 1 is the control byte.
  static constexpr uint32_t kInputReportLength = 2;
  // Indicator colour output report: 2, indicator number, components 1 to 3.
  static constexpr uint8_t kIndicatorColorReport = 2;
  static constexpr uint32_t kIndicatorColorReportLength = 2 + kComponentCount;

  explicit cPelmWarning(const char* path);

  platform::HidHandle Open() override;
  uint32_t OnInputReport(const uint8_t* report, uint32_t bytesRead) override;

  int32_t GetControlVals(uint8_t* control);
  int32_t GetBrightness(int32_t* level);
  int32_t SetBrightness(uint32_t level);
  int32_t GetIndColor(uint32_t indicator, uint8_t* component1, uint8_t* component2, uint8_t* component3);
  int32_t SetIndColor(uint32_t indicator, uint32_t component1, uint32_t component2, uint32_t component3);
  int32_t GetIndColorValue(uint32_t indicator, uint8_t* colorIndex);
  int32_t SetIndColorValue(uint32_t indicator, uint32_t colorIndex);

  std::atomic<uint8_t> controlByte{0};
  // Brightness 15 and every indicator dark until the host says otherwise, also
  // for a panel that arrives while the host runs, whose Open sends nothing.
  std::atomic<int16_t> brightness{kFullBrightness};
  // Per indicator, the components last queued to the device, in report order.
  std::atomic<uint8_t> indColors[kIndicatorCount][kComponentCount] = {};
  std::atomic<uint8_t> indColorValues[kIndicatorCount] = {};

 private:
  // The slot of an indicator number (its low byte, 1 to 6), or -1.
  static int IndicatorSlot(uint32_t indicator);
  // Sends an indicator's colour index at the current brightness; the result is
  // of no interest to the callers.
  void SendColorIndex(int slot);
};

}  // namespace pelm
