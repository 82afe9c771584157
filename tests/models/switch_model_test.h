#pragma once
// What the tests of the switch and indicator models share: a fixture that
// waits for what the writer sends and takes devices away, and a capture of the
// input callback's records.

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

#include "support/library_fixture.h"

namespace pelm::test {

class SwitchModelTest : public LibraryTest {
 protected:
  // The reports of `op` that reached the device, once `count` of them have.
  static std::vector<sim::Report> WaitForSent(const sim::SimDevice& device, sim::LogOp op, std::size_t count) {
    const auto succeeded = [op](const sim::LogEntry& entry) { return entry.op == op && entry.succeeded; };
    device.WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return static_cast<std::size_t>(std::count_if(log.begin(), log.end(), succeeded)) >= count;
    });
    std::vector<sim::Report> sent;
    for (const sim::LogEntry& entry : device.LogOf(op)) {
      if (entry.succeeded) sent.push_back(entry.bytes);
    }
    return sent;
  }

  // Unplugs a device that the library follows (PelmDev_Init with an instance)
  // and lets the library hear of it.
  void Disconnect(const sim::SimDevice& device) {
    bus().Unplug(device.Spec().path);
    PelmDevExt_DispatchEvents();
  }
};

// Every input callback the library makes, with the first `recordSize` bytes of
// its record. Registered on construction, so construct it after PelmDev_Init.
class InputCapture {
 public:
  struct Input {
    int32_t modelType;
    int32_t deviceIndex;
    sim::Report record;
  };

  explicit InputCapture(std::size_t recordSize) {
    {
      std::lock_guard hold(mutex_);
      inputs_.clear();
      recordSize_ = recordSize;
    }
    EXPECT_EQ(PelmDev_RegisterInputCallback(&Capture), 1u);
  }

  // The inputs seen, once there are `count` of them (fewer after the deadline).
  std::vector<Input> WaitFor(std::size_t count) const {
    WaitUntil([&] {
      std::lock_guard hold(mutex_);
      return inputs_.size() >= count;
    });
    std::lock_guard hold(mutex_);
    return inputs_;
  }

 private:
  static void PELM_CDECL Capture(int32_t modelType, int32_t deviceIndex, void* record) {
    std::lock_guard hold(mutex_);
    const auto* bytes = static_cast<const uint8_t*>(record);
    inputs_.push_back({modelType, deviceIndex, sim::Report(bytes, bytes + recordSize_)});
  }

  static inline std::mutex mutex_;
  static inline std::vector<Input> inputs_;
  static inline std::size_t recordSize_ = 0;
};

}  // namespace pelm::test
