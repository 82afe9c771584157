#pragma once
// The lifecycle steps that differ between function-based records and
// class-based objects, in one place for Init, Terminate and hot-plug.

#include <cstdint>

#include "core/model_table.h"

namespace pelm {

class cHidChannel;

// Class-based objects are opened once they sit in slot `index`; records opened
// themselves when created. An object whose threads could not start (the OS had
// no thread or no cancellable read to give) is taken out of its slot again and
// destroyed: false.
bool OpenPlacedObject(const ModelDescriptor& model, int32_t index, cHidChannel* object);
// Shutdown: stops the threads, releases the device and frees the object.
void CloseAndDestroy(const ModelDescriptor& model, cHidChannel* object);
// A new object that found no free slot.
void Discard(const ModelDescriptor& model, cHidChannel* object);

}  // namespace pelm
