// The writers that keep a report until it went: the function-based records'
// retrying writer and the class-based device base's. How queued reports reach
// the device, what a failed send does, the queue limit and the drain at stop;
// then what is particular to each kind of writer.

#include <gtest/gtest.h>

#include <functional>
#include <mutex>

#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"
#include "support/sim_fixture.h"
#include "support/test_record.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;
using sim::LogOp;
using sim::Report;

// A class-based model that keeps the byte count of each input report.
class ClassBasedDevice : public cPelmHidDevice {
 public:
  explicit ClassBasedDevice(const char* path) : cPelmHidDevice(path, PELM_MODEL_ENGINESTART, 2) {}
  ~ClassBasedDevice() override { Close(); }

  uint32_t OnInputReport(const uint8_t*, uint32_t bytesRead) override {
    std::lock_guard hold(mutex_);
    byteCounts_.push_back(bytesRead);
    return 1;
  }
  std::vector<uint32_t> ByteCounts() {
    std::lock_guard hold(mutex_);
    return byteCounts_;
  }

 private:
  std::mutex mutex_;
  std::vector<uint32_t> byteCounts_;
};

using ChannelPtr = std::unique_ptr<cHidChannel>;

ChannelPtr OpenClassBased(const std::string& path) {
  auto object = std::make_unique<ClassBasedDevice>(path.c_str());
  object->Open();
  return object;
}

class ChannelTest : public SimTest {
 protected:
  void TearDown() override {
    channel.reset();
    SimTest::TearDown();
  }
  void Plug(platform::HidCaps caps = {8, 8, 8}) { device = bus().Plug(PanelDescription(kTestProductId, 1, caps)); }
  const std::string& Path() const { return device->Description().path; }

