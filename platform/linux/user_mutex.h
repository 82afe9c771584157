#pragma once
// A mutex shared by every process of one user: within the process a mutex
// timed on the steady clock, across processes a lock on a file in a directory
// that only this user can write.
//
// The cross-process part is a POSIX record lock (fcntl F_SETLK):
//  - it lives in the kernel, so 32-bit and 64-bit processes share it without a
//    memory layout to agree on;
//  - the kernel drops it when its process dies, so a holder that dies inside
//    a callback blocks nobody;
//  - it belongs to the process, so a child forked while it is held does not
//    hold it too (flock and OFD locks go with the open file into the child);
//  - nobody but the user can open the file, let alone hold its lock.
// It is taken with non-blocking attempts and short waits until the deadline.

#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>

#include "platform/posix/in_process_mutex.h"

namespace pelm::linux_hid {

// Where the user's lock files go, opened as a directory: `runUserRoot`/<uid>
// ("/run/user/1000", made by the login manager) when it is a directory of the
// user's that nobody else may write; otherwise `fallbackRoot`/pelmdev-<uid>
// (fallbackRoot is "/tmp"), made mode 0700 if missing and taken only if it is
// the user's own directory and private (someone else may have made it first).
// -1 when neither is safe.
int OpenUserLockDirectory(const std::string& runUserRoot, const std::string& fallbackRoot, uid_t uid);

class UserMutex {
 public:
  // `directory` (from OpenUserLockDirectory, owned by the mutex from here on)
  // holds the lock file `name`.lock. With no directory (-1) or a lock file
  // that cannot be opened safely, the mutex serialises within this process
  // only.
  UserMutex(int directory, const std::string& name, uid_t uid);
  ~UserMutex();
  UserMutex(const UserMutex&) = delete;
  UserMutex& operator=(const UserMutex&) = delete;

  // True when the lock file is in place: other processes are excluded too.
  bool SharedWithOtherProcesses() const { return lockFile_ >= 0; }

  bool LockFor(std::chrono::milliseconds timeout);
  void Unlock();

 private:
  bool LockFileUntil(std::chrono::steady_clock::time_point deadline);

  platform::InProcessMutex inProcess_;
  const int lockFile_;
};

}  // namespace pelm::linux_hid
