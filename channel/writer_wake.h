#pragma once
// How a writer thread sleeps and who wakes it. The writer sleeps only when it
// has nothing to send; a host thread that queues a report pays for a wake only
// when the writer may be asleep, and otherwise for one atomic load.
//
// The writer says it is asleep before it looks for work one last time, and a
// host thread looks whether it is asleep after its append: whichever comes
// second sees the other, so no report is left waiting for a writer that sleeps.

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>

namespace pelm {

class WriterWake {
 public:
  // After an append: wakes the writer if it may be asleep.
  void WakeIfAsleep() {
    if (asleep_.load()) Wake();
  }

  // Wakes the writer whatever it is doing (its stop).
  void Wake() {
    {
      std::lock_guard hold(mutex_);
      signalled_ = true;
    }
    wake_.notify_one();
  }

  // Sleeps until woken, unless `hasWork` holds once the writer counts as
  // asleep; false when `timeout` passed first.
  template <class HasWork>
  bool Sleep(HasWork&& hasWork, std::chrono::milliseconds timeout = kNoTimeout) {
    std::unique_lock hold(mutex_);
    // A wake from before this look is stale: the look sees its work.
    signalled_ = false;
    asleep_ = true;
    bool woken = true;
    if (!hasWork()) {
      const auto signalled = [this] { return signalled_; };
      if (timeout == kNoTimeout) {
        wake_.wait(hold, signalled);
      } else {
        woken = wake_.wait_for(hold, timeout, signalled);
      }
    }
    asleep_ = false;
    return woken;
  }

  static constexpr std::chrono::milliseconds kNoTimeout = std::chrono::milliseconds::max();

 private:
  std::mutex mutex_;
  std::condition_variable wake_;
  bool signalled_ = false;
  std::atomic<bool> asleep_{false};
};

}  // namespace pelm
