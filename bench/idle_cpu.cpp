// Idle CPU: what a desk of connected panels costs the host when nothing
// happens. The only work left is each writer's periodic look at its queue.
// Beside it, the floor: as many bare threads that only wake at the same
// interval, which is what that look costs at the least.

#include <memory>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr int kPanels = 64;
constexpr auto kIdleTime = std::chrono::seconds(10);
constexpr auto kQuickIdleTime = std::chrono::seconds(1);
constexpr double kLimitPercentOfOneCore = 3;
// The writer's look at its queue when nothing wakes it.
constexpr auto kWriterLookInterval = std::chrono::milliseconds(10);

// Percent of one core the process uses over `idle`.
double CpuPercentOver(Clock::duration idle) {
  const double cpuBefore = ProcessCpuSeconds();
  const auto start = Clock::now();
  std::this_thread::sleep_for(idle);
  const double cpu = ProcessCpuSeconds() - cpuBefore;
  return 100.0 * cpu / std::chrono::duration<double>(Clock::now() - start).count();
}

// Threads that wake at the writers' interval and go back to sleep, each on its
// own mutex and condition variable as each writer has.
double BareWakingThreadsPercent(int threads, Clock::duration idle) {
  struct Sleeper {
    std::mutex mutex;
    std::condition_variable stop;
    bool stopping = false;
    std::thread thread;
  };
  std::vector<std::unique_ptr<Sleeper>> sleepers;
  for (int i = 0; i < threads; ++i) {
    auto sleeper = std::make_unique<Sleeper>();
    sleeper->thread = std::thread([&state = *sleeper] {
      std::unique_lock hold(state.mutex);
      // Each time-out is one idle look, as a writer's.
      while (!state.stop.wait_for(hold, kWriterLookInterval, [&] { return state.stopping; })) {
      }
    });
    sleepers.push_back(std::move(sleeper));
  }
  const double percent = CpuPercentOver(idle);
  for (auto& sleeper : sleepers) {
    {
      std::lock_guard hold(sleeper->mutex);
      sleeper->stopping = true;
    }
    sleeper->stop.notify_one();
    sleeper->thread.join();
  }
  return percent;
}

}  // namespace

std::vector<Figure> MeasureIdleCpu(const RunLength& length) {
  sim::Bus::Instance().Reset();
  auto panels = PlugMixedPanels(kPanels);
  PelmDev_Init(nullptr);
  const bool allOpened = AllOpened(panels);

  const auto idle = length.quick ? Clock::duration(kQuickIdleTime) : Clock::duration(kIdleTime);
  Progress("idle CPU: " + std::to_string(kPanels) + " panels for " +
           std::to_string(std::chrono::duration_cast<std::chrono::seconds>(idle).count()) + " s");
  const double libraryPercent = CpuPercentOver(idle);
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();
  Progress("idle CPU: " + std::to_string(kPanels) + " bare threads waking every " +
           std::to_string(kWriterLookInterval.count()) + " ms");
  const double floorPercent = BareWakingThreadsPercent(kPanels, idle);

  const std::string seconds = std::to_string(std::chrono::duration_cast<std::chrono::seconds>(idle).count());
  return {
      {"idle CPU, " + std::to_string(kPanels) + " bare threads waking every " +
           std::to_string(kWriterLookInterval.count()) + " ms (floor)",
       floorPercent, "% of one core", {}, false, "process CPU time (getrusage) over " + seconds + " s"},
      {"idle CPU, " + std::to_string(kPanels) + " panels", libraryPercent, "% of one core", kLimitPercentOfOneCore,
       false,
       "process CPU time (getrusage) over " + seconds + " s" + (allOpened ? "" : "; NOT EVERY PANEL WAS OPENED")},
  };
}

}  // namespace pelm::bench
