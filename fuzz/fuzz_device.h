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

inline sim::DeviceDescription DescriptionFor(const ModelDescriptor& model, platform::HidCaps caps) {
  sim::DeviceDescription description;
  description.path = "\\\\?\\hid#vid_fff0&pid_" + std::to_string(model.productId) + "#fuzz";
  description.vendorId = kVendorId;
  description.productId = model.productId;
  description.caps = caps;
  return description;
}

}  // namespace pelm::fuzz
