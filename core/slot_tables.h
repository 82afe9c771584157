#pragma once
// One fixed table of owning slots per model. Written only by Init, Terminate and
// the hot-plug handler (all on the thread that called PelmDev_Init); read by
// every export from any thread.

#include <cstdint>

#include "core/model_table.h"

namespace pelm {

inline constexpr int32_t kMaxSlotCount = 32;

cHidChannel* ReadSlot(const ModelDescriptor& model, int32_t index);
void StoreSlot(const ModelDescriptor& model, int32_t index, cHidChannel* object);
void ClearSlot(const ModelDescriptor& model, int32_t index);
// The lowest slot whose object has `path` (compared without regard to case);
// -1 when none has.
int32_t SlotWithPath(const ModelDescriptor& model, const char* path);
// -1 when every slot holds an object.
int32_t LowestEmptySlot(const ModelDescriptor& model);
// The slots whose object is connected: a count, not the highest index plus one.
uint32_t CountConnected(const ModelDescriptor& model);

}  // namespace pelm
