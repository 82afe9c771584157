// Every model's input decoding fed arbitrary reports of arbitrary length, also
// shorter than the model reads and longer than the device declares: byte 0
// picks the model, byte 1 the device's input report length, the rest is the
// report. The panel is plugged and opened through the library, the report read
// by the device's own reader thread, and the library shut down again, so each
// run also exercises open, read and stop.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <thread>

#include "core/pelm_dev.h"
#include "fuzz/fuzz_device.h"

namespace {

// Reports are at most this long on any panel; longer ones still get through.
constexpr uint16_t kLongestInputReport = 64;
// The reader takes a report in microseconds; a stuck reader fails the run.
constexpr auto kReaderDeadline = std::chrono::seconds(10);

void InputSink(int32_t, int32_t, void*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  const pelm::ModelDescriptor& model = pelm::fuzz::ModelFromByte(data[0]);
  // A device declaring no input report at all is never read, so the shortest is 1.
  const auto inputLength = static_cast<uint16_t>(1 + data[1] % kLongestInputReport);

  pelm::sim::Bus& bus = pelm::sim::Bus::Instance();
  bus.Reset();
  auto device = bus.Plug(pelm::fuzz::DescriptionFor(model, {inputLength, kLongestInputReport, kLongestInputReport}));
  PelmDev_Init(nullptr);
  PelmDev_RegisterInputCallback(&InputSink);
  device->InjectInput(pelm::sim::Report(data + 2, data + size));
  const auto deadline = std::chrono::steady_clock::now() + kReaderDeadline;
  while (device->UnreadInput() != 0) {
    if (std::chrono::steady_clock::now() > deadline) __builtin_trap();
    std::this_thread::yield();
  }
  // Stopping waits for the reader to finish decoding what it took.
  PelmDev_Terminate();
  bus.Reset();
  return 0;
}
