#pragma once
// The HID report descriptor of every kernel-side test panel: report IDs 1 to
// kHighestReportId, each declared as input, output and feature report of one
// length (report ID included). The kernel then gives that length for every
// report type; kDefaultReportLength is what the panels of every model have.

#include <cstdint>
#include <vector>

namespace pelm::vm {

inline constexpr uint8_t kHighestReportId = 16;
inline constexpr uint16_t kDefaultReportLength = 8;

// `reportLength` is at least 2.
std::vector<uint8_t> PanelReportDescriptor(uint16_t reportLength);

}  // namespace pelm::vm
