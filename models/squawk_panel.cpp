#include "models/squawk_panel.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"
#include "models/segment_encoding.h"

namespace pelm {
namespace {

RecordParams SquawkParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::Retrying;
  params.channel.minInputReportLength = cPelmSquawk::kInputReportLength;
  params.openReportId = cPelmSquawk::kControlStateReport;
  params.openReportLength = cPelmSquawk::kControlStateReportLength;
  return params;
}

}  // namespace

cPelmSquawk::cPelmSquawk(const char* path) : cPelmDeviceRecord(path, SquawkParams()) {}

// The panel is asked for its state at open, and the answer is taken in, but
// the state defaults below replace it: the host sees zero until the first
// input report.
void cPelmSquawk::OnOpenTimeReport(const uint8_t* report) {
  dialVals = report[kDialByte];
  switchVals = report[kSwitchByte];
}

void cPelmSquawk::ApplyStateDefaults() {
  dialVals = 0;
  switchVals = 0;
}

void cPelmSquawk::OnInputReport(const uint8_t* report) {
  SquawkInputRecord record{SignedByte(report[kDialByte]), report[kSwitchByte]};
  dialVals = record.dialVals;
  switchVals = record.switchVals;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmSquawk::GetControlVals(int16_t* dial, uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  HandOutDial(dialVals, dial);
  HandOut(switchVals, switches);
  return PELM_SUCCESS;
}

int32_t cPelmSquawk::GetBrightness(uint32_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

int32_t cPelmSquawk::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

int32_t cPelmSquawk::SetDigit(const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (text == nullptr) return PELM_ERR_PARAM;
  const uint8_t segments = CharToSegments(text);
  return QueueDisplaySegments(*this, kDigitDisplay, &segments);
}

int32_t cPelmSquawk::SetDigitSegments(const uint8_t* segments) {
  if (!IsConnected()) return PELM_SUCCESS;
  return QueueDisplaySegments(*this, kDigitDisplay, segments);
}

}  // namespace pelm
