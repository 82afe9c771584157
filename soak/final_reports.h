#pragma once
// What the soak's quiet phase sets on each panel at the end, and how it reads
// back what the panel shows: one entry per display and lamp report of a model.

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "platform/sim/sim_bus.h"

namespace pelm::soak {

// The quiet phase sets every report twice. The first round flushes whatever the
// host threads left queued; the second round's values differ from the first's
// in every byte a report carries, so a panel shows them only once the second
// round's report reached it.
inline constexpr int kFinalRounds = 2;

struct FinalReport {
  std::string what;
  uint8_t reportId;
  // Makes the round's setter call on the device in slot `index`; its status.
  std::function<int32_t(int32_t index, int round)> set;
  // What the panel must hold after the round: the report ID, then the bytes the
  // panel keeps of the report.
  std::function<sim::Report(int round)> expected;
  // What the panel holds for this report now, in the same form; empty when it
  // never received one.
  std::function<sim::Report(sim::SimDevice& device)> shown;
};

// The display and lamp reports of the model with this type code; none for a
// model that only reports its controls.
std::vector<FinalReport> FinalReportsOf(int32_t typeCode);

}  // namespace pelm::soak
