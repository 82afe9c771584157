#include "core/callback_calls.h"

namespace pelm {
namespace {

// Callbacks under way on this thread.
thread_local int32_t callbackDepth = 0;

}  // namespace

void CallsInFlight::Enter() {
  std::lock_guard hold(mutex_);
  ++running_;
}

void CallsInFlight::Leave() {
  {
    std::lock_guard hold(mutex_);
    --running_;
  }
  changed_.notify_all();
}

void CallsInFlight::WaitUntilNoneRuns() {
  if (InsideCallback()) return;
  std::unique_lock hold(mutex_);
  changed_.wait(hold, [this] { return running_ == 0; });
}

CallbackScope::CallbackScope(CallsInFlight& calls) : calls_(calls) {
  calls_.Enter();
  ++callbackDepth;
}

CallbackScope::~CallbackScope() {
  --callbackDepth;
  calls_.Leave();
}

bool InsideCallback() { return callbackDepth > 0; }

}  // namespace pelm
