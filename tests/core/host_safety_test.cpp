// What a plug-in host does from inside the library's callbacks, for every kind
// of callback: calls that would tear down the thread the callback runs on are
// refused, everything else works, and an unregistration from another thread
// returns only once the running call has ended.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <functional>
#include <future>
#include <memory>
#include <new>
#include <thread>

#include "support/library_fixture.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kButtonsId = 0x0020;
constexpr int32_t kWakeupIntervalMs = 1;
// How long a blocked callback waits to see its context freed; a library that
// lets the unregistration return early frees it well within this.
constexpr auto kEarlyReturnWindow = 500ms;

// The body the callback under test runs, once: later calls (the wakeup thread
// keeps calling) return at once.
std::function<void()> body;
std::atomic<bool> bodyPending{false};

void RunBodyOnce() {
  if (bodyPending.exchange(false)) body();
}
void PELM_CDECL ConnectHook(int32_t, int32_t, int32_t) { RunBodyOnce(); }
void PELM_CDECL InputHook(int32_t, int32_t, void*) { RunBodyOnce(); }
void PELM_CDECL WakeupHook() { RunBodyOnce(); }

struct CallbackCase {
  const char* name;
  uint32_t (*registerHook)();
  uint32_t (*unregister)();
};

const CallbackCase kCallbackCases[] = {
    {"connect", [] { return PelmDev_RegisterConnectCallback(ConnectHook); }, PelmDev_UnregisterConnectCallback},
    {"input", [] { return PelmDev_RegisterInputCallback(InputHook); }, PelmDev_UnregisterInputCallback},
    {"wakeup", [] { return PelmDev_RegisterWakeupCallback(WakeupHook, kWakeupIntervalMs); },
     PelmDev_UnregisterWakeupCallback},
};

class HostSafetyTest : public LibraryTest, public ::testing::WithParamInterface<CallbackCase> {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    panel_ = Plug(kButtonsId, 1);
    PelmDev_Init(kHostInstance);
  }
  void TearDown() override {
    if (pump_.joinable()) pump_.join();
    LibraryTest::TearDown();
  }

  // Registers the case's callback to run `hookBody` once, and makes the library
  // call it on a thread other than the test's.
  void RunInsideCallback(std::function<void()> hookBody) {
    body = std::move(hookBody);
    bodyPending = true;
    ASSERT_EQ(GetParam().registerHook(), 1u);
    if (GetParam().registerHook == kCallbackCases[0].registerHook) {
      // Connect callbacks run inside the pump, here on a thread of its own.
      Plug(kButtonsId, 2);
      pump_ = std::thread([] { WaitUntil([] { return PelmDevExt_DispatchEvents() > 0; }); });
    } else {
      panel_->InjectInput({0, 1});
    }
  }

 private:
  std::shared_ptr<sim::SimDevice> panel_;
  std::thread pump_;
};

TEST_P(HostSafetyTest, FromInsideACallbackInitAndTerminateAreRefusedAndOtherCallsWork) {
  // What the calls made inside gave: Terminate, Init, whether the panel is still
  // counted, a setter, a getter, the unregistration.
  using Results = std::array<int64_t, 6>;
  static std::promise<Results> inside;
  inside = {};
  const CallbackCase kind = GetParam();
  RunInsideCallback([kind] {
    uint8_t switches = 0;
    inside.set_value({PelmDev_Terminate(), PelmDev_Init(kHostInstance), PelmButtons_GetNumDevices() >= 1,
                      PelmButtons_SetIndicators(0, 1), PelmButtons_GetSwitchVals(0, &switches), kind.unregister()});
  });
  std::future<Results> results = inside.get_future();
  ASSERT_TRUE(WaitUntil([&] { return results.wait_for(0s) == std::future_status::ready; }));
  EXPECT_EQ(results.get(), (Results{1, 1, true, PELM_SUCCESS, PELM_SUCCESS, 1}));
  // The refused calls changed nothing: the panel is still open and served.
  EXPECT_GE(PelmButtons_GetNumDevices(), 1u);
  EXPECT_EQ(kind.unregister(), 0u);
}

TEST_P(HostSafetyTest, TheContextOfACallbackMayBeFreedOnceUnregistrationReturns) {
  static std::atomic<int*> context;
  static std::atomic<bool> inside, contextFreed, freedWhileRunning;
  context = new int(0);
  inside = contextFreed = freedWhileRunning = false;
  RunInsideCallback([] {
    inside = true;
    WaitUntil([] { return contextFreed.load(); }, kEarlyReturnWindow);
    freedWhileRunning = contextFreed.load();
    ++*context.load();  // a use-after-free under ASan when unregistration returned early
  });
  ASSERT_TRUE(WaitUntil([] { return inside.load(); }));
  // The host, on the test's thread, frees the context once it is unregistered.
  GetParam().unregister();
  delete context.exchange(nullptr);
  contextFreed = true;
  EXPECT_FALSE(freedWhileRunning);
}

// A panel whose feature reads throw, as an allocation deep inside a transfer can.
std::atomic<bool> featureReadsThrow{false};
class ThrowingPanel : public sim::GenericPanel {
 public:
  bool AnswerFeature(uint8_t* report, uint32_t length) override {
    if (featureReadsThrow) throw std::bad_alloc();
    return GenericPanel::AnswerFeature(report, length);
  }
};

using HostSafetyFailuresTest = LibraryTest;

TEST_F(HostSafetyFailuresTest, AnExceptionInsideAnExportBecomesItsFailureStatus) {
  bus().PlugWithPanel(PanelDescription(kButtonsId, 1), std::make_unique<ThrowingPanel>());
  PelmDev_Init(nullptr);
  featureReadsThrow = true;
  uint16_t level = 7;
  int32_t status = PELM_SUCCESS;
  EXPECT_NO_THROW(status = PelmButtons_GetBrightness(0, &level));
  featureReadsThrow = false;
  EXPECT_EQ(status, PELM_ERR_NOMEM);
  EXPECT_EQ(level, 7);
}

TEST_F(HostSafetyFailuresTest, WithoutACancellableReadADeviceIsNotOpenedAndNothingHangs) {
  Plug(kButtonsId, 1);
  bus().FailReadCancels(true);
  PelmDev_Init(kHostInstance);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
  // Nor at arrival, and a device that comes back without one stays away.
  Plug(kButtonsId, 2);
  EXPECT_TRUE(WaitUntil([] { return PelmDevExt_DispatchEvents() > 0; }));
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
  bus().FailReadCancels(false);
  PelmDev_Init(kHostInstance);
  ASSERT_EQ(PelmButtons_GetNumDevices(), 2u);
  bus().Unplug(InterfacePath(kButtonsId, 1));
  bus().FailReadCancels(true);
  Plug(kButtonsId, 1);
  EXPECT_TRUE(WaitUntil([] { return PelmDevExt_DispatchEvents() > 0; }));
  EXPECT_EQ(PelmButtons_GetNumDevices(), 1u);
  PelmDev_Terminate();  // returns: no reader waits for a signal that cannot come
}

INSTANTIATE_TEST_SUITE_P(EveryCallbackKind, HostSafetyTest, ::testing::ValuesIn(kCallbackCases),
                         [](const ::testing::TestParamInfo<CallbackCase>& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace pelm::test
