#pragma once
// The I/O board: seven bytes of digital inputs, four bytes of digital outputs.
// It has no backlight and cannot report its outputs back.

#include <atomic>
#include <cstdint>

#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"

namespace pelm {

class cPelmIoBoard final : public cPelmHidDevice {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_IOBOARD;
  static constexpr int kInputByteCount = 7;
  static constexpr int kOutputByteCount = 4;
  // Feature report read once at open: bytes 1 to 7 are the inputs.
  static constexpr uint8_t kInputStateReport = 4;
  static constexpr uint32_t kInputStateReportLength = 1 + kInputByteCount;
  // Input report: bytes 1 to 7 are the inputs.
  static constexpr uint32_t kInputReportLength = 1 + kInputByteCount;
  // Output report, as long as the device's output report: bytes 1 to 4 are the
  // outputs, the rest zeros.
  static constexpr uint8_t kOutputReport = 2;
  static constexpr uint32_t kMinOutputReportLength = 1 + kOutputByteCount;

  explicit cPelmIoBoard(const char* path);

  platform::HidHandle Open() override;
  uint32_t OnInputReport(const uint8_t* report, uint32_t bytesRead) override;

  int32_t GetSwitchVals(uint8_t* input1, uint8_t* input2, uint8_t* input3, uint8_t* input4, uint8_t* input5,
                        uint8_t* input6, uint8_t* input7);
  int32_t SetIndicators(uint32_t output1, uint32_t output2, uint32_t output3, uint32_t output4);
  // The board has no such functions; the arguments are ignored.
  int32_t GetIndicators(uint32_t, uint32_t, uint32_t, uint32_t);
  int32_t GetBrightness(uint32_t);
  int32_t SetBrightness(uint32_t);

  std::atomic<uint8_t> switchVals[kInputByteCount] = {0, 0, 0, 0, 0, 0, 0};
};

}  // namespace pelm
