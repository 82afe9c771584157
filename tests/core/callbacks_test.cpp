// The host's callbacks: both calling forms, the input-callback mutex and the
// wakeup thread.

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "support/library_fixture.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

constexpr uint16_t kButtonsId = 0x0020;

std::atomic<int> defaultCalls{0};
std::atomic<int> stdcallCalls{0};
std::mutex orderMutex;
std::string order;

void PELM_CDECL CountDefaultInput(int32_t, int32_t, void*) { ++defaultCalls; }
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

class CallbacksTest : public LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    defaultCalls = 0;
    stdcallCalls = 0;
    std::lock_guard hold(orderMutex);
    order.clear();
  }
  void TearDown() override {
    PelmDev_UnregisterWakeupCallback();
    PelmDev_UnregisterWakeupCallback_stdcall();
    LibraryTest::TearDown();
  }
};

TEST_F(CallbacksTest, TheInputRecordCarriesTheModelIndexAndValues) {
  static std::atomic<int32_t> seenType{0}, seenIndex{-1};
  static std::atomic<int> seenSwitches{-1};
  Plug(kButtonsId, 1);
  auto second = Plug(kButtonsId, 2);
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmDev_RegisterInputCallback([](int32_t type, int32_t index, void* record) {
              seenType = type;
              seenIndex = index;
              seenSwitches = *static_cast<uint8_t*>(record);
            }),
            1u);
  second->InjectInput({0, 0x81});
  ASSERT_TRUE(WaitUntil([] { return seenSwitches == 0x81; }));
  EXPECT_EQ(seenType, PELM_MODEL_BUTTONS);
  EXPECT_EQ(seenIndex, 1);
}

TEST_F(CallbacksTest, RegisteringOneInputFormReplacesTheOther) {
  auto device = Plug(kButtonsId, 1);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmDev_RegisterInputCallback(nullptr), 0u);
  ASSERT_EQ(PelmDev_RegisterInputCallback_stdcall(CountStdcallInput), 1u);
  ASSERT_EQ(PelmDev_RegisterInputCallback(CountDefaultInput), 1u);
  EXPECT_EQ(PelmDev_UnregisterInputCallback_stdcall(), 0u);
  device->InjectInput({0, 1});
  ASSERT_TRUE(WaitUntil([] { return defaultCalls == 1; }));
  EXPECT_EQ(stdcallCalls, 0);
  EXPECT_EQ(PelmDev_UnregisterInputCallback(), 1u);
  EXPECT_EQ(PelmDev_UnregisterInputCallback(), 0u);
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

TEST_F(CallbacksTest, InitForgetsEveryCallback) {
  PelmDev_RegisterConnectCallback([](int32_t, int32_t, int32_t) {});
  PelmDev_RegisterInputCallback(CountDefaultInput);
  PelmDev_RegisterWakeupCallback(WakeDefault, 1000);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmDev_UnregisterConnectCallback(), 0u);
  EXPECT_EQ(PelmDev_UnregisterInputCallback(), 0u);
  EXPECT_EQ(PelmDev_UnregisterWakeupCallback(), 0u);
}

TEST_F(CallbacksTest, WakeupCallsTheDefaultFormThenTheStdcallFormAndEitherUnregistrationStopsBoth) {
  ASSERT_EQ(PelmDev_RegisterWakeupCallback(WakeDefault, 5), 1u);
  ASSERT_EQ(PelmDev_RegisterWakeupCallback_stdcall(WakeStdcall, 5), 1u);
  ASSERT_TRUE(WaitUntil([] { return Order().find("dsds") != std::string::npos; }));
  EXPECT_EQ(PelmDev_UnregisterWakeupCallback_stdcall(), 1u);
  // At most the cycle under way completes; then the thread ends.
  const std::size_t calls = Order().size();
  EXPECT_FALSE(WaitUntil([&] { return Order().size() > calls + 1; }, 100ms));
  EXPECT_EQ(PelmDev_UnregisterWakeupCallback(), 1u);
}

TEST_F(CallbacksTest, ReRegisteringWhileTheThreadLeavesKeepsTheCallsComing) {
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
