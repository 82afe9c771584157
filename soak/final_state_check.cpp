#include "soak/final_state_check.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <memory>

#include "channel/hid_channel.h"
#include "core/model_table.h"
#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "core/slot_tables.h"
#include "soak/final_reports.h"

namespace pelm::soak {
namespace {

using Clock = std::chrono::steady_clock;

// Generous: under ThreadSanitizer a writer may need seconds for a few dozen
// reports, and a slow device finishes the operation it had begun.
constexpr auto kDrainDeadline = std::chrono::seconds(30);

struct PanelUnderCheck {
  const ModelDescriptor* model;
  int32_t index;
  cHidChannel* object;
  std::shared_ptr<sim::SimDevice> device;
  std::vector<FinalReport> reports;
};

std::string Hex(const sim::Report& bytes) {
  if (bytes.empty()) return "(nothing)";
  std::string text;
  for (uint8_t byte : bytes) {
    char digits[4];
    std::snprintf(digits, sizeof digits, "%02x ", byte);
    text += digits;
  }
  text.pop_back();
  return text;
}

std::string Describe(const PanelUnderCheck& panel) {
  return std::string(panel.model->family) + " index " + std::to_string(panel.index) + " (" +
         panel.device->Description().path + ")";
}

// Every panel present again, its injected failures and delay gone, and every
// arrival handled.
void BringBack(const std::vector<sim::DeviceDescription>& panels) {
  sim::Bus& bus = sim::Bus::Instance();
  for (const sim::DeviceDescription& description : panels) {
    std::shared_ptr<sim::SimDevice> device = bus.Find(description.path);
    if (!device || !device->Present()) device = bus.Plug(description);
    device->FailNextSends(0);
    device->SetOperationDelay(std::chrono::milliseconds(0));
  }
  while (PelmDevExt_DispatchEvents() > 0) {
  }
}

// The connected object that drives the device at `path`, or null.
cHidChannel* ConnectedObjectAt(const ModelDescriptor& model, const std::string& path, int32_t& index) {
  for (index = 0; index < model.slotCount; ++index) {
    cHidChannel* object = ReadSlot(model, index);
    if (object != nullptr && object->IsConnected() && SamePath(object->DevicePath(), path.c_str())) return object;
  }
  return nullptr;
}

// The panels with displays or lamps and their slots. A panel whose model's
// slot table is full of devices that left is placed by a restart; any other
// panel without a connected slot is a failure of the hot-plug handling.
std::vector<PanelUnderCheck> Locate(const std::vector<sim::DeviceDescription>& panels, bool& slotTableFull,
                                    std::vector<std::string>& failures) {
  std::vector<PanelUnderCheck> located;
  slotTableFull = false;
  for (const sim::DeviceDescription& description : panels) {
    const ModelDescriptor& model = *ModelByProductId(description.productId);
    std::vector<FinalReport> reports = FinalReportsOf(model.typeCode);
    if (reports.empty()) continue;
    int32_t index = 0;
    cHidChannel* object = ConnectedObjectAt(model, description.path, index);
    if (object == nullptr) {
      if (LowestEmptySlot(model) < 0) {
        slotTableFull = true;
      } else {
        failures.push_back(std::string(model.family) + " at " + description.path +
                           ": present, every arrival handled, yet no connected slot drives it");
      }
      continue;
    }
    located.push_back({&model, index, object, sim::Bus::Instance().Find(description.path), std::move(reports)});
  }
  return located;
}

// Waits (bounded) until `settled` holds for every panel, re-testing it each
// time a panel's device logs a transfer (the soak leaves logging on); the
// panels for which it never held.
std::vector<const PanelUnderCheck*> WaitUntil(const std::vector<PanelUnderCheck>& panels,
                                              const std::function<bool(const PanelUnderCheck&)>& settled) {
  std::vector<const PanelUnderCheck*> unsettled;
  const auto deadline = Clock::now() + kDrainDeadline;
  for (const PanelUnderCheck& panel : panels) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now());
    if (!panel.device->WaitForLog([&](const std::vector<sim::LogEntry>&) { return settled(panel); },
                                  std::max(left, std::chrono::milliseconds(0)))) {
      unsettled.push_back(&panel);
    }
  }
  return unsettled;
}

// The host threads may have left full queues behind; the rounds' reports would
// be refused on top of them.
void DrainHostReports(const std::vector<PanelUnderCheck>& panels, FinalStateOutcome& outcome) {
  for (const PanelUnderCheck* panel :
       WaitUntil(panels, [](const PanelUnderCheck& panel) { return panel.object->PendingReports() == 0; })) {
    outcome.failures.push_back(Describe(*panel) + ": " + std::to_string(panel->object->PendingReports()) +
                               " reports the host threads queued still wait " +
                               std::to_string(kDrainDeadline.count()) + " s after they stopped");
  }
}

bool Shows(const PanelUnderCheck& panel, int round) {
  for (const FinalReport& report : panel.reports) {
    if (report.shown(*panel.device) != report.expected(round)) return false;
  }
  return true;
}

// Sets every report of every panel, waits until each panel's queue is empty
// and it shows the round's reports (or the deadline passes), then compares.
void RunRound(const std::vector<PanelUnderCheck>& panels, int round, FinalStateOutcome& outcome) {
  const std::string roundName = "round " + std::to_string(round + 1) + " of " + std::to_string(kFinalRounds);
  for (const PanelUnderCheck& panel : panels) {
    for (const FinalReport& report : panel.reports) {
      const int32_t status = report.set(panel.index, round);
      if (status != PELM_SUCCESS) {
        outcome.failures.push_back(Describe(panel) + ": the " + report.what + " setter returned " +
                                   std::to_string(status) + " in the quiet phase (" + roundName + ")");
      }
    }
  }
  WaitUntil(panels, [round](const PanelUnderCheck& panel) {
    return panel.object->PendingReports() == 0 && Shows(panel, round);
  });
  for (const PanelUnderCheck& panel : panels) {
    if (const uint32_t pending = panel.object->PendingReports(); pending != 0) {
      outcome.failures.push_back(Describe(panel) + ": " + std::to_string(pending) + " reports still queued " +
                                 std::to_string(kDrainDeadline.count()) + " s after the " + roundName);
    }
    for (const FinalReport& report : panel.reports) {
      ++outcome.reports;
      const sim::Report expected = report.expected(round);
      const sim::Report shown = report.shown(*panel.device);
      if (shown == expected) continue;
      outcome.failures.push_back(Describe(panel) + ", report " + std::to_string(report.reportId) + " (" +
                                 report.what + "), " + roundName + ": expected " + Hex(expected) +
                                 ", panel shows " + Hex(shown));
    }
  }
}

}  // namespace

FinalStateOutcome CheckFinalState(const std::vector<sim::DeviceDescription>& panels,
                                  const std::function<void()>& restartLibrary) {
  FinalStateOutcome outcome;
  BringBack(panels);
  bool slotTableFull = false;
  std::vector<PanelUnderCheck> located = Locate(panels, slotTableFull, outcome.failures);
  if (slotTableFull) {
    restartLibrary();
    ++outcome.restarts;
    located = Locate(panels, slotTableFull, outcome.failures);
    if (slotTableFull) outcome.failures.push_back("a model's slot table is still full after a restart");
  }
  outcome.panels = static_cast<int>(located.size());
  DrainHostReports(located, outcome);
  for (int round = 0; round < kFinalRounds; ++round) RunRound(located, round, outcome);
  return outcome;
}

}  // namespace pelm::soak
