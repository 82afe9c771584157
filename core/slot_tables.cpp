#include "core/slot_tables.h"

#include <array>
#include <atomic>

#include "channel/hid_channel.h"

namespace pelm {
namespace {

using SlotTable = std::array<std::atomic<cHidChannel*>, kMaxSlotCount>;

std::array<SlotTable, kHighestTypeCode + 1> slotTables{};

SlotTable& TableOf(const ModelDescriptor& model) { return slotTables[model.typeCode]; }

}  // namespace

cHidChannel* ReadSlot(const ModelDescriptor& model, int32_t index) { return TableOf(model)[index].load(); }

void StoreSlot(const ModelDescriptor& model, int32_t index, cHidChannel* object) {
  TableOf(model)[index].store(object);
}

void ClearSlot(const ModelDescriptor& model, int32_t index) { TableOf(model)[index].store(nullptr); }

int32_t SlotWithPath(const ModelDescriptor& model, const char* path) {
  for (int32_t index = 0; index < model.slotCount; ++index) {
    const cHidChannel* object = ReadSlot(model, index);
    if (object != nullptr && SamePath(object->DevicePath(), path)) return index;
  }
  return -1;
}

int32_t LowestEmptySlot(const ModelDescriptor& model) {
  for (int32_t index = 0; index < model.slotCount; ++index) {
    if (ReadSlot(model, index) == nullptr) return index;
  }
  return -1;
}

uint32_t CountConnected(const ModelDescriptor& model) {
  uint32_t count = 0;
  for (int32_t index = 0; index < model.slotCount; ++index) {
    const cHidChannel* object = ReadSlot(model, index);
    if (object != nullptr && object->IsConnected()) ++count;
  }
  return count;
}

}  // namespace pelm
