#pragma once
// Host memory that cannot be written: a writable page followed by a read-only
// one, for records that are unwritable in whole or in part.

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>

namespace pelm::test {

class GuardedMemory {
 public:
  GuardedMemory() : pageSize_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))) {
    void* pages = mmap(nullptr, 2 * pageSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    base_ = pages == MAP_FAILED ? nullptr : static_cast<uint8_t*>(pages);
    if (base_ != nullptr) mprotect(base_ + pageSize_, pageSize_, PROT_READ);
  }
  ~GuardedMemory() {
    if (base_ != nullptr) munmap(base_, 2 * pageSize_);
  }
  GuardedMemory(const GuardedMemory&) = delete;
  GuardedMemory& operator=(const GuardedMemory&) = delete;

  bool Mapped() const { return base_ != nullptr; }
  // A record lying wholly on the read-only page.
  template <class T>
  T* ReadOnly() {
    return reinterpret_cast<T*>(base_ + pageSize_);
  }
  // A record whose last byte lies on the read-only page, the rest writable.
  template <class T>
  T* LastByteReadOnly() {
    return reinterpret_cast<T*>(base_ + pageSize_ - (sizeof(T) - 1));
  }

 private:
  const std::size_t pageSize_;
  uint8_t* base_ = nullptr;
};

}  // namespace pelm::test
