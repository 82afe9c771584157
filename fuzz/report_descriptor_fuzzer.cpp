// The Linux backend's report-descriptor parser on any bytes a device could
// hand over.

#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/linux/report_descriptor.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  pelm::linux_hid::ParseReportDescriptor(std::span<const uint8_t>(data, size));
  return 0;
}
