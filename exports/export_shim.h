#pragma once
// The check every model export makes before it forwards to the model: the
// device index must lie in the model's slot table and its slot must hold an
// object. Nothing else is checked here; the model operation does the rest.

#include <cstdint>

#include "core/model_table.h"
#include "core/pelm_dev.h"
#include "core/slot_tables.h"

namespace pelm {

template <class Device, class Operation>
int32_t ForwardToDevice(int32_t deviceIndex, Operation&& operation) {
  const ModelDescriptor& model = *ModelByTypeCode(Device::kTypeCode);
  if (deviceIndex < 0 || deviceIndex >= model.slotCount) return PELM_ERR_INDEX;
  cHidChannel* object = ReadSlot(model, deviceIndex);
  if (object == nullptr) return PELM_ERR_NODEVICE;
  return operation(static_cast<Device&>(*object));
}

template <class Device>
uint32_t CountDevices() {
  return CountConnected(*ModelByTypeCode(Device::kTypeCode));
}

}  // namespace pelm
