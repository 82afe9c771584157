#pragma once
// Which host callbacks are running, on which threads: what lets an
// unregistration wait until no call of its callback runs, and what lets the
// library refuse a call that would tear down the thread it is made on.

#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>

namespace pelm {

enum class CallbackKind { Connect, Input, Wakeup };
inline constexpr std::size_t kCallbackKindCount = 3;

// The calls of one kind of callback that are running now, on any thread.
class CallsInFlight {
 public:
  void Enter();
  void Leave();
  // Returns once no call of this kind runs except those of the calling thread
  // (an unregistration from inside its own callback must not wait for itself).
  void WaitUntilOnlyOwnCallsRun(CallbackKind kind);

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int32_t running_ = 0;
};

// Marks a call of `kind` as running, on this thread and in `calls`, for as long
// as the scope lasts.
class CallbackScope {
 public:
  CallbackScope(CallbackKind kind, CallsInFlight& calls);
  ~CallbackScope();
  CallbackScope(const CallbackScope&) = delete;
  CallbackScope& operator=(const CallbackScope&) = delete;

 private:
  const CallbackKind kind_;
  CallsInFlight& calls_;
};

// True while the calling thread is inside a callback of this library.
bool InsideCallback();

}  // namespace pelm
