#include "models/gear_panel.h"

#include "core/callbacks.h"
#include "models/report_conventions.h"
#include "platform/platform.h"

namespace pelm {
namespace {

RecordParams GearParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::Retrying;
  params.channel.minInputReportLength = cPelmGear::kInputReportLength;
  params.openReportId = cPelmGear::kControlStateReport;
  params.openReportLength = cPelmGear::kFeatureReportLength;
  return params;
}

}  // namespace

cPelmGear::cPelmGear(const char* path) : cPelmDeviceRecord(path, GearParams()) {}

void cPelmGear::OnOpenTimeReport(const uint8_t* report) {
  controlVals = 0;
  controlByte = report[1];
}

void cPelmGear::ApplyStateDefaults() { indicatorVals = 0; }

void cPelmGear::OnInputReport(const uint8_t* report) {
  GearInputRecord record;
  record.controlValue = static_cast<int8_t>(report[kControlValueByte]);
  record.controlByte = report[kControlByte];
  controlVals = record.controlValue;
  controlByte = record.controlByte;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmGear::GetControlVals(int16_t* value, uint8_t* control) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  // The value is handed out once, whether or not the caller could take it.
  const int16_t taken = controlVals.exchange(0);
  platform::WriteToHostMemory(value, &taken, sizeof taken);
  const uint8_t controlBits = controlByte;
  platform::WriteToHostMemory(control, &controlBits, sizeof controlBits);
  return PELM_SUCCESS;
}

int32_t cPelmGear::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmGear::GetBrightness(uint16_t* level) { return ReadFeatureInto(kBrightnessReport, brightnessVal, level); }

int32_t cPelmGear::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators) | kIndicatorsAlwaysOn);
}

int32_t cPelmGear::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

}  // namespace pelm
