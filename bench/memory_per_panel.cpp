// Memory: resident memory that each open panel adds to the host process
// (device objects, queues, reader and writer threads with their stacks).

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr int kPanels = 64;
constexpr double kLimitKiB = 64;
constexpr double kBytesPerKiB = 1024;

}  // namespace

std::vector<Figure> MeasureMemoryPerPanel(const RunLength&) {
  // An empty Init first, so that what the library sets up once per process is
  // not charged to the panels.
  sim::Bus::Instance().Reset();
  PelmDev_Init(nullptr);
  PelmDev_Terminate();

  // The simulated devices exist before the first reading: they stand for
  // hardware, not for the library.
  auto panels = PlugMixedPanels(kPanels);
  Progress("memory: opening " + std::to_string(kPanels) + " panels");
  const std::size_t before = ResidentBytes();
  PelmDev_Init(nullptr);
  const std::size_t after = ResidentBytes();
  const bool allOpened = AllOpened(panels);
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();

  const double perPanelKiB =
      (static_cast<double>(after) - static_cast<double>(before)) / kPanels / kBytesPerKiB;
  return {{"resident memory per open panel", perPanelKiB, "KiB", kLimitKiB, false,
           "VmRSS before and after opening " + std::to_string(kPanels) + " mixed panels" +
               (allOpened ? "" : "; NOT EVERY PANEL WAS OPENED")}};
}

}  // namespace pelm::bench
