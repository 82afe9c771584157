// The writer variants: how queued reports reach the device, what a failed send
// does, the queue limit and the drain at stop.

#include <gtest/gtest.h>

#include "support/sim_fixture.h"
#include "support/test_record.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;
using sim::LogOp;
using sim::Report;

class WriterTest : public SimTest {
 protected:
  RecordPtr Open(WriterVariant writer, uint16_t version = 0x0100) {
    sim::DeviceDescription description = PanelDescription(kTestProductId, 1);
    description.versionNumber = version;
    device = bus().Plug(description);
    return OpenTestRecord(description.path, TestParams(writer));
  }

  static bool Queue(TestRecord& record, const Report& report, ReportKind kind = ReportKind::Feature) {
    return record.BuildAndQueue(static_cast<uint32_t>(report.size()), kind, [&](uint8_t* bytes) {
             std::copy(report.begin(), report.end(), bytes);
           }) == PELM_SUCCESS;
  }

  // Waits until `count` sends of `op` succeeded.
  bool WaitForSent(LogOp op, std::size_t count) {
    return device->WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return static_cast<std::size_t>(std::count_if(log.begin(), log.end(), [&](const sim::LogEntry& entry) {
               return entry.op == op && entry.succeeded;
             })) >= count;
    });
  }

  std::vector<sim::LogEntry> Sends(LogOp op) { return device->LogOf(op); }

  std::shared_ptr<sim::SimDevice> device;
};

TEST_F(WriterTest, RetryingWriterResendsAFailedReportFirstOnAFreshHandle) {
  RecordPtr record = Open(WriterVariant::Retrying);
  device->FailNextSends(2);
  ASSERT_TRUE(Queue(*record, {3, 0xA}));
  ASSERT_TRUE(Queue(*record, {3, 0xB}));
  ASSERT_TRUE(WaitForSent(LogOp::SetFeature, 2));
  const auto sends = Sends(LogOp::SetFeature);
  ASSERT_EQ(sends.size(), 4u);
  EXPECT_EQ(sends[0].bytes, (Report{3, 0xA}));
  EXPECT_EQ(sends[1].bytes, (Report{3, 0xA}));
  EXPECT_EQ(sends[2].bytes, (Report{3, 0xA}));
  EXPECT_TRUE(sends[2].succeeded);
  EXPECT_EQ(sends[3].bytes, (Report{3, 0xB}));
  EXPECT_EQ(sends[0].mode, platform::OpenMode::Synchronous);
  EXPECT_NE(sends[0].handleId, sends[1].handleId);
  EXPECT_NE(sends[1].handleId, sends[2].handleId);
  EXPECT_EQ(sends[2].handleId, sends[3].handleId);
}

TEST_F(WriterTest, TheTwentySixthPendingReportIsRefusedAndTheRestGoInOrder) {
  RecordPtr record = Open(WriterVariant::Retrying);
  device->SetOperationDelay(200ms);
  ASSERT_TRUE(Queue(*record, {3, 0}));
  // Wait until the writer has taken the first report and sits in its slow send.
  ASSERT_TRUE(WaitUntil([&] { return record->PendingReports() == 0; }));
  for (uint8_t n = 1; n <= kFunctionBasedQueueLimit; ++n) ASSERT_TRUE(Queue(*record, {3, n}));
  EXPECT_FALSE(Queue(*record, {3, 0xFF}));
  device->SetOperationDelay(0ms);
  ASSERT_TRUE(WaitForSent(LogOp::SetFeature, kFunctionBasedQueueLimit + 1));
  const auto sends = Sends(LogOp::SetFeature);
  for (uint8_t n = 0; n <= kFunctionBasedQueueLimit; ++n) EXPECT_EQ(sends[n].bytes[1], n);
}

TEST_F(WriterTest, StopDrainsEveryPendingReportOnceOnTheMainHandle) {
  RecordPtr record = Open(WriterVariant::Retrying);
  device->FailNextSends(1'000'000);  // the device refuses everything
  ASSERT_TRUE(Queue(*record, {3, 0xA}));
  ASSERT_TRUE(Queue(*record, {3, 0xB}));
  ASSERT_TRUE(Queue(*record, {3, 0xC}));
  record->StopThreads();
  EXPECT_EQ(record->PendingReports(), 0u);
  const auto sends = Sends(LogOp::SetFeature);
  ASSERT_GE(sends.size(), 3u);
  // B and C were never tried while running: the drain tries each once.
  EXPECT_EQ(std::count_if(sends.begin(), sends.end(), [](auto& s) { return s.bytes[1] == 0xB; }), 1);
  EXPECT_EQ(std::count_if(sends.begin(), sends.end(), [](auto& s) { return s.bytes[1] == 0xC; }), 1);
  EXPECT_EQ(sends.back().mode, platform::OpenMode::Overlapped);
}

TEST_F(WriterTest, AnIdleWriterSleepsAndEachReportWakesItOnce) {
  RecordPtr record = Open(WriterVariant::Retrying);
  for (uint8_t n = 1; n <= 2; ++n) {
    ASSERT_TRUE(Queue(*record, {3, n}));
    ASSERT_TRUE(WaitForSent(LogOp::SetFeature, n));
    EXPECT_EQ(record->WriterPasses(), n);
  }
  // A writer that looked at its queue on a timer would pass dozens of times here.
  EXPECT_FALSE(WaitUntil([&] { return record->WriterPasses() != 2; }, 300ms));
}

TEST_F(WriterTest, ModelsWithoutAWriterStartNoWriterThread) {
  RecordPtr record = Open(WriterVariant::None);
  ASSERT_TRUE(Queue(*record, {3, 1}));
  record->StopThreads();
  // Nobody sends: the report stays until the record is closed.
  EXPECT_EQ(device->CountOf(LogOp::SetFeature), 0u);
  EXPECT_EQ(record->PendingReports(), 1u);
}

}  // namespace
}  // namespace pelm::test
