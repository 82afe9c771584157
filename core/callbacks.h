#pragma once
// The host's connect, input and wakeup callbacks, each in both calling forms
// with separate slots, and their dispatch.

#include <cstdint>

#include "core/pelm_dev.h"

namespace pelm {

// Calls the host's input callback with a model's input record, under the
// input-callback mutex (waiting at most a second for it; the event is dropped
// when the wait fails or no callback is registered). Reader threads only.
void DispatchInput(int32_t typeCode, int32_t deviceIndex, void* record);

// Reports an arrival or removal to the connect callbacks, default form first.
void NotifyConnect(int32_t typeCode, int32_t deviceIndex, int32_t event);

// Forgets every callback and closes the input-callback mutex. The wakeup thread
// keeps its rhythm and calls nothing until unregistration lets it end.
void ClearCallbacks();

}  // namespace pelm
