#pragma once
// A mutex shared by every process that opens the same name: a robust,
// process-shared pthread mutex in a named shared-memory object. A process that
// dies holding it does not block the others: the next owner takes it over.

#include <chrono>
#include <memory>
#include <string>

namespace pelm::linux_hid {

class SharedMutex {
 public:
  // Null when the shared-memory object cannot be created or mapped.
  static std::unique_ptr<SharedMutex> Open(const std::string& name);
  ~SharedMutex();
  SharedMutex(const SharedMutex&) = delete;
  SharedMutex& operator=(const SharedMutex&) = delete;

  bool LockFor(std::chrono::milliseconds timeout);
  void Unlock();

 private:
  struct Shared;
  explicit SharedMutex(Shared* shared) : shared_(shared) {}
  Shared* const shared_;
};

}  // namespace pelm::linux_hid
