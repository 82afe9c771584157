#pragma once
// Handing control state to the host through its output pointers. Getters of
// several values skip a pointer that is null or names memory the host cannot
// write, and still succeed.

#include <atomic>
#include <cstdint>

#include "platform/platform.h"

namespace pelm {

// Hands a dial's movement count to the host and starts counting afresh. A null
// or unwritable pointer leaves the count for a later call.
inline void HandOutDial(std::atomic<int16_t>& dial, int16_t* out) {
  if (out == nullptr) return;
  const int16_t count = dial.exchange(0);
  if (platform::WriteToHostMemory(out, &count, sizeof count)) return;
  // Give the count back, unless a newer report has replaced it meanwhile.
  int16_t replaced = 0;
  dial.compare_exchange_strong(replaced, count);
}

// Hands a value that stays as it is (switch bits).
template <class T>
void HandOut(const std::atomic<T>& value, T* out) {
  const T current = value.load();
  platform::WriteToHostMemory(out, &current, sizeof current);
}

// A signed count the device packs into one byte.
inline int16_t SignedByte(uint8_t byte) { return static_cast<int8_t>(byte); }

}  // namespace pelm
