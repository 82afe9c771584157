#include "core/device_objects.h"

#include "channel/device_record.h"
#include "channel/pelm_hid_device.h"

namespace pelm {

void OpenPlacedObject(const ModelDescriptor& model, cHidChannel* object) {
  if (model.kind == ModelKind::ClassBased) static_cast<cPelmHidDevice*>(object)->Open();
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
