#include "core/callbacks.h"

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "channel/thread_entry.h"
#include "core/callback_calls.h"
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
  // The wakeup thread starts with the first registration and lives until
  // Terminate; between an unregistration and the next registration it waits
  // without a timer. The flags below are guarded by wakeupGuard.
  std::mutex wakeupGuard;
  std::condition_variable wakeupChanged;
  bool wakeupCalling = false;
  bool wakeupEnding = false;
  std::thread wakeupThread;

  std::array<CallsInFlight, kCallbackKindCount> calls;

  // A host that unloads the library without Terminate leaves the wakeup thread
  // behind; ending the process here over it would be worse than letting it go.
  ~CallbackState() {
    if (wakeupThread.joinable()) wakeupThread.detach();
  }
};

CallbackState& State() {
  static CallbackState state;
  return state;
}

CallsInFlight& Calls(CallbackKind kind) { return State().calls[static_cast<std::size_t>(kind)]; }

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

void CallWakeupCallbacks() {
  if (PelmWakeupCallback callback = State().wakeup.load()) callback();
  if (PelmWakeupCallbackStdcall callback = State().wakeupStdcall.load()) callback();
}

void WakeupLoop() {
  CallbackState& state = State();
  std::unique_lock hold(state.wakeupGuard);
  while (!state.wakeupEnding) {
    if (!state.wakeupCalling) {
      state.wakeupChanged.wait(hold);
      continue;
    }
    // Read anew each cycle. Taken as unsigned, as the OS's sleep takes it: a
    // negative interval other than -1 is a very long one, not a busy loop.
    const std::chrono::milliseconds interval(static_cast<uint32_t>(state.wakeupInterval.load()));
    if (state.wakeupChanged.wait_for(hold, interval, [&] { return state.wakeupEnding || !state.wakeupCalling; })) {
      continue;
    }
    // Counted as running before the guard is let go, so that an unregistration
    // that has stopped the calls also sees this one and waits for it.
    {
      CallbackScope running(CallbackKind::Wakeup, Calls(CallbackKind::Wakeup));
      hold.unlock();
      // A callback that throws costs its own call, not the later ones.
      RunThreadBody(CallWakeupCallbacks);
    }
    hold.lock();
  }
}

void WakeupThread() { RunThreadBody(WakeupLoop); }

template <class Callback>
uint32_t RegisterWakeup(std::atomic<Callback>& slot, Callback callback, int32_t intervalMs) {
  if (callback == nullptr || intervalMs == 0 || intervalMs == -1) return 0;
  CallbackState& state = State();
  {
    std::lock_guard hold(state.wakeupGuard);
    if (!state.wakeupThread.joinable()) {
      try {
        state.wakeupThread = std::thread(WakeupThread);
      } catch (const std::system_error&) {
        return 0;
      }
    }
    slot = callback;
    state.wakeupInterval = intervalMs;
    state.wakeupCalling = true;
  }
  state.wakeupChanged.notify_all();
  return 1;
}

template <class Callback>
uint32_t UnregisterWakeup(std::atomic<Callback>& slot) {
  CallbackState& state = State();
  {
    std::lock_guard hold(state.wakeupGuard);
    state.wakeupCalling = false;
  }
  state.wakeupChanged.notify_all();
  const uint32_t wasSet = slot.exchange(nullptr) != nullptr ? 1 : 0;
  Calls(CallbackKind::Wakeup).WaitUntilOnlyOwnCallsRun(CallbackKind::Wakeup);
  return wasSet;
}

void EndWakeupThread() {
  CallbackState& state = State();
  {
    std::lock_guard hold(state.wakeupGuard);
    state.wakeupEnding = true;
    state.wakeupCalling = false;
  }
  state.wakeupChanged.notify_all();
  if (state.wakeupThread.joinable()) state.wakeupThread.join();
  std::lock_guard hold(state.wakeupGuard);
  state.wakeupThread = std::thread();
  state.wakeupEnding = false;
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
  Calls(CallbackKind::Input).WaitUntilOnlyOwnCallsRun(CallbackKind::Input);
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
  const uint32_t wasSet = slot.exchange(nullptr) != nullptr ? 1 : 0;
  Calls(CallbackKind::Connect).WaitUntilOnlyOwnCallsRun(CallbackKind::Connect);
  return wasSet;
}

}  // namespace

void DispatchInput(int32_t typeCode, int32_t deviceIndex, void* record) {
  const std::shared_ptr<platform::NamedMutex> mutex = CurrentInputMutex();
  if (!mutex || !mutex->LockFor(kInputCallbackWait)) return;
  // The mutex is let go however the callback ends.
  const std::unique_ptr<platform::NamedMutex, void (*)(platform::NamedMutex*)> unlock(
      mutex.get(), [](platform::NamedMutex* held) { held->Unlock(); });
  CallbackScope running(CallbackKind::Input, Calls(CallbackKind::Input));
  if (PelmInputCallback callback = State().input.load()) {
    callback(typeCode, deviceIndex, record);
  } else if (PelmInputCallbackStdcall callback = State().inputStdcall.load()) {
    callback(typeCode, deviceIndex, record);
  }
}

void NotifyConnect(int32_t typeCode, int32_t deviceIndex, int32_t event) {
  CallbackScope running(CallbackKind::Connect, Calls(CallbackKind::Connect));
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
  EndWakeupThread();
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
