#include "platform/win32/device_broadcast.h"

namespace pelm::win32 {
namespace {

constexpr std::size_t kDeviceTypeOffset = 4;
constexpr std::size_t kPathOffset = 28;
constexpr uint8_t kHighestAscii = 0x7F;

uint32_t ReadLittleEndian32(std::span<const uint8_t> bytes, std::size_t offset) {
  return static_cast<uint32_t>(bytes[offset]) | static_cast<uint32_t>(bytes[offset + 1]) << 8 |
         static_cast<uint32_t>(bytes[offset + 2]) << 16 | static_cast<uint32_t>(bytes[offset + 3]) << 24;
}

// Copies the characters of `name` (each `unitBytes` wide, little-endian) up to
// its terminator into `path`.
bool CopyPath(std::span<const uint8_t> name, std::size_t unitBytes, std::span<char> path) {
  const std::size_t units = name.size() / unitBytes;
  for (std::size_t i = 0; i < units && i < path.size(); ++i) {
    const uint8_t low = name[i * unitBytes];
    const bool wideHighByte = unitBytes == 2 && name[i * unitBytes + 1] != 0;
    if (low == 0 && !wideHighByte) {
      path[i] = '\0';
      return true;
    }
    if (unitBytes == 2 && (wideHighByte || low > kHighestAscii)) return false;
    path[i] = static_cast<char>(low);
  }
  return false;
}

}  // namespace

bool ReadDeviceInterfacePath(std::span<const uint8_t> broadcast, std::span<char> path) {
  if (broadcast.size() <= kPathOffset) return false;
  if (ReadLittleEndian32(broadcast, kDeviceTypeOffset) != kDeviceInterfaceBroadcast) return false;
  const std::span<const uint8_t> name = broadcast.subspan(kPathOffset);
  const bool wide = name.size() >= 2 && name[0] != 0 && name[1] == 0;
  return CopyPath(name, wide ? 2 : 1, path) && path[0] != '\0';
}

}  // namespace pelm::win32
