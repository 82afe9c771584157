#include "models/knob_panel.h"

#include "core/callbacks.h"
#include "models/report_conventions.h"
#include "platform/platform.h"

namespace pelm {
namespace {

RecordParams KnobsParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::Direct;
  params.channel.minInputReportLength = cPelmKnobs::kInputReportLength;
  params.openReportId = cPelmKnobs::kSwitchStateReport;
  params.openReportLength = cPelmKnobs::kFeatureReportLength;
  return params;
}

}  // namespace

cPelmKnobs::cPelmKnobs(const char* path) : cPelmDeviceRecord(path, KnobsParams()) {}

void cPelmKnobs::OnOpenTimeReport(const uint8_t* report) { controlByte = report[1]; }

void cPelmKnobs::ApplyStateDefaults() { indicatorVals = 0; }

void cPelmKnobs::OnInputReport(const uint8_t* report) {
  KnobsInputRecord record;
  for (int knob = 0; knob < kKnobCount; ++knob) {
    // Each report replaces the count: the device sends movement since its last report.
    record.knobCounts[knob] = static_cast<int8_t>(report[kFirstKnobByte + knob]);
    controlVals[knob] = record.knobCounts[knob];
  }
  record.switchByte = report[kSwitchByte];
  controlByte = record.switchByte;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmKnobs::GetControlVals(int16_t* knob1, int16_t* knob2, int16_t* knob3, int16_t* knob4,
                                   uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  int16_t* outputs[kKnobCount] = {knob1, knob2, knob3, knob4};
  for (int knob = 0; knob < kKnobCount; ++knob) {
    // A count that cannot be handed out stays for the next call.
    if (outputs[knob] == nullptr) continue;
    const int16_t count = controlVals[knob].exchange(0);
    if (!platform::WriteToHostMemory(outputs[knob], &count, sizeof count)) {
      // Put it back unless a newer report has replaced it meanwhile.
      int16_t cleared = 0;
      controlVals[knob].compare_exchange_strong(cleared, count);
    }
  }
  const uint8_t switchByte = controlByte;
  platform::WriteToHostMemory(switches, &switchByte, sizeof switchByte);
  return PELM_SUCCESS;
}

int32_t cPelmKnobs::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmKnobs::GetBrightness(uint16_t* level) { return ReadFeatureInto(kBrightnessReport, brightnessVal, level); }

int32_t cPelmKnobs::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  // The lamps are read back first, which refreshes indicatorVals. A failed read
  // does not hold the new lamps back, but the caller hears of it.
  uint8_t previous = 0;
  const int32_t readBack = ReadFeatureInto(kIndicatorReport, indicatorVals, &previous);
  const int32_t queued = BuildAndQueue(kFeatureReportLength, ReportKind::Feature, [indicators](uint8_t* report) {
    report[0] = kIndicatorReport;
    report[1] = static_cast<uint8_t>(indicators);
  });
  return queued != PELM_SUCCESS ? queued : readBack;
}

int32_t cPelmKnobs::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

}  // namespace pelm
