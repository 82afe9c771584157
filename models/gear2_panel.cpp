#include "models/gear2_panel.h"

#include <algorithm>

#include "core/callbacks.h"
#include "models/report_conventions.h"
#include "platform/platform.h"

namespace pelm {

cPelmGear2::cPelmGear2(const char* path) : cPelmHidDevice(path, kTypeCode, kControlStateLength) {}

Gear2InputRecord cPelmGear2::Decode(const uint8_t* report) {
  Gear2InputRecord record;
  for (int i = 0; i < kControlValueCount; ++i) {
    // Each report replaces the values; nothing is added up.
    record.controlValues[i] = static_cast<int8_t>(report[kFirstControlValueByte + i]);
    controlVals[i] = record.controlValues[i];
  }
  record.controlByte = report[kControlByte];
  controlByte = record.controlByte;
  return record;
}

platform::HidHandle cPelmGear2::Open() {
  platform::HidHandle device = cPelmHidDevice::Open();
  if (!device) return device;
  // The control state comes in a report of the device's feature report length;
  // a device whose feature report is shorter leaves the missing bytes 0.
  const uint32_t readLength = Caps().featureReportByteLength;
  ReportBytes report = AllocateReport(std::max(readLength, kControlStateLength));
  if (report) {
    report[0] = kControlStateReport;
    if (device->GetFeature(report.get(), readLength)) Decode(report.get());
  }
  return device;
}

uint32_t cPelmGear2::OnInputReport(const uint8_t* report, uint32_t) {
  Gear2InputRecord record = Decode(report);
  DispatchInput(kTypeCode, CallbackIndex(), &record);
  return 1;
}

int32_t cPelmGear2::GetControlVals(int16_t* value1, int16_t* value2, int16_t* value3, uint8_t* control) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  int16_t* outputs[kControlValueCount] = {value1, value2, value3};
  for (int i = 0; i < kControlValueCount; ++i) {
    // Each value is handed out once, whether or not the caller could take it.
    const int16_t taken = controlVals[i].exchange(0);
    platform::WriteToHostMemory(outputs[i], &taken, sizeof taken);
  }
  const uint8_t controlBits = controlByte;
  platform::WriteToHostMemory(control, &controlBits, sizeof controlBits);
  return PELM_SUCCESS;
}

int32_t cPelmGear2::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmGear2::GetBrightness(uint16_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

int32_t cPelmGear2::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators));
}

int32_t cPelmGear2::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

}  // namespace pelm
