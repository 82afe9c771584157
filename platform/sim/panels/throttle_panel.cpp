#include "platform/sim/panels/throttle_panel.h"

namespace pelm::sim {
namespace {

// Report bytes 1 to 6 are the levers; byte 7 the contacts in bits 0-3.
constexpr std::size_t kSwitchByte = 7;
constexpr uint8_t kContactBits = 0x0F;

}  // namespace

void ThrottlePanel::SetLever(int lever, uint8_t position) {
  if (lever < 1 || lever > kLeverCount) return;
  Update([&](Report& report) { report[static_cast<std::size_t>(lever)] = position; });
}

void ThrottlePanel::SetSwitchContacts(uint8_t contacts) {
  Update([&](Report& report) { report[kSwitchByte] = contacts & kContactBits; });
}

}  // namespace pelm::sim
