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
    for (Node* node = head_; node != nullptr;) {
      Node* next = node->next;
      delete node;
      node = next;
    }
    head_ = nullptr;
    tail_ = nullptr;
    count_ = 0;
  }
  lock_.reset();
}

uint32_t cReportQueue::CountLocked() const { return count_; }

// Only ever raised under the lock, so no update is lost between two appends.
void cReportQueue::NoteCountLocked(uint32_t count) {
  if (count > highWater_.load()) highWater_ = count;
}

uint32_t cReportQueue::PushBack(QueueEntry* entry) {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  Node* node = new (std::nothrow) Node{entry, nullptr, tail_};
  if (node == nullptr) return 0;
  if (tail_ == nullptr) {
    head_ = node;
  } else {
    tail_->next = node;
  }
  tail_ = node;
  NoteCountLocked(++count_);
  return count_;
}

uint32_t cReportQueue::PushFront(QueueEntry* entry) {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  Node* node = new (std::nothrow) Node{entry, head_, nullptr};
  if (node == nullptr) return 0;
  if (head_ == nullptr) {
    tail_ = node;
  } else {
    head_->prev = node;
  }
  head_ = node;
  // A report put back after a failed send counts too: it sits on top of what
  // the host queued meanwhile.
  NoteCountLocked(++count_);
  return 1;
}

QueueEntry* cReportQueue::PopFront() {
  if (!lock_) return nullptr;
  std::lock_guard hold(*lock_);
  Node* node = head_;
  if (node == nullptr) return nullptr;
  QueueEntry* entry = node->entry;
  head_ = node->next;
  if (head_ == nullptr) {
    tail_ = nullptr;
  } else {
    head_->prev = nullptr;
  }
  delete node;
  --count_;
  return entry;
}

uint32_t cReportQueue::Count() {
  if (!lock_) return 0;
  std::lock_guard hold(*lock_);
  return CountLocked();
}

bool cReportQueue::IsEmpty() {
  if (!lock_) return true;
  std::lock_guard hold(*lock_);
  return CountLocked() == 0;
}

}  // namespace pelm
