#pragma once
// Reads segment patterns back into the characters they show: the inverse of
// segment_encoding.h, for the simulated panels' displays and the demo's checks.

#include <cstdint>
#include <span>
#include <string>

namespace pelm {

// Digits, "-" and blanks; a lit point adds "." after its character; a pattern
// that is no character reads as "?".
std::string ReadSevenSegments(std::span<const uint8_t> segments);

// Printable characters, letters as upper case; a lit point adds "." after its
// character; a glyph that is no character reads as "?".
std::string ReadSixteenSegments(std::span<const uint16_t> glyphs);

}  // namespace pelm