  bool Queue(const Report& report, ReportKind kind) {
    return channel->BuildAndQueue(static_cast<uint32_t>(report.size()), kind, [&](uint8_t* bytes) {
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

  std::shared_ptr<sim::SimDevice> device;
  ChannelPtr channel;
};

struct WriterCase {
  const char* name;
  std::function<ChannelPtr(const std::string& path)> open;
  ReportKind kind;  // of the reports queued
  LogOp sent;       // the call that sends them
  uint32_t queueLimit;
  platform::OpenMode drainMode;  // of the handle the drain at stop sends on
};

// Both send on the writer's own handle (synchronous); a record drains on its
// main handle (overlapped), a class-based device on its own.
const WriterCase kWriterCases[] = {
    {"Retrying", [](const std::string& path) { return OpenTestRecord(path, TestParams(WriterVariant::Retrying)); },
     ReportKind::Feature, LogOp::SetFeature, 25, platform::OpenMode::Overlapped},
    {"ClassBased", OpenClassBased, ReportKind::Output, LogOp::WriteOutput, 100, platform::OpenMode::Synchronous},
};

class WriterTest : public ChannelTest, public testing::WithParamInterface<WriterCase> {
 protected:
  void SetUp() override {
    ChannelTest::SetUp();
    Plug();
    channel = GetParam().open(Path());
  }
  bool Queue(uint8_t value) { return ChannelTest::Queue({3, value}, GetParam().kind); }
  bool WaitForSent(std::size_t count) { return ChannelTest::WaitForSent(GetParam().sent, count); }
  std::vector<sim::LogEntry> Sends() { return device->LogOf(GetParam().sent); }
};

// More failures in a row than a counted writer allows: this one never gives up.
TEST_P(WriterTest, AFailedReportIsResentFirstOnAFreshHandleUntilItGoes) {
  constexpr int kFailures = 4;
  device->FailNextSends(kFailures);
  ASSERT_TRUE(Queue(0xA));
  ASSERT_TRUE(Queue(0xB));
  ASSERT_TRUE(WaitForSent(2));
  const auto sends = Sends();
  ASSERT_EQ(sends.size(), kFailures + 2u);
  for (int attempt = 0; attempt <= kFailures; ++attempt) {
    EXPECT_EQ(sends[attempt].bytes, (Report{3, 0xA}));
    EXPECT_EQ(sends[attempt].mode, platform::OpenMode::Synchronous);
  }
  for (int attempt = 1; attempt <= kFailures; ++attempt) EXPECT_NE(sends[attempt].handleId, sends[attempt - 1].handleId);
  EXPECT_EQ(sends[kFailures + 1].bytes, (Report{3, 0xB}));
  EXPECT_EQ(sends[kFailures + 1].handleId, sends[kFailures].handleId);
}

TEST_P(WriterTest, AReportPastTheQueueLimitIsRefusedAndTheRestGoInOrder) {
  const uint32_t limit = GetParam().queueLimit;
  device->SetOperationDelay(200ms);
  ASSERT_TRUE(Queue(0));
  // Wait until the writer has taken the first report and sits in its slow send.
  ASSERT_TRUE(WaitUntil([&] { return channel->PendingReports() == 0; }));
  for (uint32_t n = 1; n <= limit; ++n) ASSERT_TRUE(Queue(static_cast<uint8_t>(n)));
  EXPECT_FALSE(Queue(0xFF));
  device->SetOperationDelay(0ms);
  ASSERT_TRUE(WaitForSent(limit + 1));
  const auto sends = Sends();
  for (uint32_t n = 0; n <= limit; ++n) EXPECT_EQ(sends[n].bytes[1], n);
}

TEST_P(WriterTest, StopSendsEveryPendingReportOnceOnItsDrainHandle) {
  device->FailNextSends(1'000'000);  // the device refuses everything
  for (const uint8_t value : {0xA, 0xB, 0xC}) ASSERT_TRUE(Queue(value));
  channel->StopThreads();
  EXPECT_EQ(channel->PendingReports(), 0u);
  const auto sends = Sends();
  ASSERT_GE(sends.size(), 3u);
  // B and C were never tried while running: the drain tries each once.
  for (const uint8_t value : {0xB, 0xC}) {
    EXPECT_EQ(std::count_if(sends.begin(), sends.end(), [&](auto& send) { return send.bytes[1] == value; }), 1);
  }
  EXPECT_EQ(sends.back().mode, GetParam().drainMode);
}

INSTANTIATE_TEST_SUITE_P(Writers, WriterTest, testing::ValuesIn(kWriterCases),
                         [](const testing::TestParamInfo<WriterCase>& info) { return info.param.name; });

// A class-based device sends each report as its kind says, on its own handle.
TEST_F(ChannelTest, AClassBasedDeviceSendsEachReportKindWithItsOwnCall) {
  Plug({6, 5, 2});
  channel = OpenClassBased(Path());
  ASSERT_TRUE(Queue({2, 1, 2, 3, 4}, ReportKind::Output));
  ASSERT_TRUE(Queue({3, 0x0F}, ReportKind::Feature));
  ASSERT_TRUE(WaitForSent(LogOp::SetFeature, 1));
  const auto writes = device->LogOf(LogOp::WriteOutput);
  const auto sets = device->LogOf(LogOp::SetFeature);
  ASSERT_EQ(writes.size(), 1u);
  EXPECT_EQ(writes[0].bytes, (Report{2, 1, 2, 3, 4}));
  EXPECT_EQ(sets[0].bytes, (Report{3, 0x0F}));
  EXPECT_EQ(sets[0].handleId, writes[0].handleId);
}

TEST_F(ChannelTest, AClassBasedDeviceGetsEachInputReportWithItsByteCount) {
  Plug({6, 5, 2});
  channel = OpenClassBased(Path());
  device->InjectInput({0, 1, 2, 3});
  device->InjectInput({0, 9, 9, 9, 9, 9, 9, 9});  // longer than the device's 6 bytes
  auto& object = static_cast<ClassBasedDevice&>(*channel);
  ASSERT_TRUE(WaitUntil([&] { return object.ByteCounts().size() == 2; }));
  EXPECT_EQ(object.ByteCounts(), (std::vector<uint32_t>{4, 6}));
}

}  // namespace
}  // namespace pelm::test
