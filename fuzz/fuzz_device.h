#pragma once
// One panel of one model on the simulated bus, opened through the library, for
// the fuzzers that feed the models hostile reports.

#include <cstdint>
#include <memory>
#include <string>

#include "core/model_table.h"
#include "platform/sim/sim_bus.h"

namespace pelm::fuzz {

inline const ModelDescriptor& ModelFromByte(uint8_t byte) {
  return ModelsInProbeOrder()[byte % kModelCount];
}

inline sim::DeviceSpec SpecFor(const ModelDescriptor& model, platform::HidCaps caps) {
  sim::DeviceSpec spec;
  spec.path = "\\\\?\\hid#vid_fff0&pid_" + std::to_string(model.productId) + "#fuzz";
  spec.vendorId = kVendorId;
  spec.productId = model.productId;
  spec.caps = caps;
  return spec;
}

}  // namespace pelm::fuzz
