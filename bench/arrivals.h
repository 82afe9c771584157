#pragma once
// When something last arrived at a receiver and how many things have: the
// latency benchmarks' meeting point between the thread that causes an event
// and the one that receives it.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "bench/bench_support.h"

namespace pelm::bench {

// A report that has not arrived by then is lost (the input callback gives up
// on a mutex it cannot get within a second).
inline constexpr auto kArrivalDeadline = std::chrono::seconds(2);

inline int64_t NowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
}

// When a report last arrived, and how many have, for one receiver. The time
// is taken first; telling the waiting injector costs the receiver afterwards.
struct Arrivals {
  std::atomic<int64_t> lastNs{0};
  std::mutex mutex;
  std::condition_variable arrived;
  uint64_t count = 0;

  void Note() {
    lastNs.store(NowNs(), std::memory_order_relaxed);
    {
      std::lock_guard hold(mutex);
      ++count;
    }
    arrived.notify_all();
  }

  uint64_t Count() {
    std::lock_guard hold(mutex);
    return count;
  }

  // False when no report came after the first `seen` within the deadline.
  bool WaitBeyond(uint64_t seen) {
    std::unique_lock hold(mutex);
    return arrived.wait_for(hold, kArrivalDeadline, [&] { return count > seen; });
  }
};

}  // namespace pelm::bench
