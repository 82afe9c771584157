// Writability of host memory on Linux, the counterpart of IsBadWritePtr.
//
// The kernel does the probing: process_vm_writev into our own address space
// fails with EFAULT instead of faulting when the destination is not writable.
// Where that call is not allowed (some container seccomp profiles), a pipe does
// the same job: read() into an unwritable buffer fails with EFAULT.
//
// Either way the kernel copies up to the first unwritable byte, so a range that
// is only partly writable is saved first and put back after a short copy.

#include <fcntl.h>
#include <sys/uio.h>
#include <unistd.h>

#include <cerrno>
#include <mutex>
#include <new>

#include "platform/platform.h"

namespace pelm::platform {
namespace {

// A pipe holds at least one page, so each chunk fits whole.
constexpr std::size_t kPipeChunk = 4096;

std::size_t CopyThroughPipe(void* destination, const void* source, std::size_t length) {
  static std::mutex pipeMutex;
  static int ends[2] = {-1, -1};
  std::lock_guard hold(pipeMutex);
  if (ends[0] < 0 && pipe2(ends, O_CLOEXEC | O_NONBLOCK) != 0) return 0;
  std::size_t done = 0;
  while (done < length) {
    const std::size_t chunk = length - done < kPipeChunk ? length - done : kPipeChunk;
    const auto* from = static_cast<const char*>(source) + done;
    if (write(ends[1], from, chunk) != static_cast<ssize_t>(chunk)) break;
    const ssize_t got = read(ends[0], static_cast<char*>(destination) + done, chunk);
    if (got > 0) done += static_cast<std::size_t>(got);
    if (got != static_cast<ssize_t>(chunk)) {
      // Leave the pipe empty for the next caller.
      char scratch[kPipeChunk];
      while (read(ends[0], scratch, sizeof scratch) > 0) {
      }
      break;
    }
  }
  return done;
}

// Copies within this process through the kernel, which stops at the first byte
// it cannot read or write instead of faulting. Gives the bytes copied.
std::size_t KernelCopy(void* destination, const void* source, std::size_t length) {
  iovec local{const_cast<void*>(source), length};
  iovec remote{destination, length};
  const ssize_t copied = process_vm_writev(getpid(), &local, 1, &remote, 1, 0);
  if (copied >= 0) return static_cast<std::size_t>(copied);
  if (errno == ENOSYS || errno == EPERM) return CopyThroughPipe(destination, source, length);
  return 0;
}

}  // namespace

bool WriteToHostMemory(void* destination, const void* source, std::size_t length) {
  if (destination == nullptr) return false;
  if (length == 0) return true;
  std::unique_ptr<uint8_t[]> saved(new (std::nothrow) uint8_t[length]);
  if (!saved || KernelCopy(saved.get(), destination, length) != length) return false;
  const std::size_t copied = KernelCopy(destination, source, length);
  if (copied == length) return true;
  KernelCopy(destination, saved.get(), copied);
  return false;
}

}  // namespace pelm::platform
