#pragma once
// How long PelmDev_Init takes on the real kernel with every model present
// among foreign HID devices, beside what a host would do with hidapi alone:
// enumerate every HID device and open the panels among them.

#include <string>

namespace pelm::vm_bench {

// Times both in alternating rounds, with `foreignDevices` present beside the
// panels, and prints a table; returns one line of
// JSON with the medians, or an empty string when a round did not find every
// panel.
std::string TimeInit(int foreignDevices);

}  // namespace pelm::vm_bench
