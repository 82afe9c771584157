#pragma once
// The engine-start module: three selector switches packed into one control
// byte. It only reports; the library never sends it anything.

#include <atomic>
#include <cstdint>

#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"

namespace pelm {

class cPelmEngineStart final : public cPelmHidDevice {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_ENGINESTART;
  // Feature report read once at open: byte 1 is the control byte.
  static constexpr uint8_t kControlStateReport = 2;
  static constexpr uint32_t kControlStateReportLength = 2;
  // Input report: byte 1 is the control byte.
  static constexpr uint32_t kInputReportLength = 2;
  static constexpr int kSelectorCount = 3;

  explicit cPelmEngineStart(const char* path);

  platform::HidHandle Open() override;
  uint32_t OnInputReport(const uint8_t* report, uint32_t bytesRead) override;

  int32_t GetControlVals(uint8_t* selector1, uint8_t* selector2, uint8_t* selector3);

  // Positions of selectors 1 to 3, 1-based; selector 2 starts at 0 until a
  // report gives it a position.
  std::atomic<uint8_t> controlVals[kSelectorCount] = {0, 0, 0};

 private:
  void Decode(uint8_t controlByte);
};

}  // namespace pelm
