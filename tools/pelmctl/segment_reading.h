#pragma once
// Reads segment bytes back into the characters they show, so the demo can
// check what its displays ended with.

#include <cstdint>
#include <span>
#include <string>

namespace pelmctl {

// Digits, "-" and blanks; a lit point adds "." after its character; a pattern
// that is no character reads as "?".
std::string ReadSevenSegments(std::span<const uint8_t> segments);

}  // namespace pelmctl
