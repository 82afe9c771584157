#include "models/map_ctl.h"

#include "core/callbacks.h"
#include "platform/platform.h"

namespace pelm {
namespace {

constexpr uint8_t kLowButtonsMask = 0x7F;   // byte 5, buttons 0-6
constexpr uint8_t kHighButtonsMask = 0x3F;  // byte 7, buttons 8-13
constexpr int kHighButtonsShift = 8;
constexpr uint8_t kButton14Contact = 0x10;  // byte 6
constexpr int kButton14Shift = 10;
constexpr uint8_t kButton15Contact = 0x08;  // byte 6
constexpr int kButton15Shift = 12;
constexpr uint8_t kFirstSelectorMask = 0x03;   // byte 6 bits 0-1, kept in place
constexpr uint8_t kSecondSelectorMask = 0x70;  // byte 6 bits 5-7, kept in bits 4-6
constexpr int kSecondSelectorShift = 1;

RecordParams MapCtlParams() {
  RecordParams params;
  // Nothing is ever queued, but the panel keeps its writer like every model
  // that has one; it only waits.
  params.channel.writer = WriterVariant::Direct;
  params.channel.minInputReportLength = cPelmMapCtl::kInputReportLength;
  params.openReportId = cPelmMapCtl::kControlStateReport;
  params.openReportLength = cPelmMapCtl::kControlStateReportLength;
  params.readsSerialNumber = true;
  return params;
}

// Bytes 3 to 7 of an input report, the dials signed.
MapCtlInputRecord Decode(const uint8_t* report) {
  const uint8_t low = report[cPelmMapCtl::kLowButtonsByte];
  const uint8_t mixed = report[cPelmMapCtl::kSelectorByte];
  const uint8_t high = report[cPelmMapCtl::kHighButtonsByte];
  MapCtlInputRecord values;
  for (int dial = 0; dial < cPelmMapCtl::kDialCount; ++dial) {
    values.dialVals[dial] = static_cast<int8_t>(report[cPelmMapCtl::kFirstDialByte + dial]);
  }
  values.switchVals = static_cast<uint16_t>((low & kLowButtonsMask) | ((high & kHighButtonsMask) << kHighButtonsShift) |
                                            ((mixed & kButton14Contact) << kButton14Shift) |
                                            ((mixed & kButton15Contact) << kButton15Shift));
  values.selectorVals =
      static_cast<uint8_t>((mixed & kFirstSelectorMask) | ((mixed >> kSecondSelectorShift) & kSecondSelectorMask));
  return values;
}

// The host's IsBadWritePtr test: writing the memory's own bytes back succeeds
// only if all of it is writable.
template <class T>
bool HostCanWrite(T* destination) {
  return platform::WriteToHostMemory(destination, destination, sizeof(T));
}

}  // namespace

cPelmMapCtl::cPelmMapCtl(const char* path) : cPelmDeviceRecord(path, MapCtlParams()) {}

void cPelmMapCtl::Store(const MapCtlInputRecord& values) {
  for (int dial = 0; dial < kDialCount; ++dial) dialVals[dial] = values.dialVals[dial];
  switchVals = values.switchVals;
  selectorVals = values.selectorVals;
}

void cPelmMapCtl::OnOpenTimeReport(const uint8_t* report) {
  MapCtlInputRecord values = Decode(report);
  // The feature report gives the dials as unsigned bytes.
  for (int dial = 0; dial < kDialCount; ++dial) values.dialVals[dial] = report[kFirstDialByte + dial];
  Store(values);
}

void cPelmMapCtl::OnInputReport(const uint8_t* report) {
  MapCtlInputRecord values = Decode(report);
  Store(values);
  DispatchInput(kTypeCode, CallbackIndex(), &values);
}

int32_t cPelmMapCtl::GetControlVals(int16_t* dial1, int16_t* dial2, uint16_t* switches, uint8_t* selectors) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  int16_t* dials[kDialCount] = {dial1, dial2};
  for (int dial = 0; dial < kDialCount; ++dial) {
    // Tested before the count is taken, so a skipped dial keeps it pending.
    if (!HostCanWrite(dials[dial])) continue;
    const int16_t count = dialVals[dial].exchange(0);
    platform::WriteToHostMemory(dials[dial], &count, sizeof count);
  }
  const uint16_t buttons = switchVals;
  platform::WriteToHostMemory(switches, &buttons, sizeof buttons);
  const uint8_t positions = selectorVals;
  platform::WriteToHostMemory(selectors, &positions, sizeof positions);
  return PELM_SUCCESS;
}

}  // namespace pelm
