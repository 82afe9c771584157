#pragma once
// The simulated alphanumeric panels: a four-character sixteen-segment display,
// a numeric display (five digits on the first model, six on the second) and a
// backlight, set by feature reports.

#include <array>
#include <cstdint>
#include <vector>

#include "platform/sim/panels/display_panel.h"

namespace pelm::sim {

class AlphaPanelSim : public DisplayPanelSim {
 public:
  static constexpr uint16_t kAlphaProductId = 0x0010;
  static constexpr uint16_t kAlpha2ProductId = 0x0018;
  static constexpr uint8_t kAlphaReport = 3;
  static constexpr std::size_t kAlphaPositions = 4;
  static constexpr uint8_t kNumericReport = 5;
  static constexpr std::size_t kAlphaNumericPositions = 5;
  static constexpr std::size_t kAlpha2NumericPositions = 6;
  static constexpr uint8_t kBrightnessReport = 6;

  explicit AlphaPanelSim(std::size_t numericPositions) : numericPositions_(numericPositions) {}
  // The panel of the model with this product ID.
  static std::unique_ptr<AlphaPanelSim> ForProduct(uint16_t productId);

  // Sixteen-segment glyphs shown, position 0 first.
  std::array<uint16_t, kAlphaPositions> AlphaDisplay() const;
  // Segment bytes shown, position 0 first (the report carries them the other
  // way round).
  std::vector<uint8_t> NumericDisplay() const;
  uint8_t Brightness() const { return PayloadByte(kBrightnessReport); }

 private:
  const std::size_t numericPositions_;
};

}  // namespace pelm::sim
