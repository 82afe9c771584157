#include "platform/linux/shared_mutex.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <ctime>
#include <thread>

namespace pelm::linux_hid {
namespace {

enum : uint32_t { kUninitialised = 0, kInitialising = 1, kReady = 2 };
// A creator that died half-way through initialising leaves the object unusable;
// waiting for it is bounded.
constexpr int kReadyWaitSteps = 1000;
constexpr std::chrono::microseconds kReadyWaitStep{100};

}  // namespace

struct SharedMutex::Shared {
  std::atomic<uint32_t> state;
  pthread_mutex_t mutex;
};

std::unique_ptr<SharedMutex> SharedMutex::Open(const std::string& name) {
  const std::string objectName = "/" + name;
  const int fd = shm_open(objectName.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (fd < 0) return nullptr;
  // Other users' processes share it too: the mode is not narrowed by the umask.
  static_cast<void>(fchmod(fd, 0666));
  void* memory = nullptr;
  if (ftruncate(fd, sizeof(Shared)) == 0) {
    memory = mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
  }
  close(fd);
  if (memory == nullptr || memory == MAP_FAILED) return nullptr;

  // A fresh object is zero-filled; the first process to claim it initialises.
  auto* shared = static_cast<Shared*>(memory);
  uint32_t expected = kUninitialised;
  if (shared->state.compare_exchange_strong(expected, kInitialising)) {
    pthread_mutexattr_t attributes;
    pthread_mutexattr_init(&attributes);
    pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    pthread_mutex_init(&shared->mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    shared->state = kReady;
  }
  for (int step = 0; shared->state != kReady; ++step) {
    if (step == kReadyWaitSteps) {
      munmap(memory, sizeof(Shared));
      return nullptr;
    }
    std::this_thread::sleep_for(kReadyWaitStep);
  }
  return std::unique_ptr<SharedMutex>(new SharedMutex(shared));
}

SharedMutex::~SharedMutex() { munmap(shared_, sizeof(Shared)); }

bool SharedMutex::LockFor(std::chrono::milliseconds timeout) {
  timespec deadline{};
  clock_gettime(CLOCK_REALTIME, &deadline);
  const auto total = std::chrono::nanoseconds(deadline.tv_nsec) + timeout;
  deadline.tv_sec += static_cast<time_t>(std::chrono::duration_cast<std::chrono::seconds>(total).count());
  deadline.tv_nsec = static_cast<long>((total % std::chrono::seconds(1)).count());
  const int result = pthread_mutex_timedlock(&shared_->mutex, &deadline);
  if (result == EOWNERDEAD) {
    // Its last owner died inside a callback; the mutex guards no data, so it
    // is simply taken over.
    pthread_mutex_consistent(&shared_->mutex);
    return true;
  }
  return result == 0;
}

void SharedMutex::Unlock() { pthread_mutex_unlock(&shared_->mutex); }

}  // namespace pelm::linux_hid
