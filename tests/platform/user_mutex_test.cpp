// The input-callback mutex across processes: forked processes of one user take
// it in turn, a dead holder frees it, another user can neither hold nor touch
// it, and its lock file goes only where nobody else may write.

#include "platform/linux/user_mutex.h"

#include <gtest/gtest.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <functional>

namespace pelm::linux_hid {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

constexpr char kName[] = "PelmDev_MtxInputCallback";
constexpr char kLockFile[] = "PelmDev_MtxInputCallback.lock";
constexpr uid_t kOtherUser = 65534;  // nobody

class UserMutexTest : public ::testing::Test {
 protected:
  void SetUp() override {
    base = fs::temp_directory_path() /
           ("pelm-user-mutex-" + std::to_string(getpid()) + "-" +
            ::testing::UnitTest::GetInstance()->current_test_info()->name());
    fs::remove_all(base);
    runUser = base / "run-user";
    tmp = base / "tmp";
    fs::create_directories(runUser);
    fs::create_directories(tmp);
    fs::permissions(tmp, fs::perms::all | fs::perms::sticky_bit);  // as /tmp is
  }
  void TearDown() override { fs::remove_all(base); }

  std::unique_ptr<UserMutex> Open(uid_t user = geteuid()) {
    return std::make_unique<UserMutex>(OpenUserLockDirectory(runUser.string(), tmp.string(), user), kName, user);
  }

  fs::path base;
  fs::path runUser;  // stands for /run/user
  fs::path tmp;      // stands for /tmp
};

// Runs `body` in a forked process and gives the status it exited with.
int InChildProcess(const std::function<int()>& body) {
  const pid_t child = fork();
  if (child == 0) _exit(body());
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

TEST_F(UserMutexTest, ProcessesOfOneUserTakeItInTurnAndADeadHoldersLockIsFreed) {
  auto mutex = Open();
  ASSERT_TRUE(mutex->SharedWithOtherProcesses());
  EXPECT_EQ(InChildProcess([&] {
              auto holder = Open();
              if (!holder->LockFor(1000ms)) return 1;
              _exit(0);  // dies holding it
            }),
            0);
  ASSERT_TRUE(mutex->LockFor(1000ms));
  // Held here, it is refused to another process until that one's deadline.
  EXPECT_EQ(InChildProcess([&] {
              const auto start = std::chrono::steady_clock::now();
              if (Open()->LockFor(100ms)) return 1;
              return std::chrono::steady_clock::now() - start >= 100ms ? 0 : 2;  // 2: gave up early
            }),
            0);
  mutex->Unlock();
}

TEST_F(UserMutexTest, AnotherUsersProcessHasItsOwnAndCannotTouchThisUsersFile) {
  if (geteuid() != 0) GTEST_SKIP() << "needs root to run a process as another user";
  auto mine = Open();
  ASSERT_TRUE(mine->SharedWithOtherProcesses());
  ASSERT_TRUE(mine->LockFor(100ms));
  EXPECT_EQ(InChildProcess([&] {
              if (setgid(kOtherUser) != 0 || setuid(kOtherUser) != 0) return 1;
              if (!Open(kOtherUser)->LockFor(1000ms)) return 2;
              for (const fs::path& directory : {runUser / "0", tmp / "pelmdev-0"}) {
                if (open((directory / kLockFile).c_str(), O_RDWR) >= 0) return 3;
              }
              return 0;
            }),
            0);
  mine->Unlock();
}

TEST_F(UserMutexTest, TheLockFileGoesOnlyWhereNobodyElseMayWrite) {
  const uid_t user = geteuid();
  const fs::path ownRun = runUser / std::to_string(user);
  const fs::path fallback = tmp / ("pelmdev-" + std::to_string(user));
  const auto lockFileIn = [](const fs::path& directory) { return fs::exists(directory / kLockFile); };

  fs::create_directory(ownRun);
  fs::permissions(ownRun, fs::perms::owner_all);
  EXPECT_TRUE(Open()->SharedWithOtherProcesses());
  EXPECT_TRUE(lockFileIn(ownRun));
  EXPECT_FALSE(fs::exists(fallback));

  // A runtime directory others may write to is passed over.
  fs::remove(ownRun / kLockFile);
  fs::permissions(ownRun, fs::perms::owner_all | fs::perms::group_all);
  EXPECT_TRUE(Open()->SharedWithOtherProcesses());
  EXPECT_FALSE(lockFileIn(ownRun));
  EXPECT_TRUE(lockFileIn(fallback));
  EXPECT_EQ(fs::status(fallback).permissions() & fs::perms::all, fs::perms::owner_all);

  // So is a symbolic link, even to a private directory.
  fs::remove_all(ownRun);
  fs::create_directory_symlink(fallback, ownRun);
  fs::remove(fallback / kLockFile);
  EXPECT_TRUE(Open()->SharedWithOtherProcesses());
  EXPECT_TRUE(lockFileIn(fallback));

  if (geteuid() != 0) return;
  // A fallback directory that someone else made first is not used: the mutex
  // then serialises within the process only.
  fs::remove(ownRun);
  fs::remove_all(fallback);
  fs::create_directory(fallback);
  ASSERT_EQ(chown(fallback.c_str(), kOtherUser, kOtherUser), 0);
  auto mutex = Open();
  EXPECT_FALSE(mutex->SharedWithOtherProcesses());
  EXPECT_FALSE(lockFileIn(fallback));
  EXPECT_TRUE(mutex->LockFor(100ms));
  mutex->Unlock();
}

}  // namespace
}  // namespace pelm::linux_hid
