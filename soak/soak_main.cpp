// Hours inside a simulator, compressed: every model plugged (some twice) with
// hot-plug on, host threads calling every model export at random with good and
// bad arguments, devices sending input at random, panels unplugged and
// replugged at the same or a new path, slow devices and failing sends, and the
// library shut down and started again now and then. At the end: no thread of
// the library left, every slot's connect events alternate (a removal only
// after an arrival, an arrival only after a removal), no output queue ever
// held more than its limit allows, and in a quiet phase every panel shows
// exactly the display and lamp reports set last.

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dirent.h>
#include <functional>
#include <map>
#include <mutex>
#include <random>
#include <set>
#include <shared_mutex>
#include <string>
#include <thread>
#include <type_traits>
#include <utility>
#include <vector>

#include "core/model_table.h"
#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "models/model_families.h"
#include "platform/sim/sim_bus.h"
#include "soak/final_reports.h"
#include "soak/final_state_check.h"
#include "soak/queue_limit_check.h"

namespace {

using Clock = std::chrono::steady_clock;

constexpr int kDefaultSeconds = 120;
constexpr int kHostThreads = 2;
constexpr int kLongestReport = 64;
// Models plugged a second time, to have two devices of one model in play.
constexpr int32_t kTwiceModels[] = {PELM_MODEL_BUTTONS, PELM_MODEL_RADIO, PELM_MODEL_WARNING};
constexpr auto kRestartInterval = std::chrono::seconds(5);
constexpr auto kProgressInterval = std::chrono::seconds(10);
constexpr auto kThreadsGoneDeadline = std::chrono::seconds(10);
constexpr std::size_t kArgumentBytes = 64;
constexpr int kMaxPointerArguments = 8;

void* const kHostInstance = reinterpret_cast<void*>(0x400000);

std::atomic<bool> running{true};
// Init and Terminate may not overlap any other call: host threads hold it
// shared around each call, the Init thread exclusively around a restart.
std::shared_mutex libraryGate;
// Set while a restart waits for the gate: readers step aside, or a pair of
// busy host threads could keep it shared for ever.
std::atomic<bool> restartWaiting{false};

std::atomic<uint64_t> calls{0};
std::atomic<uint64_t> inputs{0};
std::atomic<uint64_t> plugEvents{0};
std::atomic<uint64_t> restarts{0};
std::atomic<uint64_t> inputCallbacks{0};
std::atomic<uint64_t> queueRefusals{0};

// Arguments of one random call: output pointers to scratch memory or null,
// input pointers to random text, numbers at random.
class RandomArguments {
 public:
  explicit RandomArguments(std::mt19937& random) : random_(random) {
    for (auto& byte : text_) byte = static_cast<char>(1 + random_() % 255);
    text_.back() = '\0';
  }
  void* Output() { return random_() % 8 == 0 ? nullptr : scratch_[used_++ % kMaxPointerArguments]; }
  const void* Input() { return random_() % 16 == 0 ? nullptr : text_.data(); }
  uint32_t Number() { return random_() % 4 == 0 ? static_cast<uint32_t>(random_()) : random_() % 16; }

