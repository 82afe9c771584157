#include "models/keypad.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"

namespace pelm {
namespace {

RecordParams KeypadParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::OutputReport;
  params.channel.minInputReportLength = cPelmKeypad::kInputReportLength;
  params.openReportId = cPelmKeypad::kKeyCodeReport;
  params.openReportLength = cPelmKeypad::kKeyCodeReportLength;
  params.readsSerialNumber = true;
  return params;
}

}  // namespace

cPelmKeypad::cPelmKeypad(const char* path) : cPelmDeviceRecord(path, KeypadParams()) {}

void cPelmKeypad::OnOpenTimeReport(const uint8_t* report) {
  for (int key = 0; key < kKeyCodesInReport; ++key) keyCodes[key] = report[1 + key];
  keyCodes[kKeyCodeCount - 1] = kNoKey;
}

void cPelmKeypad::OnInputReport(const uint8_t* report) {
  // No key state is kept: a key reaches the host through the callback only.
  KeypadInputRecord record{report[kKeyCodeByte], {0, 0, 0}};
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmKeypad::GetKeycodes(uint8_t* keys, uint32_t* count) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (!HostCanWrite(keys, kKeyCodeCount) || !HostCanWrite(count, sizeof *count)) return PELM_ERR_PARAM;
  uint32_t found = 0;
  for (const std::atomic<uint8_t>& code : keyCodes) {
    const uint8_t key = code;
    if (key != kNoKey) keys[found++] = key;
  }
  for (uint32_t position = found; position < kKeyCodeCount; ++position) keys[position] = kNoKey;
  *count = found;
  return PELM_SUCCESS;
}

int32_t cPelmKeypad::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmKeypad::GetBrightness(uint32_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

int32_t cPelmKeypad::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators), ReportKind::Output);
}

int32_t cPelmKeypad::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level, ReportKind::Output);
}

}  // namespace pelm
