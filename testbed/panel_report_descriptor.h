#pragma once
// The HID report descriptor of every kernel-side test panel: report IDs 1 to
// kHighestReportId, each declared as input, output and feature report of
// kReportPayload bytes after the ID. The kernel then reads report lengths of 8
// for every type, the lengths each model's panel has.

#include <cstdint>
#include <vector>

namespace pelm::vm {

inline constexpr uint8_t kHighestReportId = 16;
inline constexpr uint8_t kReportPayload = 7;
inline constexpr std::size_t kPanelReportLength = 1 + kReportPayload;

std::vector<uint8_t> PanelReportDescriptor();

}  // namespace pelm::vm
