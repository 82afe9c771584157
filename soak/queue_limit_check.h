#pragma once
// The queue-limit end check of the soak. Every device object keeps the most
// reports that were ever pending on its output queue at once; this check reads
// that mark from every object in the slot tables and holds it against the limit
// the export contracts promise. Terminate destroys the objects, so the soak
// samples them right before each Terminate.

#include <cstdint>
#include <string>
#include <vector>

namespace pelm::soak {

class QueueLimitCheck {
 public:
  // `queuingThreads`: how many threads may queue reports to one device at once.
  explicit QueueLimitCheck(int queuingThreads);

  // Reads the mark of every object in the slot tables. Call it right before each
  // Terminate, on the thread that calls Init and Terminate.
  void Sample();

  // Whether any queue filled up at all: without that the limit went untested.
  bool AnyQueueReachedItsLimit() const { return functionBased_.queuesAtLimit + classBased_.queuesAtLimit > 0; }
  // The highest mark seen per kind of model, with its limit.
  std::string Summary() const;
  const std::vector<std::string>& Failures() const { return failures_; }

 private:
  struct KindRecord {
    const char* name;
    uint32_t limit;
    uint32_t highest = 0;
    uint32_t queuesAtLimit = 0;
  };

  const uint32_t allowedPastLimit_;
  KindRecord functionBased_;
  KindRecord classBased_;
  std::vector<std::string> failures_;
};

}  // namespace pelm::soak
