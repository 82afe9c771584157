#pragma once
// What the simulated display panels share: like the generic device they keep
// the last feature report set under each report ID and answer reads from it,
// and they read their display contents, brightness and lamps from those
// reports.

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/sim/panel.h"

namespace pelm::sim {

// A seven-segment display of a panel: the feature report that sets it and the
// positions it shows, one segment byte each, position 0 in byte 1.
struct DisplayReport {
  char name;
  uint8_t reportId;
  std::size_t positions;
};

class DisplayPanelSim : public GenericPanel {
 protected:
  // Bytes 1 to `count` of the last report set under `reportId`; zeros where
  // nothing was set.
  std::vector<uint8_t> Payload(uint8_t reportId, std::size_t count) const;
  uint8_t PayloadByte(uint8_t reportId) const { return Payload(reportId, 1)[0]; }

  template <std::size_t N>
  std::array<uint8_t, N> PayloadArray(uint8_t reportId) const {
    const std::vector<uint8_t> bytes = Payload(reportId, N);
    std::array<uint8_t, N> result;
    for (std::size_t i = 0; i < N; ++i) result[i] = bytes[i];
    return result;
  }
};

}  // namespace pelm::sim
