#include "models/segment_reading.h"

#include <array>
#include <map>

#include "models/segment_encoding.h"

namespace pelm {
namespace {

constexpr char kReadableCharacters[] = "0123456789- ";
constexpr std::size_t kPatternCount = 256;
constexpr char kUnreadable = '?';
// Printable ASCII up to the lower-case letters, which draw as upper case.
constexpr unsigned char kFirstPrintable = 0x20;
constexpr unsigned char kLastUpperCaseBlock = 0x5F;

// Pattern to character, from the encoder itself.
std::array<char, kPatternCount> SevenSegmentPatterns() {
  std::array<char, kPatternCount> characters;
  characters.fill(kUnreadable);
  for (const char* c = kReadableCharacters; *c; ++c) {
    const char text[] = {*c, '\0'};
    characters[CharToSegments(text)] = *c;
  }
  return characters;
}

// Glyph to character, from the encoder; of characters that share a glyph the
// first in ASCII order wins (space before the others that draw blank).
std::map<uint16_t, char> SixteenSegmentPatterns() {
  std::map<uint16_t, char> characters;
  for (unsigned character = kFirstPrintable; character <= kLastUpperCaseBlock; ++character) {
    const char text[] = {static_cast<char>(character), '\0'};
    uint16_t glyph = 0;
    TextToAlphaSegments(text, &glyph, 1);
    characters.emplace(glyph, static_cast<char>(character));
  }
  return characters;
}

}  // namespace

std::string ReadSevenSegments(std::span<const uint8_t> segments) {
  static const std::array<char, kPatternCount> kPatterns = SevenSegmentPatterns();
  std::string text;
  for (const uint8_t segment : segments) {
    text += kPatterns[segment & ~kSegmentPoint];
    if (segment & kSegmentPoint) text += '.';
  }
  return text;
}

std::string ReadSixteenSegments(std::span<const uint16_t> glyphs) {
  static const std::map<uint16_t, char> kPatterns = SixteenSegmentPatterns();
  std::string text;
  for (const uint16_t glyph : glyphs) {
    const auto found = kPatterns.find(glyph & ~kAlphaPoint);
    text += found == kPatterns.end() ? kUnreadable : found->second;
    if (glyph & kAlphaPoint) text += '.';
  }
  return text;
}

}  // namespace pelm
