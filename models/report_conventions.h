#pragma once
// Conventions that the models' reports share.

#include <cstdint>

#include "channel/hid_channel.h"
#include "core/pelm_dev.h"

namespace pelm {

// Brightness levels are four bits: setters send the level AND this mask.
inline constexpr uint8_t kBrightnessMask = 0x0F;

// The backlight setter of every model that has one: a panel that is not
// connected is no error (nothing is sent), and the level goes out as its low
// four bits in a two-byte report.
inline int32_t QueueBrightness(cHidChannel& device, uint8_t reportId, uint32_t level,
                               ReportKind kind = ReportKind::Feature) {
  if (!device.IsConnected()) return PELM_SUCCESS;
  return device.QueueByteReport(reportId, static_cast<uint8_t>(level) & kBrightnessMask, kind);
}

}  // namespace pelm
