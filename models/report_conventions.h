#pragma once
// Conventions that the models' reports share.

#include <cstdint>

namespace pelm {

// Brightness levels are four bits: setters send the level AND this mask.
inline constexpr uint8_t kBrightnessMask = 0x0F;

}  // namespace pelm
