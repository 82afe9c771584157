#pragma once
// What a kernel-side test panel received from the host, in order, and how
// many of the next report sets it is to refuse: shared by the uhid panels and
// the USB gadget panels.

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <vector>

namespace pelm::vm {

using Report = std::vector<uint8_t>;

enum class TransferKind { Feature, Output };

struct Transfer {
  TransferKind kind;
  Report bytes;    // byte 0 is the report ID
  bool accepted;   // false when the device was told to refuse it
  bool operator==(const Transfer&) const = default;
};

class TransferRecord {
 public:
  // The next `count` report sets are refused.
  void RefuseNext(int count);
  // Whether the set arriving now is to be refused; uses up one refusal if so.
  bool TakeRefusal();

  void Add(TransferKind kind, const uint8_t* data, std::size_t size, bool accepted);
  std::vector<Transfer> All() const;
  void Clear();
  // What was received, cleared in the same step (nothing is lost between).
  std::vector<Transfer> Take();
  // Waits (bounded) until `predicate` holds for what was received.
  bool WaitFor(const std::function<bool(const std::vector<Transfer>&)>& predicate,
               std::chrono::milliseconds timeout) const;

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable changed_;
  std::vector<Transfer> received_;
  int refusals_ = 0;
};

}  // namespace pelm::vm
