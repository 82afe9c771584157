#include "tools/pelmctl/monitor.h"

#include <poll.h>

#include <chrono>
#include <string>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "tools/pelmctl/event_printer.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/input_decoding.h"

namespace pelmctl {
namespace {

// Any non-null instance turns hot-plug notification on.
int gHostInstanceTag;
void* const kHostInstance = &gHostInstanceTag;

// How long the loop waits for hot-plug events before it looks at the clock and
// the stop flag again, and how often the simulated pilot moves a control.
constexpr int kPollIntervalMs = 100;
constexpr auto kControlStepInterval = std::chrono::milliseconds(700);

// The callbacks are plain C functions: they reach the monitor through these.
std::atomic<EventPrinter*> gPrinter{nullptr};
std::atomic<int> gInputs{0};
std::atomic<int> gHotplugEvents{0};

std::string DeviceName(int32_t modelType, int32_t deviceIndex) {
  const Family* family = FamilyByModelType(modelType);
  return (family ? std::string(family->name) : "model " + std::to_string(modelType)) + " " +
         std::to_string(deviceIndex);
}

void PELM_CDECL OnInput(int32_t modelType, int32_t deviceIndex, void* record) {
  ++gInputs;
  if (EventPrinter* printer = gPrinter) {
    printer->Print("input    " + DeviceName(modelType, deviceIndex) + ": " +
                   FormatValues(DecodeInputRecord(modelType, record)));
  }
}

void PELM_CDECL OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  ++gHotplugEvents;
  if (EventPrinter* printer = gPrinter) {
    printer->Print(std::string(event == PELM_EVENT_ARRIVAL ? "arrived  " : "removed  ") +
                   DeviceName(modelType, deviceIndex));
  }
}

}  // namespace

MonitorCounts RunMonitor(const MonitorOptions& options, Simulation* simulation, const std::atomic<bool>& stop,
                         std::ostream& out) {
  EventPrinter printer(out);
  gInputs = 0;
  gHotplugEvents = 0;
  gPrinter = &printer;
  if (simulation) simulation->PlugCockpit();
  PelmDev_Init(kHostInstance);
  PelmDev_RegisterConnectCallback(OnConnect);
  PelmDev_RegisterInputCallback(OnInput);

  uint32_t connected = 0;
  for (const Family& family : AllFamilies()) connected += family.connectedCount();
  printer.Print("watching " + std::to_string(connected) + " connected panel(s); Ctrl-C ends");

  using Clock = std::chrono::steady_clock;
  const auto start = Clock::now();
  const auto deadline = start + std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(options.seconds));
  auto nextStep = start;
  int step = 0;
  while (!stop && (options.seconds <= 0 || Clock::now() < deadline)) {
    if (simulation && options.moveControls && Clock::now() >= nextStep) {
      simulation->MoveControls(step++);
      nextStep += kControlStepInterval;
    }
    const int descriptor = PelmDevExt_EventDescriptor();
    if (descriptor >= 0) {
      pollfd events{descriptor, POLLIN, 0};
      poll(&events, 1, kPollIntervalMs);
    } else {
      poll(nullptr, 0, kPollIntervalMs);
    }
    PelmDevExt_DispatchEvents();
  }

  PelmDev_Terminate();
  gPrinter = nullptr;
  MonitorCounts counts{gInputs, gHotplugEvents};
  printer.Print("stopped: " + std::to_string(counts.inputs) + " input(s), " + std::to_string(counts.hotplugEvents) +
                " hot-plug event(s)");
  return counts;
}

}  // namespace pelmctl
