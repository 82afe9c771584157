#pragma once

// Text to segment patterns for the panels' displays.
//
// Seven-segment code: one byte per display position, a set bit lights its
// segment, 0x00 is blank. Sixteen-segment code: one 16-bit value per position,
// the high byte driving the outer ring in the seven-segment bit order and the
// low byte the inner segments and the point.
//
// The encoders take NUL-terminated 8-bit text, treat every byte of 0x80 and
// above as blank, never read past the NUL, never allocate and keep no state.

#include <cstdint>

namespace pelm {

inline constexpr uint8_t kSegmentA = 0x01;      // top bar
inline constexpr uint8_t kSegmentB = 0x02;      // upper right
inline constexpr uint8_t kSegmentC = 0x04;      // lower right
inline constexpr uint8_t kSegmentD = 0x08;      // bottom bar
inline constexpr uint8_t kSegmentE = 0x10;      // lower left
inline constexpr uint8_t kSegmentF = 0x20;      // upper left
inline constexpr uint8_t kSegmentG = 0x40;      // middle bar
inline constexpr uint8_t kSegmentPoint = 0x80;  // decimal point

inline constexpr uint16_t kAlphaDiagonalUpperRight = 0x0001;
inline constexpr uint16_t kAlphaMiddleRight = 0x0002;
inline constexpr uint16_t kAlphaDiagonalLowerRight = 0x0004;
inline constexpr uint16_t kAlphaVerticalLower = 0x0008;
inline constexpr uint16_t kAlphaDiagonalLowerLeft = 0x0010;
inline constexpr uint16_t kAlphaMiddleLeft = 0x0020;
inline constexpr uint16_t kAlphaPoint = 0x0040;
inline constexpr uint16_t kAlphaSegmentA = 0x0100;  // top bar
inline constexpr uint16_t kAlphaSegmentB = 0x0200;  // upper right
inline constexpr uint16_t kAlphaSegmentC = 0x0400;  // lower right
inline constexpr uint16_t kAlphaSegmentD = 0x0800;  // bottom bar
inline constexpr uint16_t kAlphaSegmentE = 0x1000;  // lower left
inline constexpr uint16_t kAlphaSegmentF = 0x2000;  // upper left
inline constexpr uint16_t kAlphaDiagonalUpperLeft = 0x4000;
inline constexpr uint16_t kAlphaVerticalUpper = 0x8000;

// Fills segments[0..count) left to right. A "." right after a character lights
// that character's point; any other "." takes a position of its own, shown as a
// point when lonePointLit is true and blank otherwise.
void TextToSegments(const char* text, uint8_t* segments, uint16_t count, bool lonePointLit);

// Fills segments[0..count) right to left: the first character lands in
// segments[count - 1]. Only digits, space, "-", "[" and "]" are drawn; any other
// character still uses a position.
void TextToNumericSegments(const char* text, uint8_t* segments, uint16_t count);

// The glyph of the first character of text, with its point lit when the second
// character is ".".
uint8_t CharToSegments(const char* text);

// Fills glyphs[0..count) left to right; lower-case letters are drawn as
// upper case.
void TextToAlphaSegments(const char* text, uint16_t* glyphs, uint16_t count);

}  // namespace pelm
