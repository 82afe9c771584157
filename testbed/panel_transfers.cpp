#include "testbed/panel_transfers.h"

#include <utility>

namespace pelm::vm {

void TransferRecord::RefuseNext(int count) {
  std::lock_guard hold(mutex_);
  refusals_ = count;
}

bool TransferRecord::TakeRefusal() {
  std::lock_guard hold(mutex_);
  if (refusals_ == 0) return false;
  --refusals_;
  return true;
}

void TransferRecord::Add(TransferKind kind, const uint8_t* data, std::size_t size, bool accepted) {
  std::lock_guard hold(mutex_);
  received_.push_back({kind, Report(data, data + size), accepted});
  changed_.notify_all();
}

std::vector<Transfer> TransferRecord::All() const {
  std::lock_guard hold(mutex_);
  return received_;
}

void TransferRecord::Clear() {
  std::lock_guard hold(mutex_);
  received_.clear();
}

std::vector<Transfer> TransferRecord::Take() {
  std::lock_guard hold(mutex_);
  return std::exchange(received_, {});
}

bool TransferRecord::WaitFor(const std::function<bool(const std::vector<Transfer>&)>& predicate,
                             std::chrono::milliseconds timeout) const {
  std::unique_lock hold(mutex_);
  return changed_.wait_for(hold, timeout, [&] { return predicate(received_); });
}

}  // namespace pelm::vm
