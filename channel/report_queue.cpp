#include "channel/report_queue.h"

#include <new>

namespace pelm {

cReportQueue::~cReportQueue() { Destroy(); }

void cReportQueue::Create() {
  head_ = nullptr;
  tail_ = nullptr;
  count_ = 0;
  highWater_ = 0;
  lock_.reset(new (std::nothrow) std::mutex);
}

void cReportQueue::Destroy() {
  if (!lock_) return;
  {
    std::lock_guard hold(*lock_);
    head_ = nullptr;
    tail_ = nullptr;
    count_ = 0;
  }
  lock_.reset();
}

// Only ever raised under the lock, so no update is lost between two appends.
void cReportQueue::NoteCountLocked(uint32_t count) {
  if (count > highWater_.load()) highWater_ = count;
}

uint32_t cReportQueue::PushBack(QueueEntry* entry, uint32_t limit) {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  if (count_ >= limit) return 0;
  entry->next = nullptr;
  if (tail_ == nullptr) {
    head_ = entry;
  } else {
    tail_->next = entry;
  }
  tail_ = entry;
  NoteCountLocked(++count_);
  return count_;
}

uint32_t cReportQueue::PushFront(QueueEntry* entry) {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  entry->next = head_;
  head_ = entry;
  if (tail_ == nullptr) tail_ = entry;
  // A report put back after a failed send counts too: it sits on top of what
  // the host queued meanwhile.
  NoteCountLocked(++count_);
  return 1;
}

QueueEntry* cReportQueue::PopFront() {
  if (!lock_) return nullptr;
  std::lock_guard hold(*lock_);
  QueueEntry* entry = head_;
  if (entry == nullptr) return nullptr;
  head_ = entry->next;
  if (head_ == nullptr) tail_ = nullptr;
  entry->next = nullptr;
  --count_;
  return entry;
}

uint32_t cReportQueue::Count() {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  return count_;
}

bool cReportQueue::IsEmpty() { return Count() == 0; }

}  // namespace pelm
