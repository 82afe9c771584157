#include "models/engine_start.h"

#include <array>

#include "core/callbacks.h"
#include "platform/platform.h"

namespace pelm {
namespace {

// Each selector is a two-bit field of the control byte (bits 2 and 3 are not
// used); a code maps to a position, or keeps the previous one.
constexpr uint8_t kKeepPosition = 0;
struct Selector {
  int shift;
  std::array<uint8_t, 4> positionOfCode;
};
constexpr std::array<Selector, cPelmEngineStart::kSelectorCount> kSelectors = {{
    {0, {1, 2, 3, 4}},
    {4, {2, 1, 3, kKeepPosition}},
    {6, {1, 3, 2, 4}},
}};
constexpr uint8_t kSelectorCodeMask = 0x03;

}  // namespace

cPelmEngineStart::cPelmEngineStart(const char* path) : cPelmHidDevice(path, kTypeCode, kInputReportLength) {}

void cPelmEngineStart::Decode(uint8_t controlByte) {
  for (int i = 0; i < kSelectorCount; ++i) {
    const uint8_t code = (controlByte >> kSelectors[i].shift) & kSelectorCodeMask;
    const uint8_t position = kSelectors[i].positionOfCode[code];
    if (position != kKeepPosition) controlVals[i] = position;
  }
}

platform::HidHandle cPelmEngineStart::Open() {
  platform::HidHandle device = cPelmHidDevice::Open();
  if (!device) return device;
  ReportBytes report = AllocateReport(kControlStateReportLength);
  if (report) {
    report[0] = kControlStateReport;
    if (device->GetFeature(report.get(), kControlStateReportLength)) Decode(report[1]);
  }
  return device;
}

uint32_t cPelmEngineStart::OnInputReport(const uint8_t* report, uint32_t) {
  Decode(report[1]);
  static_assert(sizeof(PelmEngineStartInputRecord::positions) == kSelectorCount);
  PelmEngineStartInputRecord record{{controlVals[0], controlVals[1], controlVals[2]}};
  DispatchInput(kTypeCode, CallbackIndex(), &record);
  return 1;
}

int32_t cPelmEngineStart::GetControlVals(uint8_t* selector1, uint8_t* selector2, uint8_t* selector3) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  uint8_t* outputs[kSelectorCount] = {selector1, selector2, selector3};
  for (int i = 0; i < kSelectorCount; ++i) {
    const uint8_t position = controlVals[i];
    platform::WriteToHostMemory(outputs[i], &position, sizeof position);
  }
  return PELM_SUCCESS;
}

}  // namespace pelm
