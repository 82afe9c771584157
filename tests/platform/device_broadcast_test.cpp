#include "platform/win32/device_broadcast.h"

#include <gtest/gtest.h>

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace pelm::win32 {
namespace {

constexpr std::size_t kPathOffset = 28;
constexpr uint32_t kPortBroadcast = 3;  // DBT_DEVTYP_PORT
const std::string kPath = R"(\\?\HID#VID_FFF0&PID_0050#7&1A2B3C&0&0000#{4d1e55b2-f16f-11cf-88cb-001111000030})";

// A device-interface broadcast as the OS builds it: the size covers the path
// and its terminator, in 8-bit characters or UTF-16 units.
std::vector<uint8_t> Broadcast(const std::string& path, bool wide, uint32_t deviceType = kDeviceInterfaceBroadcast) {
  const std::size_t unit = wide ? 2 : 1;
  std::vector<uint8_t> bytes(kPathOffset + (path.size() + 1) * unit, 0);
  const auto size = static_cast<uint32_t>(bytes.size());
  for (int i = 0; i < 4; ++i) {
    bytes[i] = static_cast<uint8_t>(size >> (8 * i));
    bytes[4 + i] = static_cast<uint8_t>(deviceType >> (8 * i));
  }
  for (std::size_t i = 0; i < path.size(); ++i) bytes[kPathOffset + i * unit] = static_cast<uint8_t>(path[i]);
  return bytes;
}

// The path the broadcast gives, or nullopt when it is refused.
std::optional<std::string> PathIn(std::span<const uint8_t> broadcast) {
  std::array<char, 260> path;
  if (!ReadDeviceInterfacePath(broadcast, path)) return std::nullopt;
  return std::string(path.data());
}

TEST(DeviceBroadcastTest, EitherFormGivesAWholePathThatFitsAndNothingElse) {
  const std::string longest = R"(\\?\)" + std::string(255, 'A');
  for (const bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "UTF-16" : "8-bit");
    const std::vector<uint8_t> whole = Broadcast(kPath, wide);
    EXPECT_EQ(PathIn(whole), kPath);
    EXPECT_EQ(PathIn(Broadcast(longest, wide)), longest);
    EXPECT_EQ(PathIn(Broadcast(longest + "A", wide)), std::nullopt) << "no room for the terminator";
    // Truncated: the size ends inside the path, or before it.
    EXPECT_EQ(PathIn(std::span(whole).first(whole.size() - 10)), std::nullopt);
    EXPECT_EQ(PathIn(std::span(whole).first(kPathOffset)), std::nullopt);
    EXPECT_EQ(PathIn(std::span(whole).first(4)), std::nullopt);
    EXPECT_EQ(PathIn(Broadcast(kPath, wide, kPortBroadcast)), std::nullopt);
    EXPECT_EQ(PathIn(Broadcast("", wide)), std::nullopt);
  }
  // An odd size ends inside the last UTF-16 unit; one that cuts the terminator
  // leaves the path unterminated.
  std::vector<uint8_t> odd = Broadcast(kPath, true);
  odd.push_back(0xAB);
  EXPECT_EQ(PathIn(odd), kPath);
  EXPECT_EQ(PathIn(std::span(odd).first(odd.size() - 2)), std::nullopt);
  // A UTF-16 character that 8 bits cannot hold.
  std::vector<uint8_t> accented = Broadcast(kPath, true);
  accented[kPathOffset + 2 * 10 + 1] = 0x01;
  EXPECT_EQ(PathIn(accented), std::nullopt);
}

}  // namespace
}  // namespace pelm::win32
