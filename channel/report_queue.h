#pragma once
// The output report queue of one device: a singly linked list of pending
// entries under a lock, linked through the entries themselves so that a host
// thread's append costs one lock and no allocation. Host threads append
// through the channel's QueueReport; the device's writer thread takes entries
// from the head and puts back at the head a report whose send failed. The
// queue never looks inside an entry and never releases one: entries belong to
// the channel.

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>

#include "channel/report.h"

namespace pelm {

class cReportQueue {
 public:
  cReportQueue() = default;
  ~cReportQueue();
  cReportQueue(const cReportQueue&) = delete;
  cReportQueue& operator=(const cReportQueue&) = delete;

  // Makes the queue empty and gives it its lock. Without a lock (never created,
  // destroyed, or out of memory) the queue acts as empty and refuses entries.
  void Create();
  // Forgets the entries (without releasing them) and releases the lock.
  void Destroy();

  // Appends unless the queue already holds `limit` entries: the number of
  // entries after the append, or 0 when nothing was appended.
  uint32_t PushBack(QueueEntry* entry, uint32_t limit);
  // 1 when the entry was inserted at the head, else 0.
  uint32_t PushFront(QueueEntry* entry);
  // The head entry, removed from the queue; null when empty.
  QueueEntry* PopFront();
  uint32_t Count();
  bool IsEmpty();
  // The most entries the queue has held at once since Create. Readable from any
  // thread without the lock, so a watcher can check the queue limit held.
  uint32_t HighWater() const { return highWater_.load(); }

 private:
  void NoteCountLocked(uint32_t count);

  QueueEntry* head_ = nullptr;
  QueueEntry* tail_ = nullptr;
  uint32_t count_ = 0;
  std::unique_ptr<std::mutex> lock_;
  std::atomic<uint32_t> highWater_{0};
};

}  // namespace pelm
