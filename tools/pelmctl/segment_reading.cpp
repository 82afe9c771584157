#include "tools/pelmctl/segment_reading.h"

#include <array>

#include "models/segment_encoding.h"

namespace pelmctl {
namespace {

constexpr char kReadableCharacters[] = "0123456789- ";
constexpr std::size_t kPatternCount = 256;

// Pattern to character, from the encoder itself.
std::array<char, kPatternCount> Patterns() {
  std::array<char, kPatternCount> characters;
  characters.fill('?');
  for (const char* c = kReadableCharacters; *c; ++c) {
    const char text[] = {*c, '\0'};
    characters[pelm::CharToSegments(text)] = *c;
  }
  return characters;
}

}  // namespace

std::string ReadSevenSegments(std::span<const uint8_t> segments) {
  static const std::array<char, kPatternCount> kPatterns = Patterns();
  std::string text;
  for (const uint8_t segment : segments) {
    text += kPatterns[segment & ~pelm::kSegmentPoint];
    if (segment & pelm::kSegmentPoint) text += '.';
  }
  return text;
}

}  // namespace pelmctl
