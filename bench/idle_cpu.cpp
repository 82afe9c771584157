// Idle CPU: what a desk of connected panels costs the host when nothing
// happens. The only work left is each writer's periodic look at its queue.

#include <thread>

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr int kPanels = 64;
constexpr auto kIdleTime = std::chrono::seconds(10);
constexpr auto kQuickIdleTime = std::chrono::seconds(1);
constexpr double kLimitPercentOfOneCore = 3;

}  // namespace

std::vector<Figure> MeasureIdleCpu(const RunLength& length) {
  sim::Bus::Instance().Reset();
  auto panels = PlugMixedPanels(kPanels);
  PelmDev_Init(nullptr);
  const bool allOpened = AllOpened(panels);

  const auto idle = length.quick ? Clock::duration(kQuickIdleTime) : Clock::duration(kIdleTime);
  Progress("idle CPU: " + std::to_string(kPanels) + " panels for " +
           std::to_string(std::chrono::duration_cast<std::chrono::seconds>(idle).count()) + " s");
  const double cpuBefore = ProcessCpuSeconds();
  const auto start = Clock::now();
  std::this_thread::sleep_for(idle);
  const double cpu = ProcessCpuSeconds() - cpuBefore;
  const double wall = std::chrono::duration<double>(Clock::now() - start).count();
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();

  return {{"idle CPU, " + std::to_string(kPanels) + " panels", 100.0 * cpu / wall, "% of one core",
           kLimitPercentOfOneCore, false,
           "process CPU time (getrusage) over " + std::to_string(static_cast<int>(wall)) + " s" +
               (allOpened ? "" : "; NOT EVERY PANEL WAS OPENED")}};
}

}  // namespace pelm::bench
