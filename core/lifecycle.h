#pragma once
// Initialisation, shutdown and the hot-plug handling that runs between them.

#include <cstdint>

#include "core/model_table.h"
#include "platform/platform.h"

namespace pelm::core {

uint32_t Init(void* instance);
uint32_t Terminate();

// The open handle of the device at `path` when it answers with the vendor ID and
// `productId`; null otherwise.
platform::HidHandle Probe(const char* path, uint16_t productId);
// The first model in probe order whose product ID the device answers with, and
// the handle that recognised it. Keeping that handle open while the model's
// object opens its own spares a USB HID driver the pause it takes on the first
// open of a closed device.
struct Recognised {
  const ModelDescriptor* model = nullptr;
  platform::HidHandle handle;
};
Recognised ProbeModels(const char* path);

// Arrival and removal of a device interface, on the thread that called Init.
void HandleDeviceEvent(platform::DeviceEvent event, const char* path);

// The notifier's descriptor (-1 without hot-plug) and its pump.
int EventDescriptor();
uint32_t DispatchEvents();

}  // namespace pelm::core
