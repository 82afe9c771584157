#pragma once
// The warning panel's colours: each of its eight colour indices names a mix of
// the three components that an indicator takes, at a level that follows the
// panel's brightness. The panel has no brightness of its own; dimming is done
// by sending lower component levels.

#include <array>
#include <cstdint>

namespace pelm {

using ColorComponents = std::array<uint8_t, 3>;

inline constexpr uint8_t kColorIndexCount = 8;  // 0 (dark) to 7
inline constexpr int16_t kFullBrightness = 15;

// The component level of a brightness: 0 to 100 for brightness 0 to 15, scaled
// in single precision and truncated. Levels above 15 are not clamped; their
// component level passes 100 and wraps in eight bits.
uint8_t ComponentLevel(int16_t brightness);

// The components of a colour index at a brightness; the index must be below
// kColorIndexCount.
ColorComponents ComponentsOf(uint8_t colorIndex, int16_t brightness);

}  // namespace pelm
