#pragma once
// The in-process half of a named mutex, shared by the simulated and the Linux
// backends: a mutex whose timed lock counts on the steady clock, and one such
// object per name within the process.

#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "platform/platform.h"

namespace pelm::platform {

// Built on a condition variable rather than std::timed_mutex, whose timed lock
// goes through a glibc call that ThreadSanitizer does not see.
class InProcessMutex {
 public:
  bool LockUntil(std::chrono::steady_clock::time_point deadline) {
    std::unique_lock hold(mutex_);
    if (!released_.wait_until(hold, deadline, [this] { return !locked_; })) return false;
    locked_ = true;
    return true;
  }
  bool LockFor(std::chrono::milliseconds timeout) { return LockUntil(std::chrono::steady_clock::now() + timeout); }
  void Unlock() {
    {
      std::lock_guard hold(mutex_);
      locked_ = false;
    }
    released_.notify_one();
  }

 private:
  std::mutex mutex_;
  std::condition_variable released_;
  bool locked_ = false;
};

// The object of this name, made by `make` when none is alive in the process.
template <class Mutex, class Make>
std::shared_ptr<Mutex> SharedByName(const std::string& name, Make&& make) {
  static std::mutex registryMutex;
  // Destroyed with the library, as the mutex guarding it is: nothing looks a
  // name up after Terminate, and a library loaded again and again keeps no
  // registry of an earlier load.
  static std::map<std::string, std::weak_ptr<Mutex>> registry;
  std::lock_guard hold(registryMutex);
  std::shared_ptr<Mutex> mutex = registry[name].lock();
  if (!mutex) {
    mutex = make();
    registry[name] = mutex;
  }
  return mutex;
}

// A NamedMutex handle on a shared mutex.
template <class Mutex>
class SharedNamedMutex : public NamedMutex {
 public:
  explicit SharedNamedMutex(std::shared_ptr<Mutex> mutex) : mutex_(std::move(mutex)) {}
  bool LockFor(std::chrono::milliseconds timeout) override { return mutex_->LockFor(timeout); }
  void Unlock() override { mutex_->Unlock(); }

 private:
  const std::shared_ptr<Mutex> mutex_;
};

}  // namespace pelm::platform
