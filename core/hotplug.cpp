// Arrival and removal of devices while the host runs. A removed device keeps
// its slot and state; when its path comes back the same object is restarted in
// place, and a path never seen before takes the lowest free slot of its model.

#include <cstring>

#include "channel/hid_channel.h"
#include "core/callbacks.h"
#include "core/device_objects.h"
#include "core/lifecycle.h"
#include "core/slot_tables.h"

namespace pelm::core {
namespace {

struct Placement {
  const ModelDescriptor* model = nullptr;
  int32_t index = -1;
  cHidChannel* object = nullptr;
};

// The first slot, in probe order, whose object has this path (ignoring case).
Placement FindByPath(const char* path) {
  for (const ModelDescriptor& model : ModelsInProbeOrder()) {
    if (const int32_t index = SlotWithPath(model, path); index >= 0) return {&model, index, ReadSlot(model, index)};
  }
  return {};
}

void HandleRemoval(const char* path) {
  const Placement known = FindByPath(path);
  if (known.object == nullptr) return;
  known.object->StopThreads();
  known.object->connected = 0;
  NotifyConnect(known.model->typeCode, known.index, PELM_EVENT_REMOVAL);
}

void HandleArrival(const char* path) {
  const Placement known = FindByPath(path);
  if (known.object != nullptr) {
    if (known.object->StartThreads() == 0) return;
    known.object->connected = 1;
    NotifyConnect(known.model->typeCode, known.index, PELM_EVENT_ARRIVAL);
    return;
  }
  const Recognised recognised = ProbeModels(path);
  const ModelDescriptor* model = recognised.model;
  if (model == nullptr || model->create == nullptr) return;
  cHidChannel* object = model->create(path);
  if (object == nullptr) return;
  const int32_t index = LowestEmptySlot(*model);
  if (index < 0) {
    Discard(*model, object);
    return;
  }
  object->deviceIndex = index;
  StoreSlot(*model, index, object);
  // Here a class-based object opens before it counts as connected.
  if (!OpenPlacedObject(*model, index, object)) return;
  object->connected = 1;
  NotifyConnect(model->typeCode, index, PELM_EVENT_ARRIVAL);
}

}  // namespace

void HandleDeviceEvent(platform::DeviceEvent event, const char* path) {
  // Paths are handled in a working copy of 260 bytes; a longer one is no device
  // of ours.
  if (std::strlen(path) > kMaxDevicePathLength) return;
  if (event == platform::DeviceEvent::Removal) {
    HandleRemoval(path);
  } else {
    HandleArrival(path);
  }
}

}  // namespace pelm::core
