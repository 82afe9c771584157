#include "models/segment_drawing.h"

#include "models/segment_encoding.h"

namespace pelm {

std::array<std::string, 3> DrawSevenSegment(uint8_t glyph) {
  const auto mark = [glyph](uint8_t segment, char lit) { return (glyph & segment) ? lit : ' '; };
  return {
      std::string{' ', mark(kSegmentA, '_'), ' ', ' '},
      std::string{mark(kSegmentF, '|'), mark(kSegmentG, '_'), mark(kSegmentB, '|'), ' '},
      std::string{mark(kSegmentE, '|'), mark(kSegmentD, '_'), mark(kSegmentC, '|'),
                  mark(kSegmentPoint, '.')},
  };
}

std::array<std::string, 5> DrawSixteenSegment(uint16_t glyph) {
  const auto mark = [glyph](uint16_t segment, char lit) { return (glyph & segment) ? lit : ' '; };
  const char top = mark(kAlphaSegmentA, '-');
  const char bottom = mark(kAlphaSegmentD, '-');
  // The centre of the middle row belongs to neither half of the middle bar; it
  // is drawn only when both halves are lit so that the bar reads as one line.
  const bool wholeMiddleBar = (glyph & kAlphaMiddleLeft) && (glyph & kAlphaMiddleRight);
  const char middleCentre = wholeMiddleBar ? '-' : ' ';
  return {
      std::string{' ', top, top, top, ' ', ' '},
      std::string{mark(kAlphaSegmentF, '|'), mark(kAlphaDiagonalUpperLeft, '\\'),
                  mark(kAlphaVerticalUpper, '|'), mark(kAlphaDiagonalUpperRight, '/'),
                  mark(kAlphaSegmentB, '|'), ' '},
      std::string{' ', mark(kAlphaMiddleLeft, '-'), middleCentre, mark(kAlphaMiddleRight, '-'),
                  ' ', ' '},
      std::string{mark(kAlphaSegmentE, '|'), mark(kAlphaDiagonalLowerLeft, '/'),
                  mark(kAlphaVerticalLower, '|'), mark(kAlphaDiagonalLowerRight, '\\'),
                  mark(kAlphaSegmentC, '|'), ' '},
      std::string{' ', bottom, bottom, bottom, ' ', mark(kAlphaPoint, '.')},
  };
}

}  // namespace pelm
