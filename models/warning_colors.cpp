#include "models/warning_colors.h"

namespace pelm {
namespace {

// What a colour puts into each component: nothing, the component level of the
// brightness, or the constant 1 whatever the brightness (colour 6's third).
enum class Component : uint8_t { Off, Level, FixedOne };
constexpr uint8_t kFixedOneValue = 1;
constexpr float kBrightnessSteps = 15.0f;
constexpr float kFullComponentLevel = 100.0f;

using Mix = std::array<Component, 3>;
constexpr Component O = Component::Off;
constexpr Component L = Component::Level;
constexpr std::array<Mix, kColorIndexCount> kColorTable = {{
    {O, O, O},  // 0: dark
    {L, L, L},
    {L, O, O},
    {O, L, O},
    {O, O, L},
    {L, O, L},
    {L, L, Component::FixedOne},
    {O, L, L},
}};

}  // namespace

uint8_t ComponentLevel(int16_t brightness) {
  const float level = static_cast<float>(brightness) / kBrightnessSteps * kFullComponentLevel;
  return static_cast<uint8_t>(static_cast<int32_t>(level));
}

ColorComponents ComponentsOf(uint8_t colorIndex, int16_t brightness) {
  const uint8_t level = ComponentLevel(brightness);
  ColorComponents components{};
  for (std::size_t i = 0; i < components.size(); ++i) {
    switch (kColorTable[colorIndex][i]) {
      case Component::Off:
        components[i] = 0;
        break;
      case Component::Level:
        components[i] = level;
        break;
      case Component::FixedOne:
        components[i] = kFixedOneValue;
        break;
    }
  }
  return components;
}

}  // namespace pelm
