#pragma once
// How tests and test programs wait for another thread, a device or a process:
// they poll with a deadline instead of sleeping for a fixed time.

#include <chrono>
#include <functional>
#include <thread>

namespace pelm::testbed {

// Generous: kernel devices under software emulation on a machine shared with
// builds; a condition that holds ends the wait at once.
inline constexpr std::chrono::milliseconds kDefaultWaitDeadline = std::chrono::seconds(20);

// Polls `condition` until it holds or `deadline` passes; says whether it held.
inline bool WaitUntil(const std::function<bool()>& condition,
                      std::chrono::milliseconds deadline = kDefaultWaitDeadline) {
  const auto end = std::chrono::steady_clock::now() + deadline;
  while (!condition()) {
    if (std::chrono::steady_clock::now() >= end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

}  // namespace pelm::testbed
