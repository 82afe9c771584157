#pragma once
// Initialisation, shutdown and the hot-plug handling that runs between them.

#include <cstdint>

#include "core/model_table.h"
#include "platform/platform.h"

namespace pelm::core {

uint32_t Init(void* instance);
uint32_t Terminate();

// True when the device at `path` answers with the vendor ID and `productId`.
bool Probe(const char* path, uint16_t productId);
// The first model in probe order whose product ID the device answers with.
const ModelDescriptor* ProbeModels(const char* path);

// Arrival and removal of a device interface, on the thread that called Init.
void HandleDeviceEvent(platform::DeviceEvent event, const char* path);

// The notifier's descriptor (-1 without hot-plug) and its pump.
int EventDescriptor();
uint32_t DispatchEvents();

}  // namespace pelm::core
