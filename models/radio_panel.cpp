#include "models/radio_panel.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"

namespace pelm {
namespace {

// A point that follows no character leaves its own position blank on this panel.
constexpr bool kLonePointLit = false;

RecordParams RadioParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::Counted;
  params.channel.minInputReportLength = cPelmRadio::kInputReportLength;
  params.openReportId = cPelmRadio::kControlStateReport;
  params.openReportLength = cPelmRadio::kControlStateReportLength;
  params.readsSerialNumber = true;
  return params;
}

}  // namespace

cPelmRadio::cPelmRadio(const char* path) : cPelmDeviceRecord(path, RadioParams()) {}

void cPelmRadio::OnOpenTimeReport(const uint8_t* report) { switchVals = report[kSwitchByte]; }

// Of the open-time report only the switches are kept: the dials start at zero
// whatever the panel answered.
void cPelmRadio::ApplyStateDefaults() {
  for (auto& dial : dialVals) dial = 0;
}

void cPelmRadio::OnInputReport(const uint8_t* report) {
  RadioInputRecord record{{SignedByte(report[kFirstDialByte]), SignedByte(report[kFirstDialByte + 1])},
                          report[kSwitchByte]};
  dialVals[0] = record.dialVals[0];
  dialVals[1] = record.dialVals[1];
  switchVals = record.switchVals;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmRadio::GetControlVals(int16_t* dial1, int16_t* dial2, uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  HandOutDial(dialVals[0], dial1);
  HandOutDial(dialVals[1], dial2);
  HandOut(switchVals, switches);
  return PELM_SUCCESS;
}

int32_t cPelmRadio::GetBrightness(uint16_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

int32_t cPelmRadio::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmRadio::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

int32_t cPelmRadio::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators));
}

int32_t cPelmRadio::SetLDisplaySegments(const uint8_t* segments) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplaySegments(*this, kLeftDisplay, segments);
}

int32_t cPelmRadio::SetLDisplayText(const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplayText(*this, kLeftDisplay, text, kLonePointLit);
}

int32_t cPelmRadio::SetRDisplaySegments(const uint8_t* segments) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplaySegments(*this, kRightDisplay, segments);
}

int32_t cPelmRadio::SetRDisplayText(const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplayText(*this, kRightDisplay, text, kLonePointLit);
}

}  // namespace pelm
