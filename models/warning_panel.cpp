#include "models/warning_panel.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "platform/platform.h"

namespace pelm {

cPelmWarning::cPelmWarning(const char* path) : cPelmHidDevice(path, kTypeCode, kInputReportLength) {}

int cPelmWarning::IndicatorSlot(uint32_t indicator) {
  const uint8_t number = static_cast<uint8_t>(indicator);
  if (number < 1 || number > kIndicatorCount) return -1;
  return number - 1;
}

platform::HidHandle cPelmWarning::Open() {
  platform::HidHandle device = cPelmHidDevice::Open();
  if (!device) return device;
  ReportBytes report = AllocateReport(kControlStateReportLength);
  if (report) {
    report[0] = kControlStateReport;
    if (device->GetFeature(report.get(), kControlStateReportLength)) controlByte = report[1];
  }
  // Bring the panel in line with the state recorded here: full brightness,
  // every indicator dark. A panel that arrives while the host runs is not yet
  // connected here and is sent nothing.
  SetBrightness(kFullBrightness);
  for (int slot = 0; slot < kIndicatorCount && IsConnected(); ++slot) {
    indColorValues[slot] = 0;
    SetIndColor(slot + 1, 0, 0, 0);
  }
  return device;
}

uint32_t cPelmWarning::OnInputReport(const uint8_t* report, uint32_t) {
  PelmWarningInputRecord record{report[1]};
  controlByte = record.controlByte;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
  return 1;
}

int32_t cPelmWarning::GetControlVals(uint8_t* control) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const uint8_t controlBits = controlByte;
  platform::WriteToHostMemory(control, &controlBits, sizeof controlBits);
  return PELM_SUCCESS;
}

int32_t cPelmWarning::GetBrightness(int32_t* level) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return HandOverResult(level, static_cast<int32_t>(brightness.load())) ? PELM_SUCCESS : PELM_ERR_PARAM;
}

int32_t cPelmWarning::SetBrightness(uint32_t level) {
  if (!IsConnected()) return PELM_SUCCESS;
  brightness = static_cast<int16_t>(level);
  // No report carries the brightness: every indicator is sent again in its
  // colour at the new level.
  for (int slot = 0; slot < kIndicatorCount && IsConnected(); ++slot) SendColorIndex(slot);
  return PELM_SUCCESS;
}

int32_t cPelmWarning::GetIndColor(uint32_t indicator, uint8_t* component1, uint8_t* component2,
                                  uint8_t* component3) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const int slot = IndicatorSlot(indicator);
  if (slot < 0) return PELM_ERR_PARAM;
  uint8_t* outputs[kComponentCount] = {component1, component2, component3};
  for (int i = 0; i < kComponentCount; ++i) {
    const uint8_t component = indColors[slot][i];
    platform::WriteToHostMemory(outputs[i], &component, sizeof component);
  }
  return PELM_SUCCESS;
}

int32_t cPelmWarning::SetIndColor(uint32_t indicator, uint32_t component1, uint32_t component2,
                                  uint32_t component3) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const int slot = IndicatorSlot(indicator);
  if (slot < 0) return PELM_ERR_PARAM;
  const uint8_t components[kComponentCount] = {static_cast<uint8_t>(component1), static_cast<uint8_t>(component2),
                                               static_cast<uint8_t>(component3)};
  const int32_t status =
      BuildAndQueue(kIndicatorColorReportLength, ReportKind::Output, [slot, &components](uint8_t* report) {
        report[0] = kIndicatorColorReport;
        report[1] = static_cast<uint8_t>(slot + 1);
        for (int i = 0; i < kComponentCount; ++i) report[2 + i] = components[i];
      });
  // The stored components are those the device was sent.
  if (status != PELM_SUCCESS) return status;
  for (int i = 0; i < kComponentCount; ++i) indColors[slot][i] = components[i];
  return PELM_SUCCESS;
}

int32_t cPelmWarning::GetIndColorValue(uint32_t indicator, uint8_t* colorIndex) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const int slot = IndicatorSlot(indicator);
  if (slot < 0) return PELM_ERR_PARAM;
  const uint8_t index = indColorValues[slot];
  platform::WriteToHostMemory(colorIndex, &index, sizeof index);
  return PELM_SUCCESS;
}

int32_t cPelmWarning::SetIndColorValue(uint32_t indicator, uint32_t colorIndex) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const int slot = IndicatorSlot(indicator);
  if (slot < 0) return PELM_ERR_PARAM;
  const uint8_t index = static_cast<uint8_t>(colorIndex);
  // An index with no colour is ignored rather than refused.
  if (index >= kColorIndexCount) return PELM_SUCCESS;
  indColorValues[slot] = index;
  SendColorIndex(slot);
  return PELM_SUCCESS;
}

void cPelmWarning::SendColorIndex(int slot) {
  const ColorComponents components = ComponentsOf(indColorValues[slot], brightness);
  SetIndColor(slot + 1, components[0], components[1], components[2]);
}

}  // namespace pelm
