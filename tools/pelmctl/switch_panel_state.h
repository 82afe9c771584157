#pragma once
// The simulated button and toggle panels keep whatever feature reports they
// are sent; these read their lamps and backlight from the last ones.

#include <cstdint>

#include "platform/sim/sim_bus.h"

namespace pelmctl {

inline constexpr uint8_t kSwitchPanelIndicatorReport = 2;
inline constexpr uint8_t kSwitchPanelBrightnessReport = 3;

// Byte 1 of the last feature report set under `reportId`; 0 if none was.
uint8_t LastPayloadByte(pelm::sim::SimDevice& device, uint8_t reportId);
inline uint8_t SwitchPanelLamps(pelm::sim::SimDevice& device) {
  return LastPayloadByte(device, kSwitchPanelIndicatorReport);
}

}  // namespace pelmctl
