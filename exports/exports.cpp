// The definitions of every export, generated from the export table. Both
// calling forms of an operation share one implementation: the _stdcall form
// forwards to the default form, which runs it guarded (exports/export_guard.h).

#include "core/core_exports.h"
#include "exports/export_guard.h"
#include "exports/export_shim.h"
#include "core/lifecycle.h"
#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "core/present_panels.h"
#include "models/model_families.h"

namespace pelm::exports {

uint32_t PelmDev_Init(void* instance) { return core::Init(instance); }
uint32_t PelmDev_Terminate() { return core::Terminate(); }

}  // namespace pelm::exports

#define PELM_CORE_PAIR(ret, name, params, args)                                            \
  extern "C" PELM_API ret PELM_CDECL name params {                                         \
    return ::pelm::Guarded(::pelm::kExportFailure<ret>, [&] { return ::pelm::exports::name args; }); \
  }                                                                                         \
  extern "C" PELM_API ret PELM_STDCALL name##_stdcall params { return name args; }
#define PELM_CORE_SINGLE(ret, form, name, params, args) \
  extern "C" PELM_API ret form name params {                                                      \
    return ::pelm::Guarded(::pelm::kExportFailure<ret>, [&] { return ::pelm::exports::name args; }); \
  }
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family)                         \
  extern "C" PELM_API uint32_t PELM_CDECL family##_GetNumDevices() { \
    return ::pelm::Guarded(::pelm::kExportFailure<uint32_t>, [] { return ::pelm::CountDevices<::pelm::families::family>(); }); \
  }
#define PELM_MODEL_COUNT(family)     \
  PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  extern "C" PELM_API uint32_t PELM_STDCALL family##_GetNumDevices_stdcall() { return family##_GetNumDevices(); }
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args)                                      \
  extern "C" PELM_API int32_t PELM_CDECL family##_##op(int32_t deviceIndex, PELM_UNPACK params) { \
    return ::pelm::Guarded(::pelm::kExportFailure<int32_t>, [&] {                                \
      return ::pelm::ForwardToDevice<::pelm::families::family>(                                  \
          deviceIndex, [&](::pelm::families::family& device) { return device.op args; });       \
    });                                                                                          \
  }
#define PELM_MODEL_OP(family, op, params, args)                                                           \
  PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args)                                                    \
  extern "C" PELM_API int32_t PELM_STDCALL family##_##op##_stdcall(int32_t deviceIndex, PELM_UNPACK params) { \
    return family##_##op(deviceIndex, PELM_UNPACK args);                                                  \
  }
#include "core/pelm_exports.h"

extern "C" PELM_API int PELM_CDECL PelmDevExt_EventDescriptor() {
  return ::pelm::Guarded(-1, [] { return ::pelm::core::EventDescriptor(); });
}
extern "C" PELM_API uint32_t PELM_CDECL PelmDevExt_DispatchEvents() {
  return ::pelm::Guarded(::pelm::kExportFailure<uint32_t>, [] { return ::pelm::core::DispatchEvents(); });
}
extern "C" PELM_API int32_t PELM_CDECL PelmDevExt_ListPresentPanels(PelmDevExt_PresentPanel* panels, uint32_t capacity,
                                                                    uint32_t* count) {
  return ::pelm::Guarded(::pelm::kExportFailure<int32_t>,
                         [&] { return ::pelm::core::ListPresentPanels(panels, capacity, count); });
}
