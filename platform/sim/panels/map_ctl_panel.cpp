#include "platform/sim/panels/map_ctl_panel.h"

namespace pelm::sim {
namespace {

// Report bytes: 3 and 4 the dials; 5 buttons 0-6; 6 the first selector in bits
// 0-1, button 15 in bit 3, button 14 in bit 4, the second selector in bits 5-7;
// 7 buttons 8-13 in bits 0-5.
constexpr std::size_t kFirstDialByte = 3;
constexpr std::size_t kSecondDialByte = 4;
constexpr std::size_t kLowButtonsByte = 5;
constexpr std::size_t kMixedByte = 6;
constexpr std::size_t kHighButtonsByte = 7;

constexpr uint16_t kLowButtons = 0x007F;
constexpr uint16_t kHighButtons = 0x3F00;
constexpr int kHighButtonsShift = 8;
constexpr uint16_t kButton14 = 0x4000;
constexpr uint16_t kButton15 = 0x8000;
constexpr uint8_t kButton14Contact = 0x10;
constexpr uint8_t kButton15Contact = 0x08;
constexpr uint8_t kFirstSelectorBits = 0x03;
constexpr uint8_t kSecondSelectorBits = 0xE0;
constexpr int kSecondSelectorShift = 5;

}  // namespace

void MapCtlPanel::SetDials(int8_t first, int8_t second) {
  Update([&](Report& report) {
    report[kFirstDialByte] = static_cast<uint8_t>(first);
    report[kSecondDialByte] = static_cast<uint8_t>(second);
  });
}

void MapCtlPanel::SetButtons(uint16_t buttons) {
  Update([&](Report& report) {
    report[kLowButtonsByte] = static_cast<uint8_t>(buttons & kLowButtons);
    report[kHighButtonsByte] = static_cast<uint8_t>((buttons & kHighButtons) >> kHighButtonsShift);
    uint8_t mixed = report[kMixedByte] & static_cast<uint8_t>(~(kButton14Contact | kButton15Contact));
    if (buttons & kButton14) mixed |= kButton14Contact;
    if (buttons & kButton15) mixed |= kButton15Contact;
    report[kMixedByte] = mixed;
  });
}

void MapCtlPanel::SetSelectors(uint8_t first, uint8_t second) {
  Update([&](Report& report) {
    const uint8_t buttons = report[kMixedByte] & (kButton14Contact | kButton15Contact);
    report[kMixedByte] = static_cast<uint8_t>(buttons | (first & kFirstSelectorBits) |
                                              ((second << kSecondSelectorShift) & kSecondSelectorBits));
  });
}

}  // namespace pelm::sim
