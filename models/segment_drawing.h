#pragma once

// ASCII drawings of segment glyphs, for showing a panel's displays in a
// terminal. Every line of one drawing has the same width, so the drawings of a
// display's positions can be set side by side line by line.

#include <array>
#include <cstdint>
#include <string>

namespace pelm {

// Three lines, four columns: the digit, with its point at the lower right.
std::array<std::string, 3> DrawSevenSegment(uint8_t glyph);

// Five lines, six columns: the sixteen-segment character, with its point at the
// lower right.
std::array<std::string, 5> DrawSixteenSegment(uint16_t glyph);

}  // namespace pelm
