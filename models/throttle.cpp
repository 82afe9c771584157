#include "models/throttle.h"

#include <array>

#include "core/callbacks.h"
#include "platform/platform.h"

namespace pelm {
namespace {

// Where each contact of report byte 7 lands in switchVals.
struct ContactBit {
  uint8_t inReport;
  uint8_t inSwitchVals;
};
constexpr std::array<ContactBit, 4> kContactBits = {{
    {0x01, 0x10},
    {0x02, 0x08},
    {0x04, 0x04},
    {0x08, 0x02},
}};

RecordParams ThrottleParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::None;
  params.channel.readerPause = cPelmThrottle::kReaderPause;
  params.channel.minInputReportLength = cPelmThrottle::kInputReportLength;
  return params;
}

}  // namespace

cPelmThrottle::cPelmThrottle(const char* path) : cPelmDeviceRecord(path, ThrottleParams()) {}

void cPelmThrottle::OnInputReport(const uint8_t* report) {
  ThrottleInputRecord values;
  for (int lever = 0; lever < kLeverCount; ++lever) {
    values.axisVals[lever] = report[kFirstLeverByte + lever];
    axisVals[lever] = values.axisVals[lever];
  }
  values.switchVals = 0;
  for (const ContactBit& contact : kContactBits) {
    if (report[kSwitchByte] & contact.inReport) values.switchVals |= contact.inSwitchVals;
  }
  switchVals = values.switchVals;
  DispatchInput(kTypeCode, CallbackIndex(), &values);
}

int32_t cPelmThrottle::GetControlVals(uint8_t* lever1, uint8_t* lever2, uint8_t* lever3, uint8_t* lever4,
                                      uint8_t* lever5, uint8_t* lever6, uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  uint8_t* levers[kLeverCount] = {lever1, lever2, lever3, lever4, lever5, lever6};
  for (int lever = 0; lever < kLeverCount; ++lever) {
    const uint8_t position = axisVals[lever];
    platform::WriteToHostMemory(levers[lever], &position, sizeof position);
  }
  const uint8_t contacts = switchVals;
  platform::WriteToHostMemory(switches, &contacts, sizeof contacts);
  return PELM_SUCCESS;
}

}  // namespace pelm
