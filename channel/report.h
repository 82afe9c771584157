#pragma once
// Output reports as the setters build them and the writers send them.

#include <cstdint>
#include <memory>

namespace pelm {

// Byte 0 of every report is its HID report ID.
using ReportBytes = std::unique_ptr<uint8_t[]>;

// A zero-filled report buffer, or null when memory is short.
ReportBytes AllocateReport(uint32_t length);

// How a queued report goes to the device.
enum class ReportKind : uint32_t {
  Output = 0,   // HID output report (WriteFile)
  Feature = 1,  // HID feature report (HidD_SetFeature)
};

// One pending output report; the entry owns its buffer. `next` belongs to the
// report queue, which links entries through it so that an append allocates
// nothing.
struct QueueEntry {
  uint32_t length = 0;
  ReportBytes buffer;
  ReportKind kind = ReportKind::Feature;
  QueueEntry* next = nullptr;
};

}  // namespace pelm
