#include "models/segment_encoding.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>


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

}  // namespace
}  // namespace pelm
