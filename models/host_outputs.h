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

// Writes the only result of a getter whose contract requires a usable
// variable: false, with nothing written, when it is null or not writable, so
// the getter can refuse with PELM_ERR_PARAM instead of faulting in the host.
template <class T>
bool HandOverResult(T* out, T value) {
  return out != nullptr && platform::WriteToHostMemory(out, &value, sizeof value);
}

// The host's IsBadWritePtr test for `length` bytes: writing the memory's own
// bytes back succeeds only if all of it is writable.
inline bool HostCanWrite(void* destination, std::size_t length) {
  return destination != nullptr && platform::WriteToHostMemory(destination, destination, length);
}

// A signed count the device packs into one byte.
inline int16_t SignedByte(uint8_t byte) { return static_cast<int8_t>(byte); }

}  // namespace pelm
