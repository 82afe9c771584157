#include "platform/sim/panels/alpha_panels.h"

#include <algorithm>

namespace pelm::sim {

std::unique_ptr<AlphaPanelSim> AlphaPanelSim::ForProduct(uint16_t productId) {
  return std::make_unique<AlphaPanelSim>(productId == kAlpha2ProductId ? kAlpha2NumericPositions
                                                                       : kAlphaNumericPositions);
}

std::array<uint16_t, AlphaPanelSim::kAlphaPositions> AlphaPanelSim::AlphaDisplay() const {
  const std::vector<uint8_t> bytes = Payload(kAlphaReport, 2 * kAlphaPositions);
  std::array<uint16_t, kAlphaPositions> glyphs;
  for (std::size_t i = 0; i < kAlphaPositions; ++i) {
    glyphs[i] = static_cast<uint16_t>(bytes[2 * i] | bytes[2 * i + 1] << 8);
  }
  return glyphs;
}

std::vector<uint8_t> AlphaPanelSim::NumericDisplay() const {
  std::vector<uint8_t> segments = Payload(kNumericReport, numericPositions_);
  std::reverse(segments.begin(), segments.end());
  return segments;
}

}  // namespace pelm::sim
