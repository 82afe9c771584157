// Writability of host memory on Linux, the counterpart of IsBadWritePtr.
//
// The kernel does the probing: process_vm_writev into our own address space
// fails with EFAULT instead of faulting when the destination is not writable.
// Where that call is not allowed (some container seccomp profiles), a pipe does
// the same job: read() into an unwritable buffer fails with EFAULT.

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>

#include "platform/platform.h"

namespace pelm::platform {
namespace {

bool WriteThroughPipe(void* destination, const void* source, std::size_t length) {
  static std::mutex pipeMutex;
  static int ends[2] = {-1, -1};
  std::lock_guard hold(pipeMutex);
  if (ends[0] < 0 && pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return false;
  std::size_t done = 0;
  while (done < length) {
    // A pipe holds at least one page, so each chunk fits whole.
    const std::size_t chunk = length - done < 4096 ? length - done : 4096;
    const auto* from = static_cast<const char*>(source) + done;
    if (write(ends[1], from, chunk) != static_cast<ssize_t>(chunk)) return false;
    const ssize_t got = read(ends[0], static_cast<char*>(destination) + done, chunk);
    if (got != static_cast<ssize_t>(chunk)) {
      // Leave the pipe empty for the next caller.
      char scratch[4096];
      while (read(ends[0], scratch, sizeof scratch) > 0) {
      }
      return false;
    }
    done += chunk;
  }
  return true;
}

}  // namespace

bool WriteToHostMemory(void* destination, const void* source, std::size_t length) {
  if (destination == nullptr) return false;
  if (length == 0) return true;
  iovec local{const_cast<void*>(source), length};
  iovec remote{destination, length};
  const ssize_t written = process_vm_writev(getpid(), &local, 1, &remote, 1, 0);
  if (written == static_cast<ssize_t>(length)) return true;
  if (written < 0 && (errno == ENOSYS || errno == EPERM)) return WriteThroughPipe(destination, source, length);
  return false;
}

}  // namespace pelm::platform
