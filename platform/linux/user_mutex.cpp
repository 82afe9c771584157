#include "platform/linux/user_mutex.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace pelm::linux_hid {
namespace {

constexpr char kFallbackPrefix[] = "/pelmdev-";
constexpr char kLockFileSuffix[] = ".lock";
constexpr mode_t kPrivateDirectoryMode = 0700;
constexpr mode_t kLockFileMode = 0600;
// Waits between attempts at a lock another process holds: short at first, as
// input callbacks are, then doubling up to the longest.
constexpr std::chrono::microseconds kFirstRetryWait{500};
constexpr std::chrono::microseconds kLongestRetryWait{8000};

// An already open descriptor of something the user owns that nobody else may
// write to.
bool OwnedAndPrivate(int fd, uid_t uid, mode_t type) {
  struct stat info {};
  return fstat(fd, &info) == 0 && (info.st_mode & S_IFMT) == type && info.st_uid == uid &&
         (info.st_mode & (S_IWGRP | S_IWOTH)) == 0;
}

int OpenPrivateDirectory(const std::string& path, uid_t uid) {
  const int fd = open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd < 0) return -1;
  if (OwnedAndPrivate(fd, uid, S_IFDIR)) return fd;
  close(fd);
  return -1;
}

int OpenLockFile(int directory, const std::string& name, uid_t uid) {
  if (directory < 0) return -1;
  const int fd = openat(directory, (name + kLockFileSuffix).c_str(), O_RDWR | O_CREAT | O_NOFOLLOW | O_CLOEXEC,
                        kLockFileMode);
  close(directory);
  if (fd < 0) return -1;
  if (OwnedAndPrivate(fd, uid, S_IFREG)) return fd;
  close(fd);
  return -1;
}

struct flock WholeFile(short type) {
  struct flock range {};
  range.l_type = type;
  range.l_whence = SEEK_SET;  // from 0, length 0: the whole file
  return range;
}

}  // namespace

int OpenUserLockDirectory(const std::string& runUserRoot, const std::string& fallbackRoot, uid_t uid) {
  const std::string user = std::to_string(uid);
  if (const int fd = OpenPrivateDirectory(runUserRoot + "/" + user, uid); fd >= 0) return fd;
  const std::string fallback = fallbackRoot + kFallbackPrefix + user;
  // Fails harmlessly when it exists; whoever made it, the checks below decide.
  static_cast<void>(mkdir(fallback.c_str(), kPrivateDirectoryMode));
  return OpenPrivateDirectory(fallback, uid);
}

UserMutex::UserMutex(int directory, const std::string& name, uid_t uid)
    : lockFile_(OpenLockFile(directory, name, uid)) {}

UserMutex::~UserMutex() {
  if (lockFile_ >= 0) close(lockFile_);
}

bool UserMutex::LockFor(std::chrono::milliseconds timeout) {
  const auto deadline = std::chrono::steady_clock::now() + timeout;
  if (!inProcess_.LockUntil(deadline)) return false;
  if (lockFile_ < 0 || LockFileUntil(deadline)) return true;
  inProcess_.Unlock();
  return false;
}

void UserMutex::Unlock() {
  if (lockFile_ >= 0) {
    struct flock range = WholeFile(F_UNLCK);
    fcntl(lockFile_, F_SETLK, &range);
  }
  inProcess_.Unlock();
}

bool UserMutex::LockFileUntil(std::chrono::steady_clock::time_point deadline) {
  struct flock range = WholeFile(F_WRLCK);
  std::chrono::microseconds wait = kFirstRetryWait;
  for (;;) {
    if (fcntl(lockFile_, F_SETLK, &range) == 0) return true;
    if (errno != EAGAIN && errno != EACCES && errno != EINTR) return false;
    const auto now = std::chrono::steady_clock::now();
    if (now >= deadline) return false;
    std::this_thread::sleep_for(std::min<std::chrono::steady_clock::duration>(wait, deadline - now));
    wait = std::min(wait * 2, kLongestRetryWait);
  }
}

}  // namespace pelm::linux_hid
