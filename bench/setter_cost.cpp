// Setter cost: what a host's call to a display or lamp setter costs, in both
// calling forms, in the two cases a host meets.
//
// With the writer asleep, each call queues a report and wakes it. Calls are
// timed one by one; between them, outside the timed region, the writer sends
// the report and goes back to sleep. Beside it, the floor: a bare
// condition-variable wake of a sleeping thread, timed the same way.
//
// With the writer busy inside a slow device, no call has to wake it: calls are
// timed in batches, beside the floor of a bare append to a locked queue.

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::bench {
namespace {

// Below the smallest output queue (25 reports), with room for one in flight.
constexpr int kCallsPerBatch = 20;
constexpr std::size_t kSleepingWriterCalls = 2000;
constexpr auto kDrainDeadline = std::chrono::seconds(2);
// Time for a thread that finished its work to be back in its wait.
constexpr auto kFallAsleep = std::chrono::microseconds(100);
constexpr double kMedianLimitNs = 300;
constexpr double kWakeLimitRatio = 1.3;
// Long enough that the writer stays inside the device for a whole batch.
constexpr auto kBusyDeviceDelay = std::chrono::milliseconds(1);
// Each busy batch drains at the device's pace, so fewer of them.
constexpr std::size_t kBusyBatches = 100;
// Time for the woken writer to reach the device before the timed calls start.
constexpr auto kWriterSettle = std::chrono::microseconds(200);
constexpr auto kBusyDrainDeadline = std::chrono::seconds(5);
constexpr std::size_t kFloorAppends = 2000 * kCallsPerBatch;
// A typical display report.
constexpr std::size_t kFloorReportLength = 23;
constexpr uint32_t kWarningColorCount = 8;
constexpr uint32_t kFirstIndicator = 1;

void WaitFor(Clock::duration pause) {
  const auto until = Clock::now() + pause;
  SpinUntil([&] { return Clock::now() >= until; }, pause * 2);
}

double NsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::nano>(Clock::now() - start).count();
}

// The floor of a call that wakes a writer: one notify of a thread asleep on
// its condition variable, with the flag it waits for set under its mutex.
std::vector<double> BareWakeNs(std::size_t wakes) {
  std::mutex mutex;
  std::condition_variable wake;
  uint64_t posted = 0;
  std::atomic<uint64_t> taken{0};
  bool stopping = false;
  std::thread sleeper([&] {
    std::unique_lock hold(mutex);
    for (;;) {
      wake.wait(hold, [&] { return stopping || posted != taken.load(); });
      if (stopping) return;
      taken = posted;
    }
  });
  std::vector<double> perWakeNs;
  for (std::size_t i = 0; i < wakes; ++i) {
    WaitFor(kFallAsleep);
    const auto start = Clock::now();
    {
      std::lock_guard hold(mutex);
      ++posted;
    }
    wake.notify_one();
    perWakeNs.push_back(NsSince(start));
    SpinUntil([&] { return taken.load() == i + 1; }, kDrainDeadline);
  }
  {
    std::lock_guard hold(mutex);
    stopping = true;
  }
  wake.notify_one();
  sleeper.join();
  return perWakeNs;
}

// The floor of a call while the writer is busy: a report allocated and
// appended to a locked queue.
double BareAppendNs(std::size_t appends) {
  std::mutex mutex;
  std::deque<std::unique_ptr<uint8_t[]>> queue;
  std::vector<double> perAppendNs;
  for (std::size_t batch = 0; batch < appends / kCallsPerBatch; ++batch) {
    const auto start = Clock::now();
    for (int i = 0; i < kCallsPerBatch; ++i) {
      auto report = std::make_unique<uint8_t[]>(kFloorReportLength);
      std::lock_guard hold(mutex);
      queue.push_back(std::move(report));
    }
    perAppendNs.push_back(NsSince(start) / kCallsPerBatch);
    queue.clear();
  }
  return Median(perAppendNs);
}

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

Figure MeasureSetterWithWriterAsleep(const Setter& setter, std::size_t calls, double floorNs) {
  sim::Bus::Instance().Reset();
  auto device = PlugQuietly(PanelDescription(setter.productId, 1));
  PelmDev_Init(nullptr);
  std::vector<double> perCallNs;
  std::size_t expectedSends = SendsReceived(*device);
  std::size_t refusedOrLost = 0;
  for (std::size_t call = 0; call < calls; ++call) {
    WaitFor(kFallAsleep);
    const auto start = Clock::now();
    const bool queued = setter.call(static_cast<int>(call)) == PELM_SUCCESS;
    perCallNs.push_back(NsSince(start));
    expectedSends += queued ? 1 : 0;
    // A setter that reports success without queuing shows up as a missing send.
    if (!queued || !SpinUntil([&] { return SendsReceived(*device) >= expectedSends; }, kDrainDeadline)) {
      ++refusedOrLost;
      expectedSends = SendsReceived(*device);
    }
  }
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();
  const double median = Median(perCallNs);
  std::string note = "writer asleep, one wake a call: median of " + std::to_string(calls) + " calls, " +
                     std::to_string(median / floorNs).substr(0, 4) + "x a bare wake of " +
                     std::to_string(static_cast<int>(floorNs)) + " ns just before; p99 " +
                     std::to_string(static_cast<int>(Percentile(perCallNs, 0.99))) + " ns";
  if (refusedOrLost != 0) note += "; " + std::to_string(refusedOrLost) + " calls lost or refused a report";
  return {setter.name + " per call", median, "ns", floorNs * kWakeLimitRatio, false, note};
}

// The first call of each batch wakes the writer, untimed; the writer then sits
// in the slow device while the other calls are timed.
Figure MeasureSetterWithWriterBusy(const Setter& setter, std::size_t batches, double floorNs) {
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
  const double median = Median(perCallNs);
  return {setter.name + " per call, writer busy", median, "ns", kMedianLimitNs, false,
          "no wake-up needed: median of " + std::to_string(batches) + " batches of " + std::to_string(kTimedCalls) +
              ", " + std::to_string(median / floorNs).substr(0, 4) + "x the bare append"};
}

}  // namespace

std::vector<Figure> MeasureSetterCost(const RunLength& length) {
  Progress("setter cost: bare condition-variable wakes and queue appends");
  const double wakeFloorNs = Median(BareWakeNs(length.Scaled(kSleepingWriterCalls)));
  const double appendFloorNs = BareAppendNs(length.Scaled(kFloorAppends));
  std::vector<Figure> figures = {
      {"bare condition-variable wake of a sleeping thread (floor)", wakeFloorNs, "ns", {}, false,
       "lock, set, unlock, notify_one; median of " + std::to_string(length.Scaled(kSleepingWriterCalls)) +
           "; measured again before each setter"},
      {"bare append to a locked queue (floor)", appendFloorNs, "ns", {}, false,
       "allocate a report, lock, push_back; median of batches of " + std::to_string(kCallsPerBatch)},
  };
  for (const Setter& setter : Setters()) {
    Progress("setter cost: " + setter.name);
    // The machine's load moves the wake's cost: each setter is held to a floor
    // measured just before it.
    const double nearFloorNs = Median(BareWakeNs(length.Scaled(kSleepingWriterCalls)));
    figures.push_back(MeasureSetterWithWriterAsleep(setter, length.Scaled(kSleepingWriterCalls), nearFloorNs));
    if (setter.stdcallForm) continue;
    Progress("setter cost: " + setter.name + " with the writer busy");
    figures.push_back(MeasureSetterWithWriterBusy(setter, length.Scaled(kBusyBatches), appendFloorNs));
  }
  return figures;
}

}  // namespace pelm::bench
