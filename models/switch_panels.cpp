#include "models/switch_panels.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"

namespace pelm {
namespace {

RecordParams SwitchPanelParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::Direct;
  params.channel.minInputReportLength = cPelmSwitchPanel::kInputReportLength;
  params.openReportId = cPelmSwitchPanel::kSwitchStateReport;
  params.openReportLength = cPelmSwitchPanel::kFeatureReportLength;
  return params;
}

}  // namespace

cPelmSwitchPanel::cPelmSwitchPanel(const char* path, int32_t typeCode)
    : cPelmDeviceRecord(path, SwitchPanelParams()), typeCode_(typeCode) {}

void cPelmSwitchPanel::OnOpenTimeReport(const uint8_t* report) { switchVals = report[1]; }

void cPelmSwitchPanel::ApplyStateDefaults() { indicatorVals = 0; }

void cPelmSwitchPanel::OnInputReport(const uint8_t* report) {
  PelmSwitchesInputRecord record{report[1]};
  switchVals = record.switchVals;
  DispatchInput(typeCode_, CallbackIndex(), &record);
}

int32_t cPelmSwitchPanel::GetSwitchVals(uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return HandOverResult(switches, switchVals.load()) ? PELM_SUCCESS : PELM_ERR_PARAM;
}

int32_t cPelmSwitchPanel::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmSwitchPanel::GetBrightness(uint16_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

int32_t cPelmSwitchPanel::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators));
}

int32_t cPelmSwitchPanel::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

}  // namespace pelm
