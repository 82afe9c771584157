#pragma once
// The device path of a WM_DEVICECHANGE device-interface broadcast, read from
// its bytes alone: no Windows header is needed, so the Linux suite tests it.
//
// The broadcast's layout (DEV_BROADCAST_DEVICEINTERFACE): 32-bit size of the
// whole broadcast, 32-bit device type, 32-bit reserved, 16-byte class GUID, then
// the path, zero-terminated, from byte 28 to the end of the size. Windows
// gives a window whose class was registered with RegisterClassExA the 8-bit
// form of the path; Wine 8 gives it the UTF-16 form all the same. Interface
// paths begin with "\\?\", so a path whose second byte is 0 is UTF-16.

#include <cstddef>
#include <cstdint>
#include <span>

namespace pelm::win32 {

// DBT_DEVTYP_DEVICEINTERFACE
inline constexpr uint32_t kDeviceInterfaceBroadcast = 5;

// Copies the path, narrowed to 8-bit characters and zero-terminated, into
// `path`. False, with `path` left unspecified, for a broadcast of another
// device type, one whose size leaves no room for a path, an empty path, a path
// with no terminator within the size (a truncated broadcast), a path that does
// not fit `path` with its terminator, and a UTF-16 path with a character
// outside ASCII (no interface path has one).
bool ReadDeviceInterfacePath(std::span<const uint8_t> broadcast, std::span<char> path);

}  // namespace pelm::win32
