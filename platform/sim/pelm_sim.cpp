// The C face of the simulated bus in libpelmdev-sim.so. It sits on top of the
// whole library, as the exports do, and guards its calls as they do.

#include "platform/sim/pelm_sim.h"

#include "exports/export_guard.h"
#include "platform/sim/sim_bus.h"

namespace {

// The panels' report lengths on the simulated bus: enough for every model.
constexpr pelm::platform::HidCaps kPanelCaps{8, 8, 8};

std::shared_ptr<pelm::sim::SimDevice> FindPanel(uint16_t productId, int32_t instance) {
  return pelm::sim::Bus::Instance().Find(pelm::sim::PanelPath(productId, instance));
}

}  // namespace

extern "C" PELM_API int32_t PELM_CDECL PelmSim_Plug(uint16_t productId, int32_t instance) {
  return pelm::Guarded(0, [&] {
    pelm::sim::DeviceDescription description;
    description.path = pelm::sim::PanelPath(productId, instance);
    description.vendorId = PELM_VENDOR_ID;
    description.productId = productId;
    description.caps = kPanelCaps;
    pelm::sim::Bus::Instance().Plug(description);
    return 1;
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_Unplug(uint16_t productId, int32_t instance) {
  return pelm::Guarded(0, [&] {
    if (!FindPanel(productId, instance)) return 0;
    pelm::sim::Bus::Instance().Unplug(pelm::sim::PanelPath(productId, instance));
    return 1;
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_InjectInput(uint16_t productId, int32_t instance,
                                                            const uint8_t* report, uint32_t length) {
  return pelm::Guarded(0, [&] {
    const std::shared_ptr<pelm::sim::SimDevice> device = FindPanel(productId, instance);
    if (!device || report == nullptr) return 0;
    device->InjectInput(pelm::sim::Report(report, report + length));
    return 1;
  });
}

extern "C" PELM_API void PELM_CDECL PelmSim_Reset() {
  pelm::Guarded(0, [] {
    pelm::sim::Bus::Instance().Reset();
    return 1;
  });
}
