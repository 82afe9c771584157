// Writes into host memory that may not be writable.

#include <gtest/gtest.h>

#include <cstring>

#include "platform/platform.h"
#include "support/guarded_memory.h"

namespace pelm::test {
namespace {

constexpr uint32_t kValue = 0x01020304;

TEST(HostMemoryTest, WritesWritableMemoryAndRefusesNullOrReadOnlyMemory) {
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  uint32_t writable = 0;
  EXPECT_TRUE(platform::WriteToHostMemory(&writable, &kValue, sizeof kValue));
  EXPECT_EQ(writable, kValue);
  EXPECT_FALSE(platform::WriteToHostMemory(nullptr, &kValue, sizeof kValue));
  EXPECT_FALSE(platform::WriteToHostMemory(memory.ReadOnly<uint32_t>(), &kValue, sizeof kValue));
}

TEST(HostMemoryTest, APartlyWritableDestinationIsLeftAsItWas) {
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  auto* straddling = reinterpret_cast<uint8_t*>(memory.LastByteReadOnly<uint32_t>());
  std::memset(straddling, 0xEE, sizeof kValue - 1);
  EXPECT_FALSE(platform::WriteToHostMemory(straddling, &kValue, sizeof kValue));
  for (std::size_t i = 0; i + 1 < sizeof kValue; ++i) EXPECT_EQ(straddling[i], 0xEE) << i;
}

}  // namespace
}  // namespace pelm::test
