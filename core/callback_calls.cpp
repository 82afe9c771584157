#include "core/callback_calls.h"

#include <array>

namespace pelm {
namespace {

// Calls of each kind under way on this thread (a thread runs at most one kind
// at a time, but counting keeps nesting honest).
thread_local std::array<int32_t, kCallbackKindCount> callsOnThisThread{};

int32_t& OwnCalls(CallbackKind kind) { return callsOnThisThread[static_cast<std::size_t>(kind)]; }

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

void CallsInFlight::WaitUntilOnlyOwnCallsRun(CallbackKind kind) {
  const int32_t own = OwnCalls(kind);
  std::unique_lock hold(mutex_);
  changed_.wait(hold, [&] { return running_ <= own; });
}

CallbackScope::CallbackScope(CallbackKind kind, CallsInFlight& calls) : kind_(kind), calls_(calls) {
  calls_.Enter();
  ++OwnCalls(kind_);
}

CallbackScope::~CallbackScope() {
  --OwnCalls(kind_);
  calls_.Leave();
}

bool InsideCallback() {
  for (const int32_t calls : callsOnThisThread) {
    if (calls > 0) return true;
  }
  return false;
}

}  // namespace pelm
