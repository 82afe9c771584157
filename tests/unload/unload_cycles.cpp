// The library as a plug-in host holds it: loaded with dlopen, used with every
// kind of callback, terminated and unloaded, again and again. After Terminate
// no thread of the library may be left, or the unload pulls its code from under
// it.

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <thread>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "platform/sim/pelm_sim.h"
#include "testbed/wait_until.h"

namespace {

using pelm::testbed::WaitUntil;

constexpr int kCycles = 200;
constexpr int32_t kButtonPanel = PELM_MODEL_BUTTONS;
constexpr int32_t kWakeupIntervalMs = 1;
void* const kHostInstance = reinterpret_cast<void*>(0x400000);

std::atomic<int> connectCalls{0};
std::atomic<int> inputCalls{0};
std::atomic<int> wakeupCalls{0};

void PELM_CDECL OnConnect(int32_t, int32_t, int32_t) { ++connectCalls; }
void PELM_CDECL OnInput(int32_t, int32_t, void*) { ++inputCalls; }
void PELM_CDECL OnWakeup() { ++wakeupCalls; }
void PELM_STDCALL OnWakeupStdcall() { ++wakeupCalls; }

std::size_t ThreadsOfThisProcess() {
  std::size_t count = 0;
  for ([[maybe_unused]] const auto& task : std::filesystem::directory_iterator("/proc/self/task")) ++count;
  return count;
}

// The exports this test uses, looked up in one loaded copy of the library.
class LoadedLibrary {
 public:
  LoadedLibrary() : handle_(dlopen(PELM_SIM_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  ~LoadedLibrary() {
    if (handle_ != nullptr) dlclose(handle_);
  }
  bool Loaded() const { return handle_ != nullptr; }
  bool Unload() {
    const bool closed = dlclose(handle_) == 0;
    handle_ = nullptr;
    return closed;
  }
  template <class Function>
  Function* Find(const char* name) const {
    return reinterpret_cast<Function*>(dlsym(handle_, name));
  }

 private:
  void* handle_;
};

bool LibraryStillMapped() {
  void* handle = dlopen(PELM_SIM_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
  if (handle == nullptr) return false;
  dlclose(handle);
  return true;
}

TEST(UnloadCycles, EveryCallbackKindThenTerminateLeavesNoThreadAndTheLibraryUnloads) {
  // ThreadSanitizer starts a thread of its own with the first thread a
  // program makes: let it, before counting.
  std::thread([] {}).join();
  const std::size_t threadsBefore = ThreadsOfThisProcess();
  for (int cycle = 0; cycle < kCycles; ++cycle) {
    SCOPED_TRACE(cycle);
    LoadedLibrary library;
    ASSERT_TRUE(library.Loaded()) << dlerror();
    auto* plug = library.Find<decltype(PelmSim_Plug)>("PelmSim_Plug");
    auto* inject = library.Find<decltype(PelmSim_InjectInput)>("PelmSim_InjectInput");
    auto* reset = library.Find<decltype(PelmSim_Reset)>("PelmSim_Reset");
    auto* serve = library.Find<decltype(PelmSim_Serve)>("PelmSim_Serve");
    auto* init = library.Find<decltype(PelmDev_Init)>("PelmDev_Init");
    auto* terminate = library.Find<decltype(PelmDev_Terminate)>("PelmDev_Terminate");
    auto* dispatch = library.Find<decltype(PelmDevExt_DispatchEvents)>("PelmDevExt_DispatchEvents");
    auto* onConnect = library.Find<decltype(PelmDev_RegisterConnectCallback)>("PelmDev_RegisterConnectCallback");
    auto* onInput = library.Find<decltype(PelmDev_RegisterInputCallback)>("PelmDev_RegisterInputCallback");
    auto* onWakeup = library.Find<decltype(PelmDev_RegisterWakeupCallback)>("PelmDev_RegisterWakeupCallback");
    auto* onWakeupStdcall =
        library.Find<decltype(PelmDev_RegisterWakeupCallback_stdcall)>("PelmDev_RegisterWakeupCallback_stdcall");
    ASSERT_TRUE(plug && inject && reset && serve && init && terminate && dispatch && onConnect && onInput && onWakeup &&
                onWakeupStdcall);

    connectCalls = inputCalls = wakeupCalls = 0;
    // The web view's threads end at Reset, or at the unload when the host
    // leaves it running.
    const bool resetBeforeUnload = cycle % 2 == 0;
    ASSERT_GT(serve(0), 0);
    ASSERT_EQ(plug(kButtonPanel, 1), 1);
    ASSERT_EQ(init(kHostInstance), 0u);
    ASSERT_EQ(onConnect(OnConnect), 1u);
    ASSERT_EQ(onInput(OnInput), 1u);
    ASSERT_EQ(onWakeup(OnWakeup, kWakeupIntervalMs), 1u);
    ASSERT_EQ(onWakeupStdcall(OnWakeupStdcall, kWakeupIntervalMs), 1u);

    const uint8_t press[] = {0, 1};
    ASSERT_EQ(inject(kButtonPanel, 1, press, sizeof press), 1);
    ASSERT_EQ(plug(kButtonPanel, 2), 1);
    ASSERT_TRUE(WaitUntil([&] {
      dispatch();
      return connectCalls > 0 && inputCalls > 0 && wakeupCalls > 1;
    }));

    ASSERT_EQ(terminate(), 0u);
    if (resetBeforeUnload) {
      reset();
      EXPECT_TRUE(WaitUntil([&] { return ThreadsOfThisProcess() == threadsBefore; }))
          << ThreadsOfThisProcess() - threadsBefore << " threads left after Terminate and Reset";
    }
    ASSERT_TRUE(library.Unload());
    ASSERT_FALSE(LibraryStillMapped());
    EXPECT_TRUE(WaitUntil([&] { return ThreadsOfThisProcess() == threadsBefore; }))
        << ThreadsOfThisProcess() - threadsBefore << " threads left after the unload";
  }
}

}  // namespace
