#include "channel/report_queue.h"

#include <gtest/gtest.h>

#include <vector>

namespace pelm {
namespace {

class ReportQueueTest : public ::testing::Test {
 protected:
  void SetUp() override { queue.Create(); }

  std::vector<QueueEntry*> Drain() {
    std::vector<QueueEntry*> order;
    while (QueueEntry* entry = queue.PopFront()) order.push_back(entry);
    return order;
  }

  cReportQueue queue;
  QueueEntry a, b, c, d;
};

TEST_F(ReportQueueTest, EmptyQueuePopsNothing) {
  EXPECT_EQ(queue.PopFront(), nullptr);
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(queue.Count(), 0u);
}

TEST_F(ReportQueueTest, PushBackReturnsTheNewCountAndKeepsOrder) {
  EXPECT_EQ(queue.PushBack(&a), 1u);
  EXPECT_EQ(queue.PushBack(&b), 2u);
  EXPECT_EQ(queue.PushBack(&c), 3u);
  EXPECT_EQ(queue.PushBack(&d), 4u);
  EXPECT_FALSE(queue.IsEmpty());
  EXPECT_EQ(Drain(), (std::vector<QueueEntry*>{&a, &b, &c, &d}));
}

TEST_F(ReportQueueTest, PushFrontAfterPopRestoresTheOrder) {
  queue.PushBack(&a);
  queue.PushBack(&b);
  queue.PushBack(&c);
  QueueEntry* head = queue.PopFront();
  ASSERT_EQ(head, &a);
  EXPECT_EQ(queue.PushFront(head), 1u);
  EXPECT_EQ(Drain(), (std::vector<QueueEntry*>{&a, &b, &c}));
}

TEST_F(ReportQueueTest, PoppingTheLastEntryLeavesAQueueThatWorksAsNew) {
  queue.PushBack(&a);
  EXPECT_EQ(queue.PopFront(), &a);
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(queue.PushFront(&b), 1u);
  EXPECT_EQ(queue.PushBack(&c), 2u);
  EXPECT_EQ(Drain(), (std::vector<QueueEntry*>{&b, &c}));
}

TEST_F(ReportQueueTest, DestroyReleasesNodesButNotEntries) {
  auto* owned = new QueueEntry{2, AllocateReport(2), ReportKind::Feature};
  queue.PushBack(owned);
  queue.Destroy();
  // The entry is still ours (a leak checker would flag a double release or a leak).
  EXPECT_EQ(owned->length, 2u);
  delete owned;
}

TEST_F(ReportQueueTest, AQueueWithoutItsLockActsEmptyAndRefuses) {
  queue.PushBack(&a);
  queue.Destroy();
  EXPECT_EQ(queue.PushBack(&b), 0u);
  EXPECT_EQ(queue.PushFront(&b), 0u);
  EXPECT_EQ(queue.PopFront(), nullptr);
  EXPECT_TRUE(queue.IsEmpty());
  EXPECT_EQ(queue.Count(), 0u);
}

TEST_F(ReportQueueTest, HighWaterKeepsTheMostEntriesEverHeldUntilTheQueueIsCreatedAgain) {
  EXPECT_EQ(queue.HighWater(), 0u);
  queue.PushBack(&a);
  queue.PushBack(&b);
  QueueEntry* head = queue.PopFront();
  queue.PushBack(&c);
  EXPECT_EQ(queue.HighWater(), 2u);
  // A report put back at the head while the host queued another raises the mark.
  queue.PushBack(&d);
  queue.PushFront(head);
  EXPECT_EQ(queue.HighWater(), 4u);
  Drain();
  EXPECT_EQ(queue.HighWater(), 4u);
  queue.Destroy();
  queue.Create();
  EXPECT_EQ(queue.HighWater(), 0u);
}

}  // namespace
}  // namespace pelm
