// Idle cost: what a desk of connected panels costs the host when nothing
// happens. An idle panel's reader waits in its read and its writer sleeps until
// a report is queued, so their threads should not run at all: the floor for
// wake-ups is 0. Wake-ups are counted as the context switches of every thread
// but the measuring one, which is what the kernel did to run them.

#include <dirent.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr int kPanels = 64;
constexpr auto kIdleTime = std::chrono::seconds(10);
constexpr auto kQuickIdleTime = std::chrono::seconds(1);
constexpr double kLimitPercentOfOneCore = 0.5;
// A timer that wakes every 10 ms wakes 100 times a second; an idle thread none.
constexpr double kLimitWakeupsPerSecondPerPanel = 0.5;
constexpr char kTaskRoot[] = "/proc/self/task";

// Context switches, voluntary and not, of one thread from its status file.
uint64_t ContextSwitchesOf(const std::string& task) {
  std::ifstream status(std::string(kTaskRoot) + "/" + task + "/status");
  uint64_t switches = 0;
  for (std::string line; std::getline(status, line);) {
    std::istringstream fields(line);
    std::string key;
    uint64_t value = 0;
    if (fields >> key >> value && (key == "voluntary_ctxt_switches:" || key == "nonvoluntary_ctxt_switches:")) {
      switches += value;
    }
  }
  return switches;
}

// Context switches of every thread of the process except the calling one.
uint64_t OtherThreadsContextSwitches() {
  const std::string self = std::to_string(syscall(SYS_gettid));
  uint64_t switches = 0;
  DIR* tasks = opendir(kTaskRoot);
  if (tasks == nullptr) return 0;
  while (const dirent* task = readdir(tasks)) {
    const std::string name = task->d_name;
    if (name == "." || name == ".." || name == self) continue;
    switches += ContextSwitchesOf(name);
  }
  closedir(tasks);
  return switches;
}

struct IdleCost {
  double cpuPercent = 0;
  double wakeupsPerSecond = 0;
};

IdleCost MeasureOver(Clock::duration idle) {
  const uint64_t switchesBefore = OtherThreadsContextSwitches();
  const double cpuBefore = ProcessCpuSeconds();
  const auto start = Clock::now();
  std::this_thread::sleep_for(idle);
  const double cpu = ProcessCpuSeconds() - cpuBefore;
  const uint64_t switches = OtherThreadsContextSwitches() - switchesBefore;
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  return {100.0 * cpu / seconds, static_cast<double>(switches) / seconds};
}

}  // namespace

std::vector<Figure> MeasureIdleCpu(const RunLength& length) {
  sim::Bus::Instance().Reset();
  auto panels = PlugMixedPanels(kPanels);
  PelmDev_Init(nullptr);
  const bool allOpened = AllOpened(panels);

  const auto idle = length.quick ? Clock::duration(kQuickIdleTime) : Clock::duration(kIdleTime);
  const std::string seconds = std::to_string(std::chrono::duration_cast<std::chrono::seconds>(idle).count());
  Progress("idle cost: " + std::to_string(kPanels) + " panels for " + seconds + " s");
  const IdleCost library = MeasureOver(idle);
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();

  const std::string opened = allOpened ? "" : "; NOT EVERY PANEL WAS OPENED";
  const std::string panelsText = std::to_string(kPanels) + " panels";
  return {
      {"idle wake-ups per second, no thread woken (floor)", 0, "wake-ups/s", {}, false, "nothing to do"},
      {"idle wake-ups per second, " + panelsText, library.wakeupsPerSecond, "wake-ups/s",
       kLimitWakeupsPerSecondPerPanel * kPanels, false,
       "context switches of the library's threads (/proc/self/task/*/status) over " + seconds + " s" + opened},
      {"idle CPU, " + panelsText, library.cpuPercent, "% of one core", kLimitPercentOfOneCore, false,
       "process CPU time (getrusage) over " + seconds + " s" + opened},
      {"idle CPU per panel", library.cpuPercent / kPanels, "% of one core", {}, false, "the line above / " +
       std::to_string(kPanels)},
  };
}

}  // namespace pelm::bench
