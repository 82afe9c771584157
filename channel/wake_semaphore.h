#pragma once
// The semaphore that wakes a writer thread: one count per queued report, capped
// at the queue limit. A release beyond the cap is ignored, as a Windows
// semaphore ignores it (racing host threads may queue a few reports past the
// limit).

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace pelm {

class WakeSemaphore {
 public:
  explicit WakeSemaphore(uint32_t maximum) : maximum_(maximum) {}

  void Release() {
    {
      std::lock_guard hold(mutex_);
      if (count_ >= maximum_) return;
      ++count_;
    }
    wake_.notify_one();
  }

  // Takes one count, waiting at most `timeout` for it; false on time-out.
  bool AcquireFor(std::chrono::milliseconds timeout) {
    std::unique_lock hold(mutex_);
    if (!wake_.wait_for(hold, timeout, [this] { return count_ > 0; })) return false;
    --count_;
    return true;
  }

  void Reset() {
    std::lock_guard hold(mutex_);
    count_ = 0;
  }

 private:
  const uint32_t maximum_;
  std::mutex mutex_;
  std::condition_variable wake_;
  uint32_t count_ = 0;
};

}  // namespace pelm
