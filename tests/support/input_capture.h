#pragma once
// Input callbacks as the host sees them: a default-form input callback that
// keeps the model type, device index and a copy of the record of every call.

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <vector>

namespace pelm::test {

struct CapturedInput {
  int32_t modelType;
  int32_t deviceIndex;
  std::vector<uint8_t> record;

  // The record as the model's packed layout.
  template <class Record>
  Record As() const {
    Record value{};
    std::memcpy(&value, record.data(), std::min(sizeof value, record.size()));
    return value;
  }
};

// Registers itself on construction (after PelmDev_Init, which forgets
// callbacks) and unregisters on destruction. One capture at a time.
class InputCapture {
 public:
  // Copies `recordSize` bytes of each record.
  explicit InputCapture(std::size_t recordSize);
  ~InputCapture();
  InputCapture(const InputCapture&) = delete;
  InputCapture& operator=(const InputCapture&) = delete;

  std::vector<CapturedInput> Calls() const;
  std::size_t Count() const;
  // Polls (bounded) until at least `count` calls have come; true if they did.
  bool WaitForCount(std::size_t count) const;

 private:
  static void Receive(int32_t modelType, int32_t deviceIndex, void* record);

  const std::size_t recordSize_;
  mutable std::mutex mutex_;
  std::vector<CapturedInput> calls_;
};

}  // namespace pelm::test
