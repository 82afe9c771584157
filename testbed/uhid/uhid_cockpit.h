#pragma once
// Panels on uhid for the tests inside the VM: one per model (or as many as a
// test asks for), each on its own physical path, and the count of hidraw nodes
// the tests wait on while the kernel makes or drops them.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "testbed/uhid/uhid_panel.h"

namespace pelm::vm {

// Hidraw nodes present now.
std::size_t HidrawNodeCount();

// A panel of the model with `productId` on physical path number `port`, with
// the behaviour of that model's simulated panel.
std::unique_ptr<UhidPanel> MakePanel(uint16_t productId, int port, uint16_t vendorId = PELM_VENDOR_ID);

// The serial number MakePanel gives the panel on `port`.
std::string SerialFor(int port);
std::string PhysFor(int port);

}  // namespace pelm::vm
