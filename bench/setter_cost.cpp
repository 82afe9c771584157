// Setter cost: what a host's call to a display or lamp setter costs, in both
// calling forms. Calls are timed in batches small enough that the output queue
// never refuses one (a refusal is cheaper than a queued report and would flatter
// the figure); between batches, outside the timed region, the writer catches up.
//
// Beside each default-form setter, the same calls while the writer is busy
// inside a slow device: then no call has to wake it, and the difference between
// the two figures is what waking the writer costs the host.

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::bench {
namespace {

// Below the smallest output queue (25 reports), with room for one in flight.
constexpr int kCallsPerBatch = 20;
constexpr std::size_t kBatches = 2000;
constexpr auto kDrainDeadline = std::chrono::seconds(2);
constexpr double kMedianLimitNs = 300;
// Long enough that the writer stays inside the device for a whole batch.
constexpr auto kBusyDeviceDelay = std::chrono::milliseconds(1);
// Each busy batch drains at the device's pace, so fewer of them.
constexpr std::size_t kBusyBatches = 100;
// Time for the woken writer to reach the device before the timed calls start.
constexpr auto kWriterSettle = std::chrono::microseconds(200);
constexpr auto kBusyDrainDeadline = std::chrono::seconds(5);
constexpr uint32_t kWarningColorCount = 8;
constexpr uint32_t kFirstIndicator = 1;

// A setter as a host calls it; `call` gets a running number to vary its value.
struct Setter {
  std::string name;
  uint16_t productId;
  int32_t (*call)(int call);
  bool stdcallForm = false;
};

const char* RadioText(int call) { return call % 2 == 0 ? "123.45" : "678.90"; }
const char* AlphaText(int call) { return call % 2 == 0 ? "PELM" : "HID1"; }
uint32_t ColorIndex(int call) { return static_cast<uint32_t>(call) % kWarningColorCount; }

const std::vector<Setter>& Setters() {
  static const std::vector<Setter> setters = {
      {"PelmRadio_SetLDisplayText", sim::RadioPanelSim::kProductId,
       [](int call) { return PelmRadio_SetLDisplayText(0, RadioText(call)); }},
      {"PelmRadio_SetLDisplayText_stdcall", sim::RadioPanelSim::kProductId,
       [](int call) { return PelmRadio_SetLDisplayText_stdcall(0, RadioText(call)); }, true},
      {"PelmAlpha_SetAlpha", sim::AlphaPanelSim::kAlphaProductId,
       [](int call) { return PelmAlpha_SetAlpha(0, AlphaText(call)); }},
      {"PelmAlpha_SetAlpha_stdcall", sim::AlphaPanelSim::kAlphaProductId,
       [](int call) { return PelmAlpha_SetAlpha_stdcall(0, AlphaText(call)); }, true},
      {"PelmWarning_SetIndColorValue", sim::WarningPanel::kProductId,
       [](int call) { return PelmWarning_SetIndColorValue(0, kFirstIndicator, ColorIndex(call)); }},
      {"PelmWarning_SetIndColorValue_stdcall", sim::WarningPanel::kProductId,
       [](int call) { return PelmWarning_SetIndColorValue_stdcall(0, kFirstIndicator, ColorIndex(call)); }, true},
  };
  return setters;
}

Figure MeasureSetter(const Setter& setter, std::size_t batches) {
  sim::Bus::Instance().Reset();
  auto device = PlugQuietly(PanelDescription(setter.productId, 1));
  PelmDev_Init(nullptr);
  std::vector<double> perCallNs;
  std::size_t expectedSends = SendsReceived(*device);
  int calls = 0;
  std::size_t refusedOrLost = 0;
  for (std::size_t batch = 0; batch < batches; ++batch) {
    int failures = 0;
    const auto start = Clock::now();
    for (int i = 0; i < kCallsPerBatch; ++i) failures += setter.call(calls++) != PELM_SUCCESS;
    const auto elapsed = Clock::now() - start;
    perCallNs.push_back(std::chrono::duration<double, std::nano>(elapsed).count() / kCallsPerBatch);
    expectedSends += static_cast<std::size_t>(kCallsPerBatch - failures);
    // A setter that reports success without queuing shows up as a missing send.
    if (failures != 0 || !SpinUntil([&] { return SendsReceived(*device) >= expectedSends; }, kDrainDeadline)) {
      ++refusedOrLost;
      expectedSends = SendsReceived(*device);
    }
  }
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();
  std::string note = "median of " + std::to_string(batches) + " batches of " + std::to_string(kCallsPerBatch) +
                     " calls; p99 " + std::to_string(static_cast<int>(Percentile(perCallNs, 0.99))) + " ns";
  if (refusedOrLost != 0) note += "; " + std::to_string(refusedOrLost) + " batches lost or refused a report";
  return {setter.name + " per call", Median(perCallNs), "ns", kMedianLimitNs, false, note};
}

// The first call of each batch wakes the writer, untimed; the writer then sits
// in the slow device while the other calls are timed.
Figure MeasureSetterWithWriterBusy(const Setter& setter, std::size_t batches) {
  sim::Bus::Instance().Reset();
  auto device = PlugQuietly(PanelDescription(setter.productId, 1));
  PelmDev_Init(nullptr);
  device->SetOperationDelay(kBusyDeviceDelay);
  constexpr int kTimedCalls = kCallsPerBatch - 1;
  std::vector<double> perCallNs;
  int calls = 0;
  for (std::size_t batch = 0; batch < batches; ++batch) {
    const std::size_t drained = SendsReceived(*device) + kCallsPerBatch;
    setter.call(calls++);
    const auto settled = Clock::now() + kWriterSettle;
    SpinUntil([&] { return Clock::now() >= settled; }, kWriterSettle * 2);
    const auto start = Clock::now();
    for (int i = 0; i < kTimedCalls; ++i) setter.call(calls++);
    perCallNs.push_back(std::chrono::duration<double, std::nano>(Clock::now() - start).count() / kTimedCalls);
    SpinUntil([&] { return SendsReceived(*device) >= drained; }, kBusyDrainDeadline);
  }
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();
  return {setter.name + " per call, writer busy", Median(perCallNs), "ns", {}, false,
          "no wake-up needed: median of " + std::to_string(batches) + " batches of " + std::to_string(kTimedCalls)};
}

}  // namespace

std::vector<Figure> MeasureSetterCost(const RunLength& length) {
  std::vector<Figure> figures;
  for (const Setter& setter : Setters()) {
    Progress("setter cost: " + setter.name);
    figures.push_back(MeasureSetter(setter, length.Scaled(kBatches)));
    if (setter.stdcallForm) continue;
    Progress("setter cost: " + setter.name + " with the writer busy");
    figures.push_back(MeasureSetterWithWriterBusy(setter, length.Scaled(kBusyBatches)));
  }
  return figures;
}

}  // namespace pelm::bench
