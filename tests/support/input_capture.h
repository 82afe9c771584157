#pragma once
// Input callbacks as the host sees them: a default-form input callback that
// keeps the model type, device index and a copy of the record of every call.
// It registers itself when created (after PelmDev_Init, which forgets
// callbacks) and unregisters when destroyed; one capture at a time.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

#include "core/pelm_dev.h"
#include "support/sim_fixture.h"

namespace pelm::test {

struct CapturedInput {
  int32_t modelType;
  int32_t deviceIndex;
  std::vector<uint8_t> record;

  // The record in the model's packed layout.
  template <class Record>
  Record As() const {
    Record value{};
    std::memcpy(&value, record.data(), std::min(sizeof value, record.size()));
    return value;
  }
};

class InputCapture {
 public:
  // Copies `recordSize` bytes of each record.
  explicit InputCapture(std::size_t recordSize) : recordSize_(recordSize) {
    Active() = this;
    EXPECT_EQ(PelmDev_RegisterInputCallback(&Receive), 1u);
  }
  ~InputCapture() {
    PelmDev_UnregisterInputCallback();
    Active() = nullptr;
  }
  InputCapture(const InputCapture&) = delete;
  InputCapture& operator=(const InputCapture&) = delete;

  std::vector<CapturedInput> Calls() const {
    std::lock_guard hold(mutex_);
    return calls_;
  }
  std::size_t Count() const {
    std::lock_guard hold(mutex_);
    return calls_.size();
  }
  // Polls (bounded) until at least `count` calls have come.
  bool WaitForCount(std::size_t count) const {
    return WaitUntil([&] { return Count() >= count; });
  }

 private:
  static std::atomic<InputCapture*>& Active() {
    static std::atomic<InputCapture*> active{nullptr};
    return active;
  }
  static void PELM_CDECL Receive(int32_t modelType, int32_t deviceIndex, void* record) {
    InputCapture* capture = Active();
    if (capture == nullptr) return;
    const auto* bytes = static_cast<const uint8_t*>(record);
    std::lock_guard hold(capture->mutex_);
    capture->calls_.push_back({modelType, deviceIndex, {bytes, bytes + capture->recordSize_}});
  }

  const std::size_t recordSize_;
  mutable std::mutex mutex_;
  std::vector<CapturedInput> calls_;
};

}  // namespace pelm::test
