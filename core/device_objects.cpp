#include "core/device_objects.h"

#include "channel/device_record.h"
#include "channel/pelm_hid_device.h"
#include "core/slot_tables.h"

namespace pelm {

bool OpenPlacedObject(const ModelDescriptor& model, int32_t index, cHidChannel* object) {
  if (model.kind == ModelKind::ClassBased) static_cast<cPelmHidDevice*>(object)->Open();
  if (object->ThreadsRunning()) return true;
  ClearSlot(model, index);
  CloseAndDestroy(model, object);
  return false;
}

void CloseAndDestroy(const ModelDescriptor& model, cHidChannel* object) {
  if (model.kind == ModelKind::ClassBased) {
    static_cast<cPelmHidDevice*>(object)->Close();
  } else {
    static_cast<cPelmDeviceRecord*>(object)->Close();
  }
  delete object;
}

void Discard(const ModelDescriptor& model, cHidChannel* object) {
  // A class-based object was never opened; a record was, and is closed.
  if (model.kind == ModelKind::FunctionBased) static_cast<cPelmDeviceRecord*>(object)->Close();
  delete object;
}

}  // namespace pelm
