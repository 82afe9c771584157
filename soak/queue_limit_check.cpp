#include "soak/queue_limit_check.h"

#include <algorithm>
#include <initializer_list>

#include "channel/hid_channel.h"
#include "core/model_table.h"
#include "core/slot_tables.h"

namespace pelm::soak {
namespace {

// The limits the export contracts promise: PELM_ERR_QUEUE once this many
// reports wait on a function-based model, or on a class-based one.
constexpr uint32_t kFunctionBasedLimit = 25;
constexpr uint32_t kClassBasedLimit = 100;
// The report a writer holds while it sends: put back at the head when the
// send fails.
constexpr uint32_t kReportsPutBack = 1;

}  // namespace

// Counting and appending are two steps, so each queuing thread but the first may
// slip one report past a full queue, and the writer may put a report whose send
// failed back at the head on top of them.
QueueLimitCheck::QueueLimitCheck(int queuingThreads)
    : allowedPastLimit_(static_cast<uint32_t>(queuingThreads - 1) + kReportsPutBack),
      functionBased_{"function-based", kFunctionBasedLimit},
      classBased_{"class-based", kClassBasedLimit} {}

void QueueLimitCheck::Sample() {
  for (const ModelDescriptor& model : ModelsInProbeOrder()) {
    KindRecord& kind = model.kind == ModelKind::ClassBased ? classBased_ : functionBased_;
    for (int32_t index = 0; index < model.slotCount; ++index) {
      const cHidChannel* object = ReadSlot(model, index);
      if (object == nullptr) continue;
      const uint32_t highWater = object->PendingReportsHighWater();
      kind.highest = std::max(kind.highest, highWater);
      if (highWater >= kind.limit) ++kind.queuesAtLimit;
      if (highWater > kind.limit + allowedPastLimit_) {
        failures_.push_back(std::string(model.family) + " index " + std::to_string(index) + " (" +
                            object->DevicePath() + ") held " + std::to_string(highWater) +
                            " reports at once; its limit is " + std::to_string(kind.limit) + ", at most " +
                            std::to_string(kind.limit + allowedPastLimit_) + " with racing callers");
      }
    }
  }
}

std::string QueueLimitCheck::Summary() const {
  std::string summary;
  for (const KindRecord* kind : {&functionBased_, &classBased_}) {
    if (!summary.empty()) summary += "; ";
    summary += std::string(kind->name) + " highest " + std::to_string(kind->highest) + " pending (limit " +
               std::to_string(kind->limit) + ", queues that reached it: " + std::to_string(kind->queuesAtLimit) + ")";
  }
  return summary;
}

}  // namespace pelm::soak
