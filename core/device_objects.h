#pragma once
// The lifecycle steps that differ between function-based records and
// class-based objects, in one place for Init, Terminate and hot-plug.

#include "core/model_table.h"

namespace pelm {

class cHidChannel;

// Class-based objects are opened once they sit in their slot; records opened
// themselves when created.
void OpenPlacedObject(const ModelDescriptor& model, cHidChannel* object);
// Shutdown: stops the threads, releases the device and frees the object.
void CloseAndDestroy(const ModelDescriptor& model, cHidChannel* object);
// A new object that found no free slot.
void Discard(const ModelDescriptor& model, cHidChannel* object);

}  // namespace pelm
