#include "support/input_capture.h"

#include <gtest/gtest.h>

#include <atomic>

#include "core/pelm_dev.h"
#include "support/sim_fixture.h"

namespace pelm::test {
namespace {

std::atomic<InputCapture*> activeCapture{nullptr};

}  // namespace

InputCapture::InputCapture(std::size_t recordSize) : recordSize_(recordSize) {
  activeCapture = this;
  EXPECT_EQ(PelmDev_RegisterInputCallback([](int32_t modelType, int32_t deviceIndex, void* record) {
              Receive(modelType, deviceIndex, record);
            }),
            1u);
}

InputCapture::~InputCapture() {
  PelmDev_UnregisterInputCallback();
  activeCapture = nullptr;
}

void InputCapture::Receive(int32_t modelType, int32_t deviceIndex, void* record) {
  InputCapture* capture = activeCapture;
  if (capture == nullptr) return;
  const auto* bytes = static_cast<const uint8_t*>(record);
  std::lock_guard hold(capture->mutex_);
  capture->calls_.push_back({modelType, deviceIndex, std::vector<uint8_t>(bytes, bytes + capture->recordSize_)});
}

std::vector<CapturedInput> InputCapture::Calls() const {
  std::lock_guard hold(mutex_);
  return calls_;
}

std::size_t InputCapture::Count() const {
  std::lock_guard hold(mutex_);
  return calls_.size();
}

bool InputCapture::WaitForCount(std::size_t count) const {
  return WaitUntil([&] { return Count() >= count; });
}

}  // namespace pelm::test
