#pragma once
// Report lengths of a hidraw device, worked out from its raw report descriptor.
//
// Windows hands the library each device's longest input, output and feature
// report lengths; hidraw only hands over the descriptor, so the Linux backend
// walks it and computes the same numbers, plus whether the device numbers its
// reports (when it does not, hidraw leaves the ID byte out of every report).
//
// Choices made where descriptors are sloppy or hostile:
//  - A report longer than 65534 data bytes makes the descriptor malformed: its
//    length plus the ID byte would not fit the uint16_t the library carries.
//  - Data items declared before the first Report ID item are counted as a
//    report of their own under ID 0 rather than rejected.
//  - Collections are not checked for balance, and a Push left unpopped at the
//    end is accepted: neither changes any report's length.
//  - Long items and reserved short items carry nothing that shapes a report and
//    are stepped over.

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace pelm::linux_hid {

struct ReportLengths {
  uint16_t input = 0;    // longest input report in bytes, plus the report ID byte; 0 if none
  uint16_t output = 0;
  uint16_t feature = 0;
  bool usesReportIds = false;

  friend bool operator==(const ReportLengths&, const ReportLengths&) = default;
};

// How many Push items may be outstanding at once; one more is malformed.
inline constexpr std::size_t kMaxGlobalStackDepth = 16;

// Parses a HID report descriptor. Returns std::nullopt for a malformed
// descriptor: an item running past the end, Pop without Push, Push beyond
// kMaxGlobalStackDepth, a Report ID outside 1..255, or an over-long report.
std::optional<ReportLengths> ParseReportDescriptor(std::span<const uint8_t> descriptor);

}  // namespace pelm::linux_hid
