#include "bench/bench_support.h"

#include <sys/resource.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <thread>

#include "core/model_table.h"

namespace pelm::bench {
namespace {

// Report lengths every panel model accepts.
constexpr platform::HidCaps kPanelCaps{8, 8, 8};
constexpr uint16_t kForeignVendorId = 0x046D;
constexpr uint16_t kForeignProductId = 0xC52B;

std::string DevicePath(uint16_t vendorId, uint16_t productId, int instance) {
  char path[160];
  std::snprintf(path, sizeof path, "\\\\?\\hid#vid_%04x&pid_%04x#bench&%04d#{4d1e55b2-f16f-11cf-88cb-001111000030}",
                vendorId, productId, instance);
  return path;
}

}  // namespace

std::optional<bool> Figure::Met() const {
  if (!limit) return std::nullopt;
  return higherIsBetter ? value >= *limit : value <= *limit;
}

double Percentile(std::vector<double> samples, double fraction) {
  if (samples.empty()) return 0;
  const auto rank = static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(samples.size())));
  const std::size_t index = std::min(samples.size() - 1, rank == 0 ? 0 : rank - 1);
  std::nth_element(samples.begin(), samples.begin() + static_cast<std::ptrdiff_t>(index), samples.end());
  return samples[index];
}

double Median(std::vector<double> samples) { return Percentile(std::move(samples), 0.5); }

sim::DeviceDescription PanelDescription(uint16_t productId, int instance) {
  sim::DeviceDescription description;
  description.path = DevicePath(kVendorId, productId, instance);
  description.vendorId = kVendorId;
  description.productId = productId;
  description.caps = kPanelCaps;
  return description;
}

sim::DeviceDescription ForeignDeviceDescription(int instance) {
  sim::DeviceDescription description;
  description.path = DevicePath(kForeignVendorId, kForeignProductId, instance);
  description.vendorId = kForeignVendorId;
  description.productId = kForeignProductId;
  description.caps = kPanelCaps;
  return description;
}

std::shared_ptr<sim::SimDevice> PlugQuietly(const sim::DeviceDescription& description) {
  // Plugged without a notice, then switched to counting before anyone opens it.
  auto device = sim::Bus::Instance().Plug(description, false);
  device->SetLogging(false);
  return device;
}

std::vector<std::shared_ptr<sim::SimDevice>> PlugMixedPanels(int count) {
  const auto& models = ModelsInProbeOrder();
  std::vector<std::shared_ptr<sim::SimDevice>> devices;
  for (int i = 0; i < count; ++i) {
    const ModelDescriptor& model = models[static_cast<std::size_t>(i) % models.size()];
    const int instance = i / static_cast<int>(models.size()) + 1;
    devices.push_back(PlugQuietly(PanelDescription(model.productId, instance)));
  }
  return devices;
}

bool AllOpened(const std::vector<std::shared_ptr<sim::SimDevice>>& devices) {
  return std::all_of(devices.begin(), devices.end(),
                     [](const auto& device) { return device->CountOf(sim::LogOp::Open) > 0; });
}

std::size_t SendsReceived(const sim::SimDevice& device) {
  return device.CountOf(sim::LogOp::SetFeature) + device.CountOf(sim::LogOp::WriteOutput);
}

bool SpinUntil(const std::function<bool()>& condition, Clock::duration deadline) {
  const auto end = Clock::now() + deadline;
  while (!condition()) {
    if (Clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

std::size_t ResidentBytes() {
  std::ifstream status("/proc/self/status");
  std::string key;
  while (status >> key) {
    if (key == "VmRSS:") {
      std::size_t kib = 0;
      status >> kib;
      return kib * 1024;
    }
    status.ignore(4096, '\n');
  }
  return 0;
}

std::string LoadAverages() {
  std::ifstream loadavg("/proc/loadavg");
  std::string one, five, fifteen;
  loadavg >> one >> five >> fifteen;
  return one + " " + five + " " + fifteen;
}

double ProcessCpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

void Progress(const std::string& line) { std::fprintf(stderr, "  %s\n", line.c_str()); }

}  // namespace pelm::bench
