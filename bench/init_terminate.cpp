// Init and Terminate with a full desk: panels of every model and foreign HID
// devices, which every model's probe opens and turns away.

#include "bench/benchmarks.h"
#include "core/model_table.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr int kPanels = 64;
constexpr int kForeignDevices = 16;
constexpr std::size_t kRounds = 20;
constexpr double kLimitMs = 50;

double MillisecondsOf(uint32_t (*call)()) {
  const auto start = Clock::now();
  call();
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

uint32_t Init() { return PelmDev_Init(nullptr); }
uint32_t Terminate() { return PelmDev_Terminate(); }

}  // namespace

std::vector<Figure> MeasureInitAndTerminate(const RunLength& length) {
  sim::Bus::Instance().Reset();
  auto panels = PlugMixedPanels(kPanels);
  std::vector<std::shared_ptr<sim::SimDevice>> foreign;
  for (int i = 0; i < kForeignDevices; ++i) foreign.push_back(PlugQuietly(ForeignDeviceDescription(i + 1)));

  const std::size_t rounds = length.Scaled(kRounds);
  Progress("Init and Terminate: " + std::to_string(rounds) + " rounds with " + std::to_string(kPanels) +
           " panels and " + std::to_string(kForeignDevices) + " foreign devices");
  // One round before timing, so that first-use costs (the callback mutex) stay out.
  Init();
  Terminate();
  std::vector<double> initMs, terminateMs;
  bool allOpened = true;
  for (std::size_t round = 0; round < rounds; ++round) {
    initMs.push_back(MillisecondsOf(&Init));
    allOpened = allOpened && AllOpened(panels);
    terminateMs.push_back(MillisecondsOf(&Terminate));
  }
  const std::size_t probesPerForeignDevice = foreign.front()->CountOf(sim::LogOp::Open) / (rounds + 1);
  sim::Bus::Instance().Reset();

  const std::string setup = std::to_string(kPanels) + " panels of " + std::to_string(kModelCount) +
                            " models + " + std::to_string(kForeignDevices) + " foreign devices, each opened " +
                            std::to_string(probesPerForeignDevice) + " times per Init" +
                            (allOpened ? "" : "; NOT EVERY PANEL WAS OPENED");
  const auto worst = [](const std::vector<double>& samples) { return Percentile(samples, 1.0); };
  return {
      {"PelmDev_Init, median", Median(initMs), "ms", kLimitMs, false, setup},
      {"PelmDev_Init, worst of " + std::to_string(rounds), worst(initMs), "ms", kLimitMs, false, ""},
      {"PelmDev_Terminate, median", Median(terminateMs), "ms", kLimitMs, false, ""},
      {"PelmDev_Terminate, worst of " + std::to_string(rounds), worst(terminateMs), "ms", kLimitMs, false, ""},
  };
}

}  // namespace pelm::bench
