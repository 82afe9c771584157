// The host's callbacks: registration of every form, both calling forms, the
// input-callback mutex and the wakeup thread.

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <mutex>
#include <thread>
#include <type_traits>

#include "support/input_capture.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kButtonsId = 0x0020;

std::atomic<int> stdcallCalls{0};
std::mutex orderMutex;
std::string order;

void PELM_CDECL IgnoreConnect(int32_t, int32_t, int32_t) {}
void PELM_STDCALL IgnoreConnectStdcall(int32_t, int32_t, int32_t) {}
void PELM_CDECL IgnoreInput(int32_t, int32_t, void*) {}
void PELM_STDCALL CountStdcallInput(int32_t, int32_t, void*) { ++stdcallCalls; }
void PELM_CDECL WakeDefault() {
  std::lock_guard hold(orderMutex);
  order += 'd';
}
void PELM_STDCALL WakeStdcall() {
  std::lock_guard hold(orderMutex);
  order += 's';
}
std::string Order() {
  std::lock_guard hold(orderMutex);
  return order;
}

// One calling form of one kind of callback: the registrations it must refuse
// (null callback, dead intervals; their results added up), one it must store,
// and its unregistration.
struct CallbackForm {
  const char* name;
  std::function<uint32_t()> refused;
  std::function<uint32_t()> stored;
  std::function<uint32_t()> unregister;
};

// The wakeup forms take an interval beside the callback; 0 and -1 are dead.
template <class Registration, class Callback, class Unregistration>
CallbackForm Form(const char* name, Registration registration, Callback callback, Unregistration unregister) {
  if constexpr (std::is_invocable_v<Registration, Callback>) {
    return {name, [=] { return registration(nullptr); }, [=] { return registration(callback); }, unregister};
  } else {
    constexpr int32_t kIntervalMs = 1000;
    auto refused = [=] {
      return registration(nullptr, kIntervalMs) + registration(callback, 0) + registration(callback, -1);
    };
    return {name, refused, [=] { return registration(callback, kIntervalMs); }, unregister};
  }
}

const CallbackForm kCallbackForms[] = {
    Form("connect", PelmDev_RegisterConnectCallback, IgnoreConnect, PelmDev_UnregisterConnectCallback),
    Form("connect stdcall", PelmDev_RegisterConnectCallback_stdcall, IgnoreConnectStdcall,
         PelmDev_UnregisterConnectCallback_stdcall),
    Form("input", PelmDev_RegisterInputCallback, IgnoreInput, PelmDev_UnregisterInputCallback),
    Form("input stdcall", PelmDev_RegisterInputCallback_stdcall, CountStdcallInput,
         PelmDev_UnregisterInputCallback_stdcall),
    Form("wakeup", PelmDev_RegisterWakeupCallback, WakeDefault, PelmDev_UnregisterWakeupCallback),
    Form("wakeup stdcall", PelmDev_RegisterWakeupCallback_stdcall, WakeStdcall,
         PelmDev_UnregisterWakeupCallback_stdcall),
};

class CallbacksTest : public LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    stdcallCalls = 0;
    std::lock_guard hold(orderMutex);
    order.clear();
  }
};

TEST_F(CallbacksTest, EveryFormRefusesNullAndDeadRegistrationsKeepsWhatItHoldsAndInitForgetsIt) {
  for (const CallbackForm& form : kCallbackForms) {
    SCOPED_TRACE(form.name);
    PelmDev_Init(nullptr);
    EXPECT_EQ(form.refused(), 0u);
    EXPECT_EQ(form.unregister(), 0u);  // nothing was stored
    ASSERT_EQ(form.stored(), 1u);
    EXPECT_EQ(form.refused(), 0u);
    EXPECT_EQ(form.unregister(), 1u);  // the refused calls kept the stored callback
    ASSERT_EQ(form.stored(), 1u);
    PelmDev_Init(nullptr);
    EXPECT_EQ(form.unregister(), 0u);
  }
}

TEST_F(CallbacksTest, TheDefaultInputFormReplacesTheStdcallOneAndHearsTheModelIndexAndRecord) {
  Plug(kButtonsId, 1);
  auto second = Plug(kButtonsId, 2);
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmDev_RegisterInputCallback_stdcall(CountStdcallInput), 1u);
  InputCapture capture(sizeof(PelmSwitchesInputRecord));
  EXPECT_EQ(PelmDev_UnregisterInputCallback_stdcall(), 0u);
  second->InjectInput({0, 0x81});
  ASSERT_TRUE(capture.WaitForCount(1));
  const CapturedInput call = capture.Calls()[0];
  EXPECT_EQ(call.modelType, PELM_MODEL_BUTTONS);
  EXPECT_EQ(call.deviceIndex, 1);
  EXPECT_EQ(call.record[0], 0x81);
  EXPECT_EQ(stdcallCalls, 0);
}

TEST_F(CallbacksTest, AnInputCallbackThatBlocksMakesOtherDevicesEventsDrop) {
  static std::atomic<bool> blocked{false};
  static std::atomic<int> fromSecond{0};
  auto first = Plug(kButtonsId, 1);
  auto second = Plug(kButtonsId, 2);
  PelmDev_Init(nullptr);
  PelmDev_RegisterInputCallback([](int32_t, int32_t index, void*) {
    if (index == 0) {
      blocked = true;
      // Longer than one wait for the mutex, shorter than two.
      std::this_thread::sleep_for(1500ms);
    } else {
      ++fromSecond;
    }
  });
  first->InjectInput({0, 1});
  ASSERT_TRUE(WaitUntil([] { return blocked.load(); }));
  const auto start = std::chrono::steady_clock::now();
  second->InjectInput({0, 2});
  // The second device's reader gives up on the mutex after a second; its next
  // report then gets through once the first callback has returned.
  second->InjectInput({0, 3});
  ASSERT_TRUE(WaitUntil([] { return fromSecond == 1; }));
  EXPECT_GE(std::chrono::steady_clock::now() - start, 900ms);
}

TEST_F(CallbacksTest, WakeupCallsTheDefaultThenTheStdcallFormEitherUnregistrationStopsBothAndReRegistrationRestarts) {
  ASSERT_EQ(PelmDev_RegisterWakeupCallback(WakeDefault, 5), 1u);
  ASSERT_EQ(PelmDev_RegisterWakeupCallback_stdcall(WakeStdcall, 5), 1u);
  ASSERT_TRUE(WaitUntil([] { return Order().find("dsds") != std::string::npos; }));
  EXPECT_EQ(PelmDev_UnregisterWakeupCallback_stdcall(), 1u);
  // At most the cycle under way completes; then the thread ends.
  const std::size_t calls = Order().size();
  EXPECT_FALSE(WaitUntil([&] { return Order().size() > calls + 1; }, 100ms));
  EXPECT_EQ(PelmDev_UnregisterWakeupCallback(), 1u);

  // Registering again while the thread leaves keeps the calls coming.
  for (int round = 0; round < 200; ++round) {
    PelmDev_RegisterWakeupCallback(WakeDefault, 1);
    PelmDev_UnregisterWakeupCallback();
  }
  PelmDev_RegisterWakeupCallback(WakeDefault, 1);
  const std::size_t before = Order().size();
  EXPECT_TRUE(WaitUntil([&] { return Order().size() > before + 3; }));
}

}  // namespace
}  // namespace pelm::test
