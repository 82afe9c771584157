#include "platform/win32/device_broadcast.h"

#include <gtest/gtest.h>

#include <array>
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

using PathBuffer = std::array<char, 260>;

TEST(DeviceBroadcastTest, BothFormsGiveThePath) {
  for (const bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "UTF-16" : "8-bit");
    PathBuffer path;
    ASSERT_TRUE(ReadDeviceInterfacePath(Broadcast(kPath, wide), path));
    EXPECT_EQ(std::string(path.data()), kPath);
  }
}

TEST(DeviceBroadcastTest, AnOddSizeEndsInsideTheLastUnit) {
  std::vector<uint8_t> bytes = Broadcast(kPath, true);
  bytes.push_back(0xAB);
  PathBuffer path;
  ASSERT_TRUE(ReadDeviceInterfacePath(bytes, path));
  EXPECT_EQ(std::string(path.data()), kPath);
  // An odd size that cuts the terminator leaves the path unterminated.
  EXPECT_FALSE(ReadDeviceInterfacePath(std::span(bytes).first(bytes.size() - 2), path));
}

TEST(DeviceBroadcastTest, APathMustFitTheBufferWithItsTerminator) {
  const std::string longest = R"(\\?\)" + std::string(255, 'A');
  const std::string tooLong = longest + "A";
  for (const bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "UTF-16" : "8-bit");
    PathBuffer path;
    ASSERT_TRUE(ReadDeviceInterfacePath(Broadcast(longest, wide), path));
    EXPECT_EQ(std::string(path.data()), longest);
    EXPECT_FALSE(ReadDeviceInterfacePath(Broadcast(tooLong, wide), path));
  }
}

TEST(DeviceBroadcastTest, BroadcastsWithoutAUsablePathAreRefused) {
  PathBuffer path;
  for (const bool wide : {false, true}) {
    SCOPED_TRACE(wide ? "UTF-16" : "8-bit");
    const std::vector<uint8_t> whole = Broadcast(kPath, wide);
    // Truncated: the size ends inside the path, or before it.
    EXPECT_FALSE(ReadDeviceInterfacePath(std::span(whole).first(whole.size() - 10), path));
    EXPECT_FALSE(ReadDeviceInterfacePath(std::span(whole).first(kPathOffset), path));
    EXPECT_FALSE(ReadDeviceInterfacePath(std::span(whole).first(4), path));
    EXPECT_FALSE(ReadDeviceInterfacePath(Broadcast(kPath, wide, kPortBroadcast), path));
    EXPECT_FALSE(ReadDeviceInterfacePath(Broadcast("", wide), path));
  }
  // A UTF-16 character that 8 bits cannot hold.
  std::vector<uint8_t> accented = Broadcast(kPath, true);
  accented[kPathOffset + 2 * 10 + 1] = 0x01;
  EXPECT_FALSE(ReadDeviceInterfacePath(accented, path));
}

}  // namespace
}  // namespace pelm::win32
