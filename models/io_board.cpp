#include "models/io_board.h"

#include <algorithm>

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "platform/platform.h"

namespace pelm {

cPelmIoBoard::cPelmIoBoard(const char* path) : cPelmHidDevice(path, kTypeCode, kInputReportLength) {}

platform::HidHandle cPelmIoBoard::Open() {
  platform::HidHandle device = cPelmHidDevice::Open();
  if (!device) return device;
  ReportBytes report = AllocateReport(kInputStateReportLength);
  if (report) {
    report[0] = kInputStateReport;
    if (device->GetFeature(report.get(), kInputStateReportLength)) {
      for (int i = 0; i < kInputByteCount; ++i) switchVals[i] = report[1 + i];
    }
  }
  // Every output off. A board that arrives while the host runs is not yet
  // connected here, so it keeps whatever outputs it holds.
  SetIndicators(0, 0, 0, 0);
  return device;
}

uint32_t cPelmIoBoard::OnInputReport(const uint8_t* report, uint32_t) {
  static_assert(sizeof(PelmIoBoardInputRecord::inputs) == kInputByteCount);
  PelmIoBoardInputRecord record;
  for (int i = 0; i < kInputByteCount; ++i) {
    record.inputs[i] = report[1 + i];
    switchVals[i] = record.inputs[i];
  }
  DispatchInput(kTypeCode, CallbackIndex(), &record);
  return 1;
}

int32_t cPelmIoBoard::GetSwitchVals(uint8_t* input1, uint8_t* input2, uint8_t* input3, uint8_t* input4,
                                    uint8_t* input5, uint8_t* input6, uint8_t* input7) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  // Only the first pointer is probed: a host that cannot take the first input
  // takes none. Past it every pointer must be given; nothing is written when
  // one is missing.
  if (input1 == nullptr) return PELM_SUCCESS;
  uint8_t* const outputs[kInputByteCount] = {input1, input2, input3, input4, input5, input6, input7};
  if (std::any_of(outputs + 1, outputs + kInputByteCount, [](uint8_t* out) { return !HostCanWrite(out, 1); })) {
    return PELM_ERR_PARAM;
  }
  const uint8_t first = switchVals[0];
  if (!platform::WriteToHostMemory(input1, &first, sizeof first)) return PELM_SUCCESS;
  for (int i = 1; i < kInputByteCount; ++i) *outputs[i] = switchVals[i];
  return PELM_SUCCESS;
}

int32_t cPelmIoBoard::SetIndicators(uint32_t output1, uint32_t output2, uint32_t output3, uint32_t output4) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const uint32_t length = Caps().outputReportByteLength;
  if (length < kMinOutputReportLength) return PELM_ERR_PARAM;
  const uint32_t values[kOutputByteCount] = {output1, output2, output3, output4};
  return BuildAndQueue(length, ReportKind::Output, [&values](uint8_t* report) {
    report[0] = kOutputReport;
    for (int i = 0; i < kOutputByteCount; ++i) report[1 + i] = static_cast<uint8_t>(values[i]);
  });
}

int32_t cPelmIoBoard::GetIndicators(uint32_t, uint32_t, uint32_t, uint32_t) { return PELM_ERR_UNSUPPORTED; }

int32_t cPelmIoBoard::GetBrightness(uint32_t) { return PELM_ERR_UNSUPPORTED; }

int32_t cPelmIoBoard::SetBrightness(uint32_t) { return PELM_ERR_UNSUPPORTED; }

}  // namespace pelm
