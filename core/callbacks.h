#pragma once
// The host's connect, input and wakeup callbacks, each in both calling forms
// with separate slots, and their dispatch.

#include <cstdint>

#include "core/pelm_dev.h"

namespace pelm {

// Every call of a host callback is counted while it runs (core/callback_calls.h):
// an unregistration returns once no call of its callback runs, except a call on
// its own thread.

// Calls the host's input callback with a model's input record, under the
// input-callback mutex (waiting at most a second for it; the event is dropped
// when the wait fails or no callback is registered). Reader threads only.
void DispatchInput(int32_t typeCode, int32_t deviceIndex, void* record);

// Reports an arrival or removal to the connect callbacks, default form first.
void NotifyConnect(int32_t typeCode, int32_t deviceIndex, int32_t event);

// Forgets every callback, closes the input-callback mutex and ends the wakeup
// thread (joined: on return no wakeup call runs). Never from inside a callback.
void ClearCallbacks();

}  // namespace pelm
