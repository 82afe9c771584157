#include "models/segment_encoding.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <initializer_list>
#include <span>

namespace pelm {
namespace {

constexpr std::size_t kByteValues = 256;

template <typename Code>
struct Glyph {
  char character;
  Code segments;
};

template <typename Code>
using GlyphTable = std::array<Code, kByteValues>;

// Indexed by byte value; every byte not listed, space and 0x80 and above
// included, stays blank.
template <typename Code>
constexpr GlyphTable<Code> BuildTable(std::initializer_list<std::span<const Glyph<Code>>> groups) {
  GlyphTable<Code> table{};
  for (const auto group : groups) {
    for (const Glyph<Code>& glyph : group) {
      table[static_cast<unsigned char>(glyph.character)] = glyph.segments;
    }
  }
  return table;
}

namespace seven {

constexpr uint8_t a = kSegmentA, b = kSegmentB, c = kSegmentC, d = kSegmentD;
constexpr uint8_t e = kSegmentE, f = kSegmentF, g = kSegmentG;

constexpr Glyph<uint8_t> kDigits[] = {
    {'0', a | b | c | d | e | f}, {'1', b | c},         {'2', a | b | d | e | g},
    {'3', a | b | c | d | g},     {'4', b | c | f | g}, {'5', a | c | d | f | g},
    {'6', a | c | d | e | f | g}, {'7', a | b | c},     {'8', a | b | c | d | e | f | g},
    {'9', a | b | c | f | g},
};

// The symbols every seven-segment encoder draws.
constexpr Glyph<uint8_t> kDashAndBrackets[] = {
    {'-', g}, {'[', a | d | e | f}, {']', a | b | c | d}};

// Drawn only by the left-to-right text encoder.
constexpr Glyph<uint8_t> kUnderscoreAndEquals[] = {{'_', d}, {'=', d | g}};

// Upper-case R is the middle bar alone, unlike its lower case.
constexpr Glyph<uint8_t> kUpperCase[] = {
    {'A', a | b | c | e | f | g}, {'B', c | d | e | f | g}, {'C', a | d | e | f},
    {'D', b | c | d | e | g},     {'E', a | d | e | f | g}, {'F', a | e | f | g},
    {'G', a | c | d | e | f},     {'H', b | c | e | f | g}, {'I', e | f},
    {'J', b | c | d | e},         {'K', e | f | g},         {'L', d | e | f},
    {'M', a | b | c | e | f},     {'N', c | e | g},         {'O', a | b | c | d | e | f},
    {'P', a | b | e | f | g},     {'Q', a | b | d | e | f}, {'R', g},
    {'S', a | c | d | f | g},     {'T', a | e | f},         {'U', b | c | d | e | f},
    {'V', c | d | e},             {'W', b | c | d | e | f | g}, {'X', b | e | g},
    {'Y', b | e | f | g},         {'Z', a | b | d | e},
};

constexpr Glyph<uint8_t> kLowerCase[] = {
    {'a', a | b | c | d | e | g}, {'b', c | d | e | f | g}, {'c', d | e | g},
    {'d', b | c | d | e | g},     {'e', a | b | d | e | f | g}, {'f', a | e | f | g},
    {'g', a | c | d | e | f},     {'h', c | e | f | g},     {'i', e | f},
    {'j', c | d},                 {'k', e | f | g},         {'l', b | c},
    {'m', a | b | c | e | f},     {'n', c | e | g},         {'o', c | d | e | g},
    {'p', a | b | e | f | g},     {'q', a | b | d | e | f}, {'r', e | g},
    {'s', a | c | d | f | g},     {'t', d | e | f | g},     {'u', c | d | e},
    {'v', c | d | e},             {'w', b | c | d | e | f | g}, {'x', b | e | g},
    {'y', b | c | d | e | g},     {'z', a | b | d | e},
};

}  // namespace seven

namespace sixteen {

constexpr uint16_t a = kAlphaSegmentA, b = kAlphaSegmentB, c = kAlphaSegmentC;
constexpr uint16_t d = kAlphaSegmentD, e = kAlphaSegmentE, f = kAlphaSegmentF;
constexpr uint16_t dUL = kAlphaDiagonalUpperLeft, dUR = kAlphaDiagonalUpperRight;
constexpr uint16_t dLL = kAlphaDiagonalLowerLeft, dLR = kAlphaDiagonalLowerRight;
constexpr uint16_t vU = kAlphaVerticalUpper, vL = kAlphaVerticalLower;
constexpr uint16_t gL = kAlphaMiddleLeft, gR = kAlphaMiddleRight;

constexpr Glyph<uint16_t> kDigits[] = {
    {'0', a | b | c | d | e | f | dUR | dLL}, {'1', b | c | dUR},
    {'2', a | d | e | gL | dUR},              {'3', a | c | d | gR | dUR},
    {'4', b | c | f | gL | gR},               {'5', a | c | d | gR | dUL},
    {'6', a | c | d | e | f | gL | gR},       {'7', a | b | c | f},
    {'8', a | b | c | d | e | f | gL | gR},   {'9', a | b | c | d | f | gL | gR},
};

constexpr Glyph<uint16_t> kLetters[] = {
    {'A', a | b | c | e | f | gL | gR},  {'B', a | b | c | d | gR | vU | vL},
    {'C', a | d | e | f},                {'D', a | b | c | d | vU | vL},
    {'E', a | d | e | f | gL},           {'F', a | e | f | gL},
    {'G', a | c | d | e | f | gR},       {'H', b | c | e | f | gL | gR},
    {'I', a | d | vU | vL},              {'J', b | c | d | e},
    {'K', e | f | gL | dUR | dLR},       {'L', d | e | f},
    {'M', b | c | e | f | dUL | dUR | vL}, {'N', b | c | e | f | dUL | dLR},
    {'O', a | b | c | d | e | f},        {'P', a | b | e | f | gL | gR},
    {'Q', a | b | c | d | e | f | dLR},  {'R', a | b | e | f | gL | gR | dLR},
    {'S', a | c | d | f | gL | gR},      {'T', a | vU | vL},
    {'U', b | c | d | e | f},            {'V', e | f | dUR | dLL},
    {'W', b | c | e | f | vU | dLL | dLR}, {'X', dUL | dUR | dLL | dLR},
    {'Y', b | f | gL | gR | vL},         {'Z', a | d | dUR | dLL},
};

constexpr Glyph<uint16_t> kSymbols[] = {
    {'-', gL | gR}, {'<', dUR | dLR}, {'>', dUL | dLL}};

}  // namespace sixteen

constexpr auto kTextGlyphs = BuildTable<uint8_t>(
    {seven::kDigits, seven::kDashAndBrackets, seven::kUnderscoreAndEquals,
     seven::kUpperCase, seven::kLowerCase});

constexpr auto kNumericGlyphs =
    BuildTable<uint8_t>({seven::kDigits, seven::kDashAndBrackets});

// The alphanumeric display has no lower-case glyphs: each lower-case letter
// borrows its upper-case one.
constexpr GlyphTable<uint16_t> BuildAlphaTable() {
  auto table =
      BuildTable<uint16_t>({sixteen::kDigits, sixteen::kLetters, sixteen::kSymbols});
  for (unsigned char letter = 'a'; letter <= 'z'; ++letter) {
    table[letter] = table[letter - 'a' + 'A'];
  }
  return table;
}

constexpr auto kAlphaGlyphs = BuildAlphaTable();

constexpr uint8_t kBlankSegments = 0x00;
constexpr uint16_t kBlankAlphaGlyph = 0x0000;

// Walks text one display position at a time, for at most count positions. A "."
// right after a character belongs to that character's position, so it is
// reported as pointFollows and stepped over; any other "." arrives as a
// character of its own. Nothing past the NUL is read.
template <typename Place>
void ForEachPosition(const char* text, uint16_t count, Place place) {
  for (uint16_t position = 0; position < count && *text != '\0'; ++position, ++text) {
    const bool pointFollows = text[1] == '.';
    place(position, static_cast<unsigned char>(*text), pointFollows);
    if (pointFollows) {
      ++text;
    }
  }
}

}  // namespace

void TextToSegments(const char* text, uint8_t* segments, uint16_t count, bool lonePointLit) {
  std::fill_n(segments, count, kBlankSegments);
  const uint8_t lonePoint = lonePointLit ? kSegmentPoint : kBlankSegments;
  ForEachPosition(text, count, [&](uint16_t position, unsigned char character, bool pointFollows) {
    uint8_t glyph = character == '.' ? lonePoint : kTextGlyphs[character];
    if (pointFollows) {
      glyph |= kSegmentPoint;
    }
    segments[position] = glyph;
  });
}

void TextToNumericSegments(const char* text, uint8_t* segments, uint16_t count) {
  std::fill_n(segments, count, kBlankSegments);
  ForEachPosition(text, count, [&](uint16_t position, unsigned char character, bool pointFollows) {
    uint8_t glyph = kNumericGlyphs[character];
    if (pointFollows) {
      glyph |= kSegmentPoint;
    }
    segments[count - 1 - position] = glyph;
  });
}

uint8_t CharToSegments(const char* text) {
  const auto first = static_cast<unsigned char>(text[0]);
  if (first == '\0') {
    return kBlankSegments;
  }
  if (first == '.') {
    return kSegmentPoint;
  }
  uint8_t glyph = kNumericGlyphs[first];
  if (text[1] == '.') {
    glyph |= kSegmentPoint;
  }
  return glyph;
}

void TextToAlphaSegments(const char* text, uint16_t* glyphs, uint16_t count) {
  std::fill_n(glyphs, count, kBlankAlphaGlyph);
  ForEachPosition(text, count, [&](uint16_t position, unsigned char character, bool pointFollows) {
    uint16_t glyph = kAlphaGlyphs[character];
    if (pointFollows) {
      glyph |= kAlphaPoint;
    }
    glyphs[position] = glyph;
  });
}

}  // namespace pelm
