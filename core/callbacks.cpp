#include "core/callbacks.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <thread>

#include "core/core_exports.h"
#include "platform/platform.h"

namespace pelm {
namespace {

constexpr char kInputCallbackMutexName[] = "PelmDev_MtxInputCallback";
constexpr std::chrono::milliseconds kInputCallbackWait{1000};

struct CallbackState {
  std::atomic<PelmConnectCallback> connect{nullptr};
  std::atomic<PelmConnectCallbackStdcall> connectStdcall{nullptr};

  std::atomic<PelmInputCallback> input{nullptr};
  std::atomic<PelmInputCallbackStdcall> inputStdcall{nullptr};
  // Readers take their own reference, so a registration that replaces the
  // mutex never pulls it from under a waiting dispatch.
  std::mutex inputMutexGuard;
  std::shared_ptr<platform::NamedMutex> inputMutex;

  std::atomic<PelmWakeupCallback> wakeup{nullptr};
  std::atomic<PelmWakeupCallbackStdcall> wakeupStdcall{nullptr};
  std::atomic<int32_t> wakeupInterval{0};
  std::atomic<uint32_t> wakeupRun{1};
  // Guards the decision to start the wakeup thread against the thread's own
  // decision to end, so a registration never relies on a thread that is
  // already leaving.
  std::mutex wakeupThreadGuard;
  bool wakeupThreadRunning = false;
};

// Never destroyed: a wakeup thread may still be sleeping when the process exits.
CallbackState& State() {
  static auto* state = new CallbackState;
  return *state;
}

std::shared_ptr<platform::NamedMutex> CurrentInputMutex() {
  std::lock_guard hold(State().inputMutexGuard);
  return State().inputMutex;
}

bool ReplaceInputMutex() {
  CallbackState& state = State();
  std::lock_guard hold(state.inputMutexGuard);
  state.inputMutex.reset();
  state.inputMutex = platform::CreateNamedMutex(kInputCallbackMutexName);
  return state.inputMutex != nullptr;
}

void CloseInputMutex() {
  std::lock_guard hold(State().inputMutexGuard);
  State().inputMutex.reset();
}

void WakeupThread() {
  CallbackState& state = State();
  for (;;) {
    {
      std::lock_guard hold(state.wakeupThreadGuard);
      if (state.wakeupRun != 1) {
        state.wakeupThreadRunning = false;
        return;
      }
    }
    // Read anew each cycle. Taken as unsigned, as the OS's sleep takes it: a
    // negative interval other than -1 is a very long one, not a busy loop.
    std::this_thread::sleep_for(std::chrono::milliseconds(static_cast<uint32_t>(state.wakeupInterval.load())));
    if (PelmWakeupCallback callback = state.wakeup.load()) callback();
    if (PelmWakeupCallbackStdcall callback = state.wakeupStdcall.load()) callback();
  }
}

template <class Callback>
uint32_t RegisterWakeup(std::atomic<Callback>& slot, Callback callback, int32_t intervalMs) {
  if (callback == nullptr || intervalMs == 0 || intervalMs == -1) return 0;
  CallbackState& state = State();
  std::lock_guard hold(state.wakeupThreadGuard);
  state.wakeupRun = 1;
  slot = callback;
  state.wakeupInterval = intervalMs;
  if (!state.wakeupThreadRunning) {
    try {
      std::thread(WakeupThread).detach();
      state.wakeupThreadRunning = true;
    } catch (const std::system_error&) {
      // No thread now; a later registration tries again.
    }
  }
  return 1;
}

template <class Callback>
uint32_t UnregisterWakeup(std::atomic<Callback>& slot) {
  State().wakeupRun = 0;
  return slot.exchange(nullptr) != nullptr ? 1 : 0;
}

template <class Callback, class Other>
uint32_t RegisterInput(std::atomic<Callback>& slot, std::atomic<Other>& other, Callback callback) {
  if (callback == nullptr) return 0;
  if (!ReplaceInputMutex()) return 0;
  slot = callback;
  other = nullptr;
  return 1;
}

template <class Callback>
uint32_t UnregisterInput(std::atomic<Callback>& slot) {
  if (slot.exchange(nullptr) == nullptr) return 0;
  CloseInputMutex();
  return 1;
}

template <class Callback>
uint32_t RegisterConnect(std::atomic<Callback>& slot, Callback callback) {
  if (callback == nullptr) return 0;
  slot = callback;
  return 1;
}

template <class Callback>
uint32_t UnregisterConnect(std::atomic<Callback>& slot) {
  return slot.exchange(nullptr) != nullptr ? 1 : 0;
}

}  // namespace

void DispatchInput(int32_t typeCode, int32_t deviceIndex, void* record) {
  const std::shared_ptr<platform::NamedMutex> mutex = CurrentInputMutex();
  if (!mutex || !mutex->LockFor(kInputCallbackWait)) return;
  if (PelmInputCallback callback = State().input.load()) {
    callback(typeCode, deviceIndex, record);
  } else if (PelmInputCallbackStdcall callback = State().inputStdcall.load()) {
    callback(typeCode, deviceIndex, record);
  }
  mutex->Unlock();
}

void NotifyConnect(int32_t typeCode, int32_t deviceIndex, int32_t event) {
  if (PelmConnectCallback callback = State().connect.load()) callback(typeCode, deviceIndex, event);
  if (PelmConnectCallbackStdcall callback = State().connectStdcall.load()) callback(typeCode, deviceIndex, event);
}

void ClearCallbacks() {
  CallbackState& state = State();
  state.input = nullptr;
  state.inputStdcall = nullptr;
  state.wakeup = nullptr;
  state.wakeupStdcall = nullptr;
  state.connect = nullptr;
  state.connectStdcall = nullptr;
  CloseInputMutex();
}

namespace exports {

uint32_t PelmDev_RegisterConnectCallback(PelmConnectCallback callback) { return RegisterConnect(State().connect, callback); }
uint32_t PelmDev_RegisterConnectCallback_stdcall(PelmConnectCallbackStdcall callback) {
  return RegisterConnect(State().connectStdcall, callback);
}
uint32_t PelmDev_UnregisterConnectCallback() { return UnregisterConnect(State().connect); }
uint32_t PelmDev_UnregisterConnectCallback_stdcall() { return UnregisterConnect(State().connectStdcall); }

uint32_t PelmDev_RegisterInputCallback(PelmInputCallback callback) {
  return RegisterInput(State().input, State().inputStdcall, callback);
}
uint32_t PelmDev_RegisterInputCallback_stdcall(PelmInputCallbackStdcall callback) {
  return RegisterInput(State().inputStdcall, State().input, callback);
}
uint32_t PelmDev_UnregisterInputCallback() { return UnregisterInput(State().input); }
uint32_t PelmDev_UnregisterInputCallback_stdcall() { return UnregisterInput(State().inputStdcall); }

uint32_t PelmDev_RegisterWakeupCallback(PelmWakeupCallback callback, int32_t intervalMs) {
  return RegisterWakeup(State().wakeup, callback, intervalMs);
}
uint32_t PelmDev_RegisterWakeupCallback_stdcall(PelmWakeupCallbackStdcall callback, int32_t intervalMs) {
  return RegisterWakeup(State().wakeupStdcall, callback, intervalMs);
}
uint32_t PelmDev_UnregisterWakeupCallback() { return UnregisterWakeup(State().wakeup); }
uint32_t PelmDev_UnregisterWakeupCallback_stdcall() { return UnregisterWakeup(State().wakeupStdcall); }

}  // namespace exports
}  // namespace pelm
