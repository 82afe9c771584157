// The four text encoders on any bytes and any position count up to the widest
// display. Each output lives in a buffer of exactly `count` positions so that a
// write past the display is caught.

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "models/segment_encoding.h"

namespace {

// The widest display the panels have, in positions.
constexpr uint16_t kWidestDisplay = 6;

enum class Encoder : uint8_t { Segments, LonePointSegments, Numeric, Character, Alpha, Count };

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const auto encoder = static_cast<Encoder>(data[0] % static_cast<uint8_t>(Encoder::Count));
  const auto count = static_cast<uint16_t>(data[1] % (kWidestDisplay + 1));
  const std::string text(reinterpret_cast<const char*>(data + 2), size - 2);  // NUL-terminated copy

  auto segments = std::make_unique<uint8_t[]>(count);
  auto glyphs = std::make_unique<uint16_t[]>(count);
  switch (encoder) {
    case Encoder::Segments:
      pelm::TextToSegments(text.c_str(), segments.get(), count, false);
      break;
    case Encoder::LonePointSegments:
      pelm::TextToSegments(text.c_str(), segments.get(), count, true);
      break;
    case Encoder::Numeric:
      pelm::TextToNumericSegments(text.c_str(), segments.get(), count);
      break;
    case Encoder::Character:
      pelm::CharToSegments(text.c_str());
      break;
    case Encoder::Alpha:
      pelm::TextToAlphaSegments(text.c_str(), glyphs.get(), count);
      break;
    case Encoder::Count:
      break;
  }
  return 0;
}
