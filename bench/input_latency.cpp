// Input latency: from a report injected into a simulated radio panel to the
// host's input callback. Beside it, the floor: a bare thread that reads the
// same kind of device through the platform layer and nothing else. Floor and
// library samples alternate, each going first in turn, so both see the same
// machine load. The injecting thread sleeps while it waits for a report to
// arrive rather than spinning, so that it never holds the core the receiver
// needs.

#include <atomic>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>

#include "bench/arrivals.h"
#include "bench/benchmarks.h"
#include "core/pelm_dev.h"
#include "platform/sim/panels/radio_panel.h"

namespace pelm::bench {
namespace {

constexpr std::size_t kSamples = 20000;
constexpr std::size_t kWarmUpSamples = 500;
constexpr std::size_t kReadBufferLength = 64;
constexpr double kP50OverheadLimitUs = 5;
constexpr double kP99OverheadLimitUs = 50;

Arrivals& LibraryArrivals() {
  static Arrivals arrivals;
  return arrivals;
}

void PELM_CDECL OnInput(int32_t, int32_t, void*) { LibraryArrivals().Note(); }

// Injects one report and gives the microseconds until `arrivals` saw it; none
// when it never came.
std::optional<double> TimeOneReport(sim::SimDevice& device, Arrivals& arrivals, std::size_t sequence) {
  const uint64_t before = arrivals.Count();
  // Dial counts change from report to report, as a turning knob's would.
  const auto dial = static_cast<uint8_t>(sequence % 7 + 1);
  const int64_t injectedNs = NowNs();
  device.InjectInput({0, dial, dial, 0});
  if (!arrivals.WaitBeyond(before)) return std::nullopt;
  return static_cast<double>(arrivals.lastNs.load(std::memory_order_relaxed) - injectedNs) / 1000.0;
}

}  // namespace

std::vector<Figure> MeasureInputLatency(const RunLength& length) {
  sim::Bus::Instance().Reset();
  auto libraryDevice = PlugQuietly(PanelDescription(sim::RadioPanelSim::kProductId, 1));
  PelmDev_Init(nullptr);
  PelmDev_RegisterInputCallback(&OnInput);
  // Plugged after Init without a notice: the library never opens it.
  auto floorDevice = PlugQuietly(PanelDescription(sim::RadioPanelSim::kProductId, 2));

  Arrivals floorArrivals;
  auto cancel = platform::CreateReadCancel();
  std::thread floorReader([&] {
    platform::HidHandle handle = platform::OpenDevice(floorDevice->Description().path.c_str(), platform::OpenMode::Overlapped);
    if (!handle) return;
    uint8_t buffer[kReadBufferLength];
    uint32_t bytesRead = 0;
    while (handle->ReadInput(buffer, sizeof buffer, bytesRead, *cancel) == platform::ReadStatus::Completed) {
      floorArrivals.Note();
    }
  });

  const std::size_t samples = length.Scaled(kSamples);
  std::vector<double> floorUs, libraryUs;
  std::size_t lost = 0;
  Progress("input latency: " + std::to_string(samples) + " reports each to a bare read loop and to the library");
  for (std::size_t i = 0; i < kWarmUpSamples + samples; ++i) {
    std::optional<double> floor, library;
    if (i % 2 == 0) {
      floor = TimeOneReport(*floorDevice, floorArrivals, i);
      library = TimeOneReport(*libraryDevice, LibraryArrivals(), i);
    } else {
      library = TimeOneReport(*libraryDevice, LibraryArrivals(), i);
      floor = TimeOneReport(*floorDevice, floorArrivals, i);
    }
    if (!floor || !library) ++lost;
    if (i < kWarmUpSamples) continue;
    if (floor) floorUs.push_back(*floor);
    if (library) libraryUs.push_back(*library);
  }
  cancel->Signal();
  floorReader.join();
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();

  const double floorP50 = Percentile(floorUs, 0.5), floorP99 = Percentile(floorUs, 0.99);
  const double libraryP50 = Percentile(libraryUs, 0.5), libraryP99 = Percentile(libraryUs, 0.99);
  return {
      {"input latency p50, bare read loop (floor)", floorP50, "us", {}, false, std::to_string(floorUs.size()) + " reports"},
      {"input latency p99, bare read loop (floor)", floorP99, "us", {}, false, ""},
      {"input latency p50, library callback", libraryP50, "us", {}, false,
       std::to_string(libraryUs.size()) + " reports" +
           (lost == 0 ? "" : "; " + std::to_string(lost) + " reports never arrived")},
      {"input latency p99, library callback", libraryP99, "us", {}, false, ""},
      {"input latency p50 overhead over floor", libraryP50 - floorP50, "us", kP50OverheadLimitUs, false, ""},
      {"input latency p99 overhead over floor", libraryP99 - floorP99, "us", kP99OverheadLimitUs, false, ""},
  };
}

}  // namespace pelm::bench
