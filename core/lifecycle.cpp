#include "core/lifecycle.h"

#include <array>
#include <memory>
#include <string>

#include "channel/hid_channel.h"
#include "core/callback_calls.h"
#include "core/callbacks.h"
#include "core/device_objects.h"
#include "core/slot_tables.h"

namespace pelm::core {
namespace {

// An enumeration step that keeps failing is asked again this many times, then
// its interface is skipped.
constexpr int kEnumerationStepAttempts = 8;
// After this many indices in a row have failed so, enumeration ends: an
// enumerator that refuses every index never says that the list has ended.
constexpr int kFailedIndicesBeforeEnd = 32;

// Init and Terminate from inside a callback would close the device whose reader
// runs the callback, or free the notifier whose dispatch is on the stack: they
// return this and change nothing.
constexpr uint32_t kRefusedInsideCallback = 1;

// Owned by the thread that calls Init and Terminate.
std::unique_ptr<platform::DeviceNotifier> notifier;

platform::InterfaceStep NextInterface(platform::InterfaceList& list, uint32_t index, std::string& path) {
  platform::InterfaceStep step = platform::InterfaceStep::Failed;
  for (int attempt = 0; attempt < kEnumerationStepAttempts; ++attempt) {
    step = list.At(index, path);
    if (step != platform::InterfaceStep::Failed) break;
  }
  return step;
}

// Creates the object for a recognised path and places it in the slot of the
// model's placement counter; with the table full it is discarded.
void PlaceAtInit(const ModelDescriptor& model, const char* path, int32_t& placed) {
  cHidChannel* object = model.create(path);
  if (object == nullptr) return;
  if (placed >= model.slotCount) {
    Discard(model, object);
    return;
  }
  const int32_t index = placed++;
  // A class-based object is connected before its Open, so that what its Open
  // sends goes out; a record opened itself already.
  object->deviceIndex = index;
  object->connected = 1;
  StoreSlot(model, index, object);
  if (!OpenPlacedObject(model, index, object)) --placed;
}

}  // namespace

platform::HidHandle Probe(const char* path, uint16_t productId) {
  platform::HidHandle device = platform::OpenDevice(path, platform::OpenMode::Overlapped);
  if (!device) return nullptr;
  platform::HidAttributes attributes;
  const bool answers = device->GetAttributes(attributes) && attributes.vendorId == kVendorId &&
                       attributes.productId == productId;
  return answers ? device : nullptr;
}

Recognised ProbeModels(const char* path) {
  // Where the OS tells the IDs without an open, only the model they name is
  // probed, and a foreign device is not opened at all: a USB HID driver may
  // pause tens of milliseconds on each open of a closed device.
  const std::optional<platform::InterfaceIds> ids = platform::IdsWithoutOpening(path);
  if (ids && ids->vendorId != kVendorId) return {};
  for (const ModelDescriptor& model : ModelsInProbeOrder()) {
    if (ids && ids->productId != model.productId) continue;
    if (platform::HidHandle handle = Probe(path, model.productId)) return {&model, std::move(handle)};
  }
  return {};
}

uint32_t Init(void* instance) {
  if (InsideCallback()) return kRefusedInsideCallback;
  Terminate();
  if (instance != nullptr) notifier = platform::StartDeviceNotifier(instance, HandleDeviceEvent);

  const std::unique_ptr<platform::InterfaceList> list = platform::ListHidInterfaces();
  if (!list) return 0;
  std::array<int32_t, kHighestTypeCode + 1> placed{};
  std::string path;
  int failedInARow = 0;
  for (uint32_t index = 0; failedInARow < kFailedIndicesBeforeEnd; ++index) {
    const platform::InterfaceStep step = NextInterface(*list, index, path);
    if (step == platform::InterfaceStep::NoMoreItems) break;
    failedInARow = step == platform::InterfaceStep::Failed ? failedInARow + 1 : 0;
    if (step != platform::InterfaceStep::Found || path.size() > kMaxDevicePathLength) continue;
    const Recognised recognised = ProbeModels(path.c_str());
    if (recognised.model == nullptr || recognised.model->create == nullptr) continue;
    PlaceAtInit(*recognised.model, path.c_str(), placed[recognised.model->typeCode]);
  }
  return 0;
}

uint32_t Terminate() {
  if (InsideCallback()) return kRefusedInsideCallback;
  notifier.reset();
  ClearCallbacks();
  for (const ModelDescriptor& model : ModelsInProbeOrder()) {
    for (int32_t index = 0; index < model.slotCount; ++index) {
      cHidChannel* object = ReadSlot(model, index);
      if (object == nullptr) continue;
      ClearSlot(model, index);
      CloseAndDestroy(model, object);
    }
  }
  return 0;
}

int EventDescriptor() { return notifier ? notifier->EventDescriptor() : -1; }

uint32_t DispatchEvents() {
  // The handling of a removal stops the device's reader, and an event handled
  // inside a connect callback would interleave with the one around it.
  if (InsideCallback()) return 0;
  return notifier ? notifier->DispatchPending() : 0;
}

}  // namespace pelm::core
