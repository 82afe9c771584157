#include "platform/linux/shared_mutex.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>

namespace pelm::linux_hid {
namespace {

using namespace std::chrono_literals;

std::string UniqueName() { return "pelm-test-mutex-" + std::to_string(getpid()); }

class SharedMutexTest : public ::testing::Test {
 protected:
  void TearDown() override {
    // Appended rather than concatenated: GCC 12 at -O3 warns of overlapping
    // copies in the temporary.
    std::string object = "/";
    object += UniqueName();
    shm_unlink(object.c_str());
  }
};

TEST_F(SharedMutexTest, TwoOpeningsOfOneNameExcludeEachOther) {
  auto first = SharedMutex::Open(UniqueName());
  auto second = SharedMutex::Open(UniqueName());
  ASSERT_TRUE(first && second);
  ASSERT_TRUE(first->LockFor(100ms));
  EXPECT_FALSE(second->LockFor(20ms));
  first->Unlock();
  EXPECT_TRUE(second->LockFor(100ms));
  second->Unlock();
}

TEST_F(SharedMutexTest, AProcessThatDiesHoldingItDoesNotBlockTheOthers) {
  auto mutex = SharedMutex::Open(UniqueName());
  ASSERT_TRUE(mutex);
  const pid_t child = fork();
  if (child == 0) {
    auto inChild = SharedMutex::Open(UniqueName());
    _exit(inChild && inChild->LockFor(1000ms) ? 0 : 1);  // dies holding it
  }
  int status = 0;
  ASSERT_EQ(waitpid(child, &status, 0), child);
  ASSERT_EQ(WEXITSTATUS(status), 0);
  EXPECT_TRUE(mutex->LockFor(1000ms));
  mutex->Unlock();
}

}  // namespace
}  // namespace pelm::linux_hid
