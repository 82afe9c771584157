#include "models/engine_ctl.h"

#include <array>

#include "core/callbacks.h"
#include "platform/platform.h"

namespace pelm {
namespace {

// Report bytes 1 to 3:
//   byte 1  bit 0 three-position switch up; bit 1 first two-contact switch;
//           bits 6 to 2 selector positions 1 to 5; bit 7 second two-contact switch
//   byte 2  contacts of switchVals, below
//   byte 3  contacts of switchVals, below; bit 4 second two-contact switch;
//           bit 5 not used; bit 6 three-position switch down (the up contact
//           wins when both are closed); bit 7 first two-contact switch
constexpr std::size_t kControlByte = 1;
constexpr std::size_t kContactByte = 2;
constexpr std::size_t kMixedByte = 3;

// Selector contacts of byte 1 for positions 1 to 5; the lowest position whose
// contact is closed wins.
constexpr std::array<uint8_t, 5> kSelectorContacts = {0x40, 0x20, 0x10, 0x08, 0x04};

constexpr uint8_t kThreePositionUpContact = 0x01;    // byte 1
constexpr uint8_t kThreePositionDownContact = 0x40;  // byte 3
constexpr uint8_t kThreePositionValueUp = 2;
constexpr uint8_t kThreePositionValueMiddle = 1;
constexpr uint8_t kThreePositionValueDown = 0;

struct Contact {
  std::size_t byte;
  uint8_t mask;
};
constexpr Contact kFirstSwitchContacts[] = {{kControlByte, 0x02}, {kMixedByte, 0x80}};
constexpr Contact kSecondSwitchContacts[] = {{kMixedByte, 0x10}, {kControlByte, 0x80}};

// The contact of each bit of switchVals, bit 0 first. Active-low contacts read
// 0 when closed.
struct SwitchContact {
  Contact contact;
  bool activeLow;
};
constexpr std::array<SwitchContact, 12> kSwitchContacts = {{
    {{kMixedByte, 0x04}, false},
    {{kMixedByte, 0x01}, false},
    {{kContactByte, 0x40}, true},
    {{kContactByte, 0x10}, true},
    {{kContactByte, 0x04}, true},
    {{kContactByte, 0x01}, true},
    {{kMixedByte, 0x08}, true},
    {{kMixedByte, 0x02}, true},
    {{kContactByte, 0x80}, false},
    {{kContactByte, 0x20}, false},
    {{kContactByte, 0x08}, false},
    {{kContactByte, 0x02}, false},
}};

bool IsSet(const uint8_t* report, const Contact& contact) { return (report[contact.byte] & contact.mask) != 0; }

template <std::size_t N>
uint8_t AnyClosed(const uint8_t* report, const Contact (&contacts)[N]) {
  for (const Contact& contact : contacts) {
    if (IsSet(report, contact)) return 1;
  }
  return 0;
}

RecordParams EngineCtlParams() {
  RecordParams params;
  params.channel.writer = WriterVariant::None;
  params.channel.minInputReportLength = cPelmEngineCtl::kInputReportLength;
  params.openReportId = cPelmEngineCtl::kControlStateReport;
  params.openReportLength = cPelmEngineCtl::kControlStateReportLength;
  return params;
}

}  // namespace

cPelmEngineCtl::cPelmEngineCtl(const char* path) : cPelmDeviceRecord(path, EngineCtlParams()) {}

bool cPelmEngineCtl::Decode(const uint8_t* report, EngineCtlInputRecord& state) {
  bool selectorClosed = false;
  state.controlVals[0] = controlVals[0];
  for (std::size_t i = 0; i < kSelectorContacts.size(); ++i) {
    if (report[kControlByte] & kSelectorContacts[i]) {
      state.controlVals[0] = static_cast<uint8_t>(i + 1);
      selectorClosed = true;
      break;
    }
  }
  state.controlVals[1] = AnyClosed(report, kFirstSwitchContacts);
  if (report[kControlByte] & kThreePositionUpContact) {
    state.controlVals[2] = kThreePositionValueUp;
  } else if (!(report[kMixedByte] & kThreePositionDownContact)) {
    state.controlVals[2] = kThreePositionValueMiddle;
  } else {
    state.controlVals[2] = kThreePositionValueDown;
  }
  state.controlVals[3] = AnyClosed(report, kSecondSwitchContacts);
  state.switchVals = 0;
  for (std::size_t bit = 0; bit < kSwitchContacts.size(); ++bit) {
    if (IsSet(report, kSwitchContacts[bit].contact) != kSwitchContacts[bit].activeLow) {
      state.switchVals |= static_cast<uint16_t>(1u << bit);
    }
  }

  for (int i = 0; i < kControlCount; ++i) controlVals[i] = state.controlVals[i];
  switchVals = state.switchVals;
  return selectorClosed;
}

void cPelmEngineCtl::OnOpenTimeReport(const uint8_t* report) {
  // Seeds the state; the record has no slot yet, so nobody is told.
  EngineCtlInputRecord state;
  Decode(report, state);
}

void cPelmEngineCtl::OnInputReport(const uint8_t* report) {
  // The host gets a copy of the fields rather than the fields themselves: they
  // are atomics, shared with the host's getters, and have no packed layout.
  EngineCtlInputRecord state;
  if (Decode(report, state)) DispatchInput(kTypeCode, CallbackIndex(), &state);
}

int32_t cPelmEngineCtl::GetControlVals(uint8_t* selector, uint8_t* switch1, uint8_t* threePosition, uint8_t* switch2,
                                       uint16_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  uint8_t* outputs[kControlCount] = {selector, switch1, threePosition, switch2};
  for (int i = 0; i < kControlCount; ++i) {
    const uint8_t value = controlVals[i];
    platform::WriteToHostMemory(outputs[i], &value, sizeof value);
  }
  const uint16_t contacts = switchVals;
  platform::WriteToHostMemory(switches, &contacts, sizeof contacts);
  return PELM_SUCCESS;
}

}  // namespace pelm
