#include "models/segment_encoding.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <string>
#include <vector>

#include "models/segment_drawing.h"

namespace pelm {
namespace {

std::vector<uint8_t> Text(const char* text, uint16_t count, bool lonePointLit) {
  std::vector<uint8_t> segments(count, 0xAA);
  TextToSegments(text, segments.data(), count, lonePointLit);
  return segments;
}

std::vector<uint8_t> Numeric(const char* text, uint16_t count) {
  std::vector<uint8_t> segments(count, 0xAA);
  TextToNumericSegments(text, segments.data(), count);
  return segments;
}

std::vector<uint16_t> Alpha(const char* text, uint16_t count) {
  std::vector<uint16_t> glyphs(count, 0xAAAA);
  TextToAlphaSegments(text, glyphs.data(), count);
  return glyphs;
}

template <typename Code>
struct GlyphRow {
  const char* characters;
  std::vector<Code> glyphs;
};

const std::vector<GlyphRow<uint8_t>> kSevenSegmentRows = {
    {"0123456789", {0x3F, 0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D, 0x07, 0x7F, 0x67}},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZ",
     {0x77, 0x7C, 0x39, 0x5E, 0x79, 0x71, 0x3D, 0x76, 0x30, 0x1E, 0x70, 0x38, 0x37,
      0x54, 0x3F, 0x73, 0x3B, 0x40, 0x6D, 0x31, 0x3E, 0x1C, 0x7E, 0x52, 0x72, 0x1B}},
    {"abcdefghijklmnopqrstuvwxyz",
     {0x5F, 0x7C, 0x58, 0x5E, 0x7B, 0x71, 0x3D, 0x74, 0x30, 0x0C, 0x70, 0x06, 0x37,
      0x54, 0x5C, 0x73, 0x3B, 0x50, 0x6D, 0x78, 0x1C, 0x1C, 0x7E, 0x52, 0x5E, 0x1B}},
    {" -_=[]", {0x00, 0x40, 0x08, 0x48, 0x39, 0x0F}},
    {"*/+\x7F\x80\xFF", {0, 0, 0, 0, 0, 0}},
};

TEST(TextToSegments, DrawsEveryCharacterWithItsGlyph) {
  for (const auto& row : kSevenSegmentRows) {
    for (std::size_t i = 0; i < row.glyphs.size(); ++i) {
      const char text[] = {row.characters[i], '\0'};
      SCOPED_TRACE(std::string("character ") + text);
      for (const bool lonePointLit : {false, true}) {
        EXPECT_EQ(Text(text, 1, lonePointLit), std::vector<uint8_t>{row.glyphs[i]});
      }
    }
  }
}

// The numeric encoders draw only digits, space, "-" and the brackets.
TEST(NumericEncoders, DrawOnlyDigitsDashAndBrackets) {
  for (const auto& row : kSevenSegmentRows) {
    for (std::size_t i = 0; i < row.glyphs.size(); ++i) {
      const char character = row.characters[i];
      const char text[] = {character, '\0'};
      SCOPED_TRACE(std::string("character ") + text);
      const bool drawn = std::strchr("0123456789 -[]", character) != nullptr;
      const uint8_t expected = drawn ? row.glyphs[i] : 0x00;
      EXPECT_EQ(Numeric(text, 1), std::vector<uint8_t>{expected});
      EXPECT_EQ(CharToSegments(text), expected);
    }
  }
}

struct TextCase {
  const char* text;
  uint16_t count;
  std::vector<uint8_t> radio;      // lone point blank
  std::vector<uint8_t> autopilot;  // lone point lit
};

TEST(TextToSegments, PlacesCharactersAndPointsLeftToRight) {
  const std::vector<TextCase> cases = {
      {"", 6, {0, 0, 0, 0, 0, 0}, {0, 0, 0, 0, 0, 0}},
      {"123456789", 6, {0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}, {0x06, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
      {"12.5", 4, {0x06, 0xDB, 0x6D, 0x00}, {0x06, 0xDB, 0x6D, 0x00}},
      {"8.8.", 6, {0xFF, 0xFF, 0, 0, 0, 0}, {0xFF, 0xFF, 0, 0, 0, 0}},
      {".5", 2, {0x00, 0x6D}, {0x80, 0x6D}},
      {"1..2", 3, {0x86, 0x00, 0x5B}, {0x86, 0x80, 0x5B}},
      // A lone point followed by a point: the second joins the first's position.
      {"..", 2, {0x80, 0x00}, {0x80, 0x00}},
      {"*/+5", 4, {0, 0, 0, 0x6D}, {0, 0, 0, 0x6D}},
      {"\xB0.7", 2, {0x80, 0x07}, {0x80, 0x07}},
      // A point joins the last position that fits; the character after it does not.
      {"123.4", 3, {0x06, 0x5B, 0xCF}, {0x06, 0x5B, 0xCF}},
      {"1234.", 3, {0x06, 0x5B, 0x4F}, {0x06, 0x5B, 0x4F}},
  };
  for (const auto& testCase : cases) {
    SCOPED_TRACE(testCase.text);
    EXPECT_EQ(Text(testCase.text, testCase.count, false), testCase.radio);
    EXPECT_EQ(Text(testCase.text, testCase.count, true), testCase.autopilot);
  }
}

TEST(TextToNumericSegments, PlacesCharactersRightToLeft) {
  const std::vector<std::pair<const char*, std::vector<uint8_t>>> cases = {
      {"", {0, 0, 0, 0, 0}},
      {"12", {0x00, 0x00, 0x00, 0x5B, 0x06}},
      {"123456", {0x6D, 0x66, 0x4F, 0x5B, 0x06}},
      {"12.5", {0x00, 0x00, 0x6D, 0xDB, 0x06}},
      {".5", {0x00, 0x00, 0x00, 0x6D, 0x00}},
      {"AB1", {0x00, 0x00, 0x06, 0x00, 0x00}},
      {"_=-", {0x00, 0x00, 0x40, 0x00, 0x00}},
      {"\xFF.-8", {0x00, 0x00, 0x7F, 0x40, 0x80}},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Numeric(text, 5), expected);
  }
}

TEST(CharToSegments, JoinsAPointThatFollowsTheCharacter) {
  const std::vector<std::pair<const char*, uint8_t>> cases = {
      {"7.", 0x87}, {"7", 0x07}, {"78", 0x07}, {".", 0x80}, {"..", 0x80},
      {"]", 0x0F},  {"A", 0x00}, {"A.", 0x80}, {"", 0x00},  {"\xC0.", 0x80},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(CharToSegments(text), expected);
  }
}

const std::vector<GlyphRow<uint16_t>> kSixteenSegmentRows = {
    {"0123456789",
     {0x3F11, 0x0601, 0x1921, 0x0D03, 0x2622, 0x4D02, 0x3D22, 0x2700, 0x3F22, 0x2F22}},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZ",
     {0x3722, 0x8F0A, 0x3900, 0x8F08, 0x3920, 0x3120, 0x3D02, 0x3622, 0x8908,
      0x1E00, 0x3025, 0x3800, 0x7609, 0x7604, 0x3F00, 0x3322, 0x3F04, 0x3326,
      0x2D22, 0x8108, 0x3E00, 0x3011, 0xB614, 0x4015, 0x222A, 0x0911}},
    {" -<>", {0x0000, 0x0022, 0x0005, 0x4010}},
    {"_=[]*\x80\xFF", {0, 0, 0, 0, 0, 0, 0}},
};

// Lower-case letters are drawn with the upper-case glyphs.
TEST(TextToAlphaSegments, DrawsEveryCharacterWithItsGlyph) {
  for (const auto& row : kSixteenSegmentRows) {
    for (std::size_t i = 0; i < row.glyphs.size(); ++i) {
      const char character = row.characters[i];
      const char text[] = {character, '\0'};
      const char lowerCase[] = {static_cast<char>(std::tolower(static_cast<unsigned char>(character))), '\0'};
      SCOPED_TRACE(std::string("character ") + text);
      EXPECT_EQ(Alpha(text, 1), std::vector<uint16_t>{row.glyphs[i]});
      EXPECT_EQ(Alpha(lowerCase, 1), std::vector<uint16_t>{row.glyphs[i]});
    }
  }
}

TEST(TextToAlphaSegments, PlacesCharactersAndPointsLeftToRight) {
  const std::vector<std::pair<const char*, std::vector<uint16_t>>> cases = {
      {"", {0, 0, 0, 0}},
      {"A.B", {0x3762, 0x8F0A, 0, 0}},
      {"HELLO", {0x3622, 0x3920, 0x3800, 0x3800}},
      {".1", {0x0000, 0x0601, 0, 0}},
      {"1..2", {0x0641, 0x0000, 0x1921, 0}},
      {"*.", {0x0040, 0, 0, 0}},
  };
  for (const auto& [text, expected] : cases) {
    SCOPED_TRACE(text);
    EXPECT_EQ(Alpha(text, 4), expected);
  }
}

// Each text sits at the very end of a buffer of its exact size, so the address
// sanitizer reports any read past the NUL.
TEST(SegmentEncoders, NeverReadPastTheEndOfTheText) {
  for (const std::string text : {"", "1", "1.", "..", "12.5", "8.8.8.8.8.8.8."}) {
    SCOPED_TRACE(text);
    const std::vector<char> buffer(text.c_str(), text.c_str() + text.size() + 1);
    uint8_t segments[6];
    uint16_t glyphs[4];
    TextToSegments(buffer.data(), segments, 6, true);
    TextToNumericSegments(buffer.data(), segments, 6);
    TextToAlphaSegments(buffer.data(), glyphs, 4);
    CharToSegments(buffer.data());
  }
  // The digit encoder reads at most two characters, and only one if the first
  // is a point.
  const std::vector<char> digitAndPoint = {'7', '.'};
  EXPECT_EQ(CharToSegments(digitAndPoint.data()), 0x87);
  const std::vector<char> point = {'.'};
  EXPECT_EQ(CharToSegments(point.data()), 0x80);
}

TEST(DrawSevenSegment, DrawsLitBarsAndPoint) {
  using Drawing = std::array<std::string, 3>;
  EXPECT_EQ(DrawSevenSegment(0x7F), (Drawing{" _  ", "|_| ", "|_| "}));
  EXPECT_EQ(DrawSevenSegment(0x86), (Drawing{"    ", "  | ", "  |."}));
  EXPECT_EQ(DrawSevenSegment(0x00), (Drawing{"    ", "    ", "    "}));
}

TEST(DrawSixteenSegment, DrawsLitSegmentsAndPoint) {
  using Drawing = std::array<std::string, 5>;
  EXPECT_EQ(DrawSixteenSegment(0xFF7F),
            (Drawing{" ---  ", "|\\|/| ", " ---  ", "|/|\\| ", " --- ."}));
  EXPECT_EQ(DrawSixteenSegment(0x0002), (Drawing{"      ", "      ", "   -  ", "      ", "      "}));
  EXPECT_EQ(DrawSixteenSegment(0x0000), (Drawing{"      ", "      ", "      ", "      ", "      "}));
}

}  // namespace
}  // namespace pelm
