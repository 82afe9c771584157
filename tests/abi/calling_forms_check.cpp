// Proves on 32-bit x86 that every export has the calling form its declaration
// gives it: each default-form export leaves its arguments for the caller to
// remove, each _stdcall export removes its own. Every export is called twice:
// with a device index out of range, and with index 0 on a simulated panel of
// its model, every further argument pointing at a zeroed scratch area.
//
// A plain program (the 32-bit build has no GoogleTest); it ends with the
// "N passed, N failed" line and exits non-zero on any failure.

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "core/model_table.h"
#include "core/pelm_dev.h"
#include "platform/sim/sim_bus.h"

extern "C" int CallAndMeasure(void* function, int count, uint32_t first, uint32_t rest);

namespace {

// Counts a macro argument list: PELM_ARG_COUNT(a, b) is 2, PELM_ARG_COUNT() is 0.
#define PELM_ARG_COUNT(...) PELM_ARG_COUNT_AT(__VA_OPT__(__VA_ARGS__, ) 9, 8, 7, 6, 5, 4, 3, 2, 1, 0)
#define PELM_ARG_COUNT_AT(a1, a2, a3, a4, a5, a6, a7, a8, a9, n, ...) n
#define PELM_COUNT_OF(list) PELM_ARG_COUNT list

struct Export {
  const char* name;
  void* function;
  int argumentCount;
  bool calleeCleans;
  bool takesDeviceIndex;
  const char* family;
};

// Plain data: the addresses, not calls, of every export in the table.
const std::vector<Export>& Exports() {
  static const std::vector<Export> exports = {
#define PELM_CORE_PAIR(ret, name, params, args)                                              \
  {#name, reinterpret_cast<void*>(&name), PELM_COUNT_OF(args), false, false, nullptr},        \
      {#name "_stdcall", reinterpret_cast<void*>(&name##_stdcall), PELM_COUNT_OF(args), true, false, nullptr},
#define PELM_CORE_SINGLE(ret, form, name, params, args) \
  {#name, reinterpret_cast<void*>(&name), PELM_COUNT_OF(args), std::string(#name).ends_with("_stdcall"), false, nullptr},
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  {#family "_GetNumDevices", reinterpret_cast<void*>(&family##_GetNumDevices), 0, false, false, #family},
#define PELM_MODEL_COUNT(family)       \
  PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  {#family "_GetNumDevices_stdcall", reinterpret_cast<void*>(&family##_GetNumDevices_stdcall), 0, true, false, #family},
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  {#family "_" #op, reinterpret_cast<void*>(&family##_##op), 1 + PELM_COUNT_OF(args), false, true, #family},
#define PELM_MODEL_OP(family, op, params, args)       \
  PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  {#family "_" #op "_stdcall", reinterpret_cast<void*>(&family##_##op##_stdcall), 1 + PELM_COUNT_OF(args), true, true, #family},
#include "core/pelm_exports.h"
  };
  return exports;
}

// Every family's simulated panel at index 0, so that calls reach a device.
void PlugOnePanelOfEachModel() {
  for (const pelm::ModelDescriptor& model : pelm::ModelsInProbeOrder()) {
    pelm::sim::DeviceDescription description;
    description.path = std::string("\\\\?\\hid#abi-check#") + model.family;
    description.vendorId = pelm::kVendorId;
    description.productId = model.productId;
    description.caps = {16, 16, 16};
    pelm::sim::Bus::Instance().Plug(description);
  }
}

}  // namespace

int main() {
  PlugOnePanelOfEachModel();
  PelmDev_Init(nullptr);
  alignas(16) static uint8_t scratch[256];
  const auto scratchAddress = static_cast<uint32_t>(reinterpret_cast<uintptr_t>(scratch));
  constexpr uint32_t kIndexOutOfRange = 0xFFFFFFFF;

  int passed = 0;
  int failed = 0;
  // Model exports first, while the panels are open; then the library's own,
  // Init and Terminate among them. The library's functions get null pointers
  // and zero intervals, which each of them refuses.
  std::vector<const Export*> order;
  for (const Export& entry : Exports()) if (entry.family != nullptr) order.push_back(&entry);
  for (const Export& entry : Exports()) if (entry.family == nullptr) order.push_back(&entry);
  for (const Export* entryPointer : order) {
    const Export& entry = *entryPointer;
    const int expected = entry.calleeCleans ? 4 * entry.argumentCount : 0;
    std::vector<std::pair<uint32_t, uint32_t>> calls = {{0, 0}};
    if (entry.takesDeviceIndex) calls = {{kIndexOutOfRange, 0}, {0, scratchAddress}};
    for (const auto& [first, rest] : calls) {
      std::memset(scratch, 0, sizeof scratch);
      const int removed = CallAndMeasure(entry.function, entry.argumentCount, first, rest);
      if (removed == expected) {
        ++passed;
      } else {
        ++failed;
        std::printf("FAILED %s: removed %d bytes of arguments, expected %d\n", entry.name, removed, expected);
      }
    }
  }
  PelmDev_Terminate();
  std::printf("%zu exports checked\n", Exports().size());
  std::printf("%d passed, %d failed\n", passed, failed);
  return failed == 0 ? 0 : 1;
}
