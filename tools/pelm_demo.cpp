// A host over the simulated bus, end to end through the public interface: it
// plugs simulated panels, opens them with PelmDev_Init, follows their input,
// drives their lamps, survives an unplug and replug, and prints what the
// simulated devices received.

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "platform/sim/sim_bus.h"

namespace {

using pelm::sim::Bus;
using pelm::sim::DeviceSpec;
using pelm::sim::LogOp;
using pelm::sim::Report;

constexpr uint16_t kButtonPanelId = 0x0020;
constexpr uint16_t kEngineStartId = 0x003C;
void* const kHostInstance = reinterpret_cast<void*>(0x400000);

std::atomic<int> inputsSeen{0};
std::atomic<int> connectEvents{0};

DeviceSpec Panel(uint16_t productId, int instance) {
  char path[128];
  std::snprintf(path, sizeof path, "\\\\?\\hid#vid_%04x&pid_%04x#demo&%d", PELM_VENDOR_ID, productId, instance);
  DeviceSpec spec;
  spec.path = path;
  spec.vendorId = PELM_VENDOR_ID;
  spec.productId = productId;
  spec.caps = {8, 8, 8};
  return spec;
}

void PELM_CDECL OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  ++connectEvents;
  std::printf("  connect callback: model %d, index %d, %s\n", modelType, deviceIndex,
              event == PELM_EVENT_ARRIVAL ? "arrived" : "removed");
}

void PELM_CDECL OnInput(int32_t modelType, int32_t deviceIndex, void* record) {
  ++inputsSeen;
  const auto* bytes = static_cast<const uint8_t*>(record);
  if (modelType == PELM_MODEL_BUTTONS) {
    std::printf("  input callback: button panel %d switches 0x%02X\n", deviceIndex, bytes[0]);
    // Lamps follow switches, as a cockpit application would have them.
    PelmButtons_SetIndicators(deviceIndex, bytes[0]);
  } else if (modelType == PELM_MODEL_ENGINESTART) {
    std::printf("  input callback: engine-start %d selectors %d %d %d\n", deviceIndex, bytes[0], bytes[1], bytes[2]);
  }
}

bool WaitFor(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

std::string Hex(const Report& bytes) {
  std::string text;
  char byte[4];
  for (uint8_t b : bytes) {
    std::snprintf(byte, sizeof byte, "%02X ", b);
    text += byte;
  }
  return text;
}

}  // namespace

int main() {
  Bus& bus = Bus::Instance();
  auto left = bus.Plug(Panel(kButtonPanelId, 1));
  auto right = bus.Plug(Panel(kButtonPanelId, 2));
  auto engine = bus.Plug(Panel(kEngineStartId, 1));

  PelmDev_Init(kHostInstance);
  PelmDev_RegisterConnectCallback(OnConnect);
  PelmDev_RegisterInputCallback(OnInput);
  std::printf("Opened %u button panels and %u engine-start module\n", PelmButtons_GetNumDevices(),
              PelmEngineStart_GetNumDevices());

  std::printf("Flipping switches:\n");
  left->InjectInput({0, 0x05});
  right->InjectInput({0, 0x80});
  engine->InjectInput({0, 0x61});
  WaitFor([] { return inputsSeen >= 3; });
  PelmButtons_SetBrightness(0, 12);

  std::printf("Unplugging and replugging the first button panel:\n");
  bus.Unplug(left->Spec().path);
  PelmDevExt_DispatchEvents();
  std::printf("  button panels connected: %u\n", PelmButtons_GetNumDevices());
  bus.Plug(left->Spec());
  PelmDevExt_DispatchEvents();
  std::printf("  button panels connected: %u\n", PelmButtons_GetNumDevices());
  left->InjectInput({0, 0x0F});
  WaitFor([] { return inputsSeen >= 4; });

  PelmDev_Terminate();
  for (const auto& device : {left, right}) {
    std::printf("%s received:\n", device->Spec().path.c_str());
    for (const auto& entry : device->LogOf(LogOp::SetFeature)) std::printf("  feature report %s\n", Hex(entry.bytes).c_str());
  }
  const bool ok = inputsSeen == 4 && connectEvents == 2;
  std::printf("%s: %d inputs, %d hot-plug events\n", ok ? "OK" : "FAILED", inputsSeen.load(), connectEvents.load());
  return ok ? 0 : 1;
}