 private:
  std::mt19937& random_;
  alignas(8) uint8_t scratch_[kMaxPointerArguments][kArgumentBytes] = {};
  std::vector<char> text_ = std::vector<char>(kArgumentBytes);
  int used_ = 0;
};

template <class T>
T Make(RandomArguments& arguments) {
  if constexpr (std::is_pointer_v<T>) {
    if constexpr (std::is_const_v<std::remove_pointer_t<T>>) {
      return static_cast<T>(arguments.Input());
    } else {
      return static_cast<T>(arguments.Output());
    }
  } else {
    return static_cast<T>(arguments.Number());
  }
}

struct ModelExport {
  int32_t typeCode;
  std::function<int32_t(int32_t, RandomArguments&)> call;
};

template <class... Params>
std::function<int32_t(int32_t, RandomArguments&)> CallerOf(int32_t (*function)(int32_t, Params...)) {
  return [function](int32_t index, RandomArguments& arguments) { return function(index, Make<Params>(arguments)...); };
}

#define PELM_CORE_PAIR(ret, name, params, args)
#define PELM_CORE_SINGLE(ret, form, name, params, args)
#define PELM_MODEL_COUNT(family)
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family)
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  {pelm::families::family::kTypeCode, CallerOf(&family##_##op)},
#define PELM_MODEL_OP(family, op, params, args)          \
  PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  {pelm::families::family::kTypeCode, CallerOf(&family##_##op##_stdcall)},
const std::vector<ModelExport> kModelExports = {
#include "core/pelm_exports.h"
};

int CountThreads() {
  int count = 0;
  if (DIR* tasks = opendir("/proc/self/task")) {
    while (const dirent* entry = readdir(tasks)) count += entry->d_name[0] != '.';
    closedir(tasks);
  }
  return count;
}

// Connect events per slot, checked as they come on the Init thread.
class ConnectLedger {
 public:
  static void Record(int32_t modelType, int32_t deviceIndex, int32_t event) {
    plugEvents++;
    bool& connected = connected_[{modelType, deviceIndex}];
    const bool arrival = event == PELM_EVENT_ARRIVAL;
    if (event != PELM_EVENT_ARRIVAL && event != PELM_EVENT_REMOVAL) ++violations_;
    // Slots found at Init start connected without an event.
    if (arrival == connected && (arrival || seen_.contains({modelType, deviceIndex}))) ++violations_;
    seen_.insert({modelType, deviceIndex});
    connected = arrival;
  }
  static void Restart() {
    connected_.clear();
    seen_.clear();
    for (const pelm::ModelDescriptor& model : pelm::ModelsInProbeOrder()) {
      for (int32_t index = 0; index < model.slotCount; ++index) {
        PelmDevInfo info;
        if (PelmDev_GetDeviceInfo(model.typeCode, index, &info) == PELM_SUCCESS) {
          connected_[{model.typeCode, index}] = true;
          seen_.insert({model.typeCode, index});
        }
      }
    }
  }
  static int Violations() { return violations_; }

 private:
  static inline std::map<std::pair<int32_t, int32_t>, bool> connected_;
  static inline std::set<std::pair<int32_t, int32_t>> seen_;
  static inline int violations_ = 0;
};

void OnInput(int32_t, int32_t, void*) { inputCallbacks++; }

void StartLibrary() {
  PelmDev_Init(kHostInstance);
  ConnectLedger::Restart();
  PelmDev_RegisterConnectCallback(&ConnectLedger::Record);
  PelmDev_RegisterInputCallback(&OnInput);
}

// Terminate destroys the device objects: their queues' marks are read first.
void RestartLibrary(pelm::soak::QueueLimitCheck& queueLimits) {
  queueLimits.Sample();
  PelmDev_Terminate();
  StartLibrary();
}

void HostThread(unsigned seed) {
  std::mt19937 random(seed);
  while (running) {
    const ModelExport& entry = kModelExports[random() % kModelExports.size()];
    // Mostly the first slots, now and then any index at all.
    const int32_t index = random() % 8 == 0 ? static_cast<int32_t>(random()) : static_cast<int32_t>(random() % 3);
    RandomArguments arguments(random);
    while (restartWaiting) std::this_thread::yield();
    std::shared_lock hold(libraryGate);
    if (entry.call(index, arguments) == PELM_ERR_QUEUE) queueRefusals++;
    calls++;
  }
}

struct PluggedPanel {
  pelm::sim::DeviceDescription description;
  std::shared_ptr<pelm::sim::SimDevice> device;
  bool present = true;
  int generation = 0;
};

pelm::sim::DeviceDescription DescriptionFor(const pelm::ModelDescriptor& model, int instance, int generation) {
  pelm::sim::DeviceDescription description;
  description.path = "\\\\?\\hid#vid_fff0&pid_" + std::to_string(model.productId) + "#soak&" + std::to_string(instance) +
              "&" + std::to_string(generation);
  description.vendorId = pelm::kVendorId;
  description.productId = model.productId;
  description.caps = {kLongestReport, kLongestReport, kLongestReport};
  return description;
}

// Input at random rates, unplugs and replugs, slow devices, failing sends.
void DeviceThread(std::vector<PluggedPanel>& panels, unsigned seed) {
  std::mt19937 random(seed);
  pelm::sim::Bus& bus = pelm::sim::Bus::Instance();
  while (running) {
    PluggedPanel& panel = panels[random() % panels.size()];
    switch (random() % 64) {
      case 0: {
        // Not while Init or Terminate runs: a panel that comes or goes while
        // Init enumerates is both found and announced, or neither, and the
        // connect ledger could not tell that from a wrong pair of events.
        while (restartWaiting) std::this_thread::yield();
        std::shared_lock hold(libraryGate);
        if (panel.present) bus.Unplug(panel.description.path);
        else {
          // Back at the same path, or at a new one as after a move to another port.
          if (random() % 2 == 0) {
            bus.Unplug(panel.description.path, false);
            panel.description = DescriptionFor(*pelm::ModelByProductId(panel.description.productId), static_cast<int>(&panel - &panels[0]),
                                 ++panel.generation);
          }
          panel.device = bus.Plug(panel.description);
        }
        panel.present = !panel.present;
        break;
      }
      case 1:
        panel.device->SetOperationDelay(std::chrono::milliseconds(random() % 3));
        break;
      case 2:
        panel.device->FailNextSends(static_cast<int>(random() % 4));
        break;
      default: {
        pelm::sim::Report report(random() % (kLongestReport + 1));
        for (uint8_t& byte : report) byte = static_cast<uint8_t>(random());
        if (!report.empty()) report[0] = 0;
        panel.device->InjectInput(report);
        inputs++;
        std::this_thread::sleep_for(std::chrono::microseconds(random() % 500));  // input pacing, not a wait
      }
    }
  }
}

// Lists a check's failures, the first few in full.
bool ReportFailures(const char* check, const std::vector<std::string>& failures) {
  constexpr std::size_t kFailuresShown = 20;
  for (std::size_t i = 0; i < failures.size() && i < kFailuresShown; ++i) {
    std::printf("FAIL: %s: %s\n", check, failures[i].c_str());
  }
  if (failures.size() > kFailuresShown) {
    std::printf("FAIL: %s: %zu more failures\n", check, failures.size() - kFailuresShown);
  }
  return failures.empty();
}

int SecondsFromArguments(int argc, char** argv) {
  for (int i = 1; i + 1 < argc; ++i) {
    if (std::strcmp(argv[i], "--seconds") == 0) return std::atoi(argv[i + 1]);
  }
  return kDefaultSeconds;
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = SecondsFromArguments(argc, argv);
  if (seconds <= 0) {
    std::fprintf(stderr, "usage: pelm_soak [--seconds N]  (N > 0, default %d)\n", kDefaultSeconds);
    return 2;
  }
  // A sanitizer runtime starts a helper thread of its own with the program's
  // first thread; start that one before counting so it is not taken for ours.
  std::thread([] {}).join();
  const int threadsBefore = CountThreads();

  pelm::sim::Bus& bus = pelm::sim::Bus::Instance();
  std::vector<PluggedPanel> panels;
  for (const pelm::ModelDescriptor& model : pelm::ModelsInProbeOrder()) {
    const int copies = std::count(std::begin(kTwiceModels), std::end(kTwiceModels), model.typeCode) + 1;
    for (int copy = 0; copy < copies; ++copy) {
      PluggedPanel panel;
      panel.description = DescriptionFor(model, static_cast<int>(panels.size()), 0);
      panel.device = bus.Plug(panel.description);
      panels.push_back(panel);
    }
  }
  StartLibrary();
  pelm::soak::QueueLimitCheck queueLimits(kHostThreads);

  std::vector<std::thread> threads;
  for (int i = 0; i < kHostThreads; ++i) threads.emplace_back(HostThread, 1000u + i);
  threads.emplace_back(DeviceThread, std::ref(panels), 2000u);

  const auto start = Clock::now();
  const auto end = start + std::chrono::seconds(seconds);
  auto nextRestart = start + kRestartInterval;
  auto nextProgress = start + kProgressInterval;
  while (Clock::now() < end) {
    {
      std::shared_lock hold(libraryGate);
      PelmDevExt_DispatchEvents();
    }
    if (Clock::now() >= nextRestart) {
      restartWaiting = true;
      std::unique_lock hold(libraryGate);
      restartWaiting = false;
      RestartLibrary(queueLimits);
      restarts++;
      nextRestart += kRestartInterval;
    }
    if (Clock::now() >= nextProgress) {
      std::printf("soak: %llds, %llu calls, %llu inputs, %llu connect events\n",
                  static_cast<long long>(std::chrono::duration_cast<std::chrono::seconds>(Clock::now() - start).count()),
                  static_cast<unsigned long long>(calls.load()), static_cast<unsigned long long>(inputs.load()),
                  static_cast<unsigned long long>(plugEvents.load()));
      std::fflush(stdout);
      nextProgress += kProgressInterval;
    }
    std::this_thread::yield();
  }
  running = false;
  for (std::thread& thread : threads) thread.join();

  std::vector<pelm::sim::DeviceDescription> lastPlugged;
  for (const PluggedPanel& panel : panels) lastPlugged.push_back(panel.description);
  const pelm::soak::FinalStateOutcome finalState =
      pelm::soak::CheckFinalState(lastPlugged, [&queueLimits] { RestartLibrary(queueLimits); });
  queueLimits.Sample();
  PelmDev_Terminate();

  const auto deadline = Clock::now() + kThreadsGoneDeadline;
  while (CountThreads() != threadsBefore && Clock::now() < deadline) std::this_thread::yield();
  const int threadsAfter = CountThreads();

  std::printf("soak done: %d s, %llu calls, %llu inputs, %llu input callbacks, %llu connect events, %llu restarts\n",
              seconds, static_cast<unsigned long long>(calls.load()), static_cast<unsigned long long>(inputs.load()),
              static_cast<unsigned long long>(inputCallbacks.load()),
              static_cast<unsigned long long>(plugEvents.load()), static_cast<unsigned long long>(restarts.load()));
  std::printf("queue limits: %s; %llu setter calls refused with PELM_ERR_QUEUE\n", queueLimits.Summary().c_str(),
              static_cast<unsigned long long>(queueRefusals.load()));
  std::printf("final state: %d panels with displays or lamps, %d reports compared over %d rounds%s, %zu failures\n",
              finalState.panels, finalState.reports, pelm::soak::kFinalRounds,
              finalState.restarts > 0 ? " (after a restart that freed full slot tables)" : "",
              finalState.failures.size());
  bool ok = ReportFailures("queue limit", queueLimits.Failures());
  if (!queueLimits.AnyQueueReachedItsLimit()) {
    std::printf("FAIL: queue limit: no output queue ever filled up, so the limit went untested; run longer\n");
    ok = false;
  }
  ok = ReportFailures("final state", finalState.failures) && ok;
  if (finalState.panels == 0) {
    std::printf("FAIL: final state: no panel with displays or lamps was found to check\n");
    ok = false;
  }
  if (threadsAfter != threadsBefore) {
    std::printf("FAIL: %d threads before, %d after Terminate\n", threadsBefore, threadsAfter);
    ok = false;
  }
  if (ConnectLedger::Violations() != 0) {
    std::printf("FAIL: %d connect events out of order (two arrivals or two removals in a row)\n",
                ConnectLedger::Violations());
    ok = false;
  }
  if (calls == 0 || inputs == 0) {
    std::printf("FAIL: the soak made no calls or sent no input\n");
    ok = false;
  }
  return ok ? 0 : 1;
}
