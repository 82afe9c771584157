#include "bench/vm_init_time.h"

#include <hidapi/hidapi.h>

#include <cstdio>
#include <iterator>
#include <vector>

#include "bench/vm_bench_support.h"
#include "core/pelm_dev.h"
#include "tests/models_under_test.h"

namespace pelm::vm_bench {
namespace {

constexpr int kRounds = 5;
constexpr uint16_t kEveryVendor = 0;
constexpr uint16_t kEveryProduct = 0;
constexpr double kNsPerMs = 1e6;

bool LibraryFoundEveryModel() {
  for (const test::ModelUnderTest& model : test::kModels) {
    if (model.count() != 1) return false;
  }
  return true;
}

// Enumerates every HID device and opens the panels among them, as a host on
// hidapi would; returns how many it opened, after closing them again.
std::size_t EnumerateAndOpenWithHidapi(int64_t& elapsedNs) {
  const int64_t startNs = NowNs();
  hid_device_info* devices = hid_enumerate(kEveryVendor, kEveryProduct);
  std::vector<hid_device*> opened;
  for (const hid_device_info* device = devices; device != nullptr; device = device->next) {
    if (device->vendor_id != PELM_VENDOR_ID) continue;
    if (hid_device* handle = hid_open_path(device->path)) opened.push_back(handle);
  }
  elapsedNs = NowNs() - startNs;
  hid_free_enumeration(devices);
  for (hid_device* handle : opened) hid_close(handle);
  return opened.size();
}

}  // namespace

std::string TimeInit(int foreignDevices) {
  std::vector<double> libraryMs, hidapiMs;
  for (int round = 0; round < kRounds; ++round) {
    const int64_t startNs = NowNs();
    PelmDev_Init(nullptr);
    const int64_t elapsedNs = NowNs() - startNs;
    const bool foundEvery = LibraryFoundEveryModel();
    PelmDev_Terminate();
    if (!foundEvery) {
      std::fprintf(stderr, "PelmDev_Init did not find one panel of every model\n");
      return {};
    }
    libraryMs.push_back(static_cast<double>(elapsedNs) / kNsPerMs);

    int64_t hidapiNs = 0;
    if (EnumerateAndOpenWithHidapi(hidapiNs) != std::size(test::kModels)) {
      std::fprintf(stderr, "hidapi did not open every panel\n");
      return {};
    }
    hidapiMs.push_back(static_cast<double>(hidapiNs) / kNsPerMs);
  }

  const double library = Percentile(libraryMs, 0.5), hidapi = Percentile(hidapiMs, 0.5);
  std::printf("\nOpening %zu panels among %d foreign HID devices inside the VM, median of %d rounds\n",
              std::size(test::kModels), foreignDevices, kRounds);
  std::printf("%-40s %10s %10s\n", "", "ms", "ratio");
  std::printf("%-40s %10.1f %10.2f\n", "hidapi hid_enumerate + hid_open_path", hidapi, 1.0);
  std::printf("%-40s %10.1f %10.2f\n", "library PelmDev_Init", library, library / hidapi);
  char json[256];
  std::snprintf(json, sizeof json,
                "{\"init_rounds\": %d, \"foreign_devices\": %d, \"hidapi_enumerate_open_ms\": %.1f, \"pelmdev_init_ms\": %.1f, "
                "\"init_ratio\": %.3f}",
                kRounds, foreignDevices, hidapi, library, library / hidapi);
  return json;
}

}  // namespace pelm::vm_bench
