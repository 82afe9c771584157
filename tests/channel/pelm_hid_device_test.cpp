// The class-based device base: open after construction, input with its byte
// count, reports of both kinds on the writer's own handle, the limit of 100
// and the drain on the own handle.

#include "channel/pelm_hid_device.h"

#include <gtest/gtest.h>

#include <mutex>

#include "core/pelm_dev.h"
#include "support/sim_fixture.h"

namespace pelm::test {
namespace {

using sim::LogOp;
using sim::Report;
using namespace std::chrono_literals;

constexpr uint16_t kEngineStartId = 0x003C;

class TestDevice : public cPelmHidDevice {
 public:
  explicit TestDevice(const char* path) : cPelmHidDevice(path, PELM_MODEL_ENGINESTART, 2) {}

  uint32_t OnInputReport(const uint8_t*, uint32_t bytesRead) override {
    std::lock_guard hold(mutex_);
    byteCounts_.push_back(bytesRead);
    return 1;
  }
  std::vector<uint32_t> ByteCounts() {
    std::lock_guard hold(mutex_);
    return byteCounts_;
  }

  bool Queue(const Report& report, ReportKind kind) {
    return BuildAndQueue(static_cast<uint32_t>(report.size()), kind,
                         [&](uint8_t* bytes) { std::copy(report.begin(), report.end(), bytes); }) == PELM_SUCCESS;
  }

 private:
  std::mutex mutex_;
  std::vector<uint32_t> byteCounts_;
};

class PelmHidDeviceTest : public SimTest {
 protected:
  void SetUp() override {
    SimTest::SetUp();
    device = bus().Plug(PanelDescription(kEngineStartId, 1, {6, 5, 2}));
    object = std::make_unique<TestDevice>(device->Description().path.c_str());
  }
  void TearDown() override {
    object->Close();
    object.reset();
    SimTest::TearDown();
  }

  bool WaitForSucceeded(LogOp op, std::size_t count) {
    return device->WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return static_cast<std::size_t>(std::count_if(log.begin(), log.end(), [&](const sim::LogEntry& entry) {
               return entry.op == op && entry.succeeded;
             })) >= count;
    });
  }

  std::shared_ptr<sim::SimDevice> device;
  std::unique_ptr<TestDevice> object;
};

TEST_F(PelmHidDeviceTest, InputReportsArriveWithTheirByteCount) {
  object->Open();
  device->InjectInput({0, 1, 2, 3});
  device->InjectInput({0, 9, 9, 9, 9, 9, 9, 9});  // longer than the device's 6 bytes
  ASSERT_TRUE(WaitUntil([&] { return object->ByteCounts().size() == 2; }));
  EXPECT_EQ(object->ByteCounts(), (std::vector<uint32_t>{4, 6}));
}

TEST_F(PelmHidDeviceTest, EachReportKindGoesOutWithItsOwnCallOnTheOwnHandle) {
  object->Open();
  ASSERT_TRUE(object->Queue({2, 1, 2, 3, 4}, ReportKind::Output));
  ASSERT_TRUE(object->Queue({3, 0x0F}, ReportKind::Feature));
  ASSERT_TRUE(WaitForSucceeded(LogOp::SetFeature, 1));
  const auto writes = device->LogOf(LogOp::WriteOutput);
  const auto sets = device->LogOf(LogOp::SetFeature);
  ASSERT_EQ(writes.size(), 1u);
  EXPECT_EQ(writes[0].bytes, (Report{2, 1, 2, 3, 4}));
  EXPECT_EQ(writes[0].mode, platform::OpenMode::Synchronous);
  EXPECT_EQ(sets[0].bytes, (Report{3, 0x0F}));
  EXPECT_EQ(sets[0].handleId, writes[0].handleId);
}

TEST_F(PelmHidDeviceTest, AFailedSendIsRetriedFirstOnAFreshHandleWithoutLimit) {
  object->Open();
  device->FailNextSends(5);
  ASSERT_TRUE(object->Queue({2, 0xA}, ReportKind::Output));
  ASSERT_TRUE(object->Queue({2, 0xB}, ReportKind::Output));
  ASSERT_TRUE(WaitForSucceeded(LogOp::WriteOutput, 2));
  const auto writes = device->LogOf(LogOp::WriteOutput);
  ASSERT_EQ(writes.size(), 7u);
  for (int attempt = 0; attempt < 6; ++attempt) EXPECT_EQ(writes[attempt].bytes[1], 0xA);
  EXPECT_NE(writes[0].handleId, writes[1].handleId);
  EXPECT_EQ(writes[6].bytes[1], 0xB);
}

TEST_F(PelmHidDeviceTest, TheHundredAndFirstPendingReportIsRefused) {
  object->Open();
  device->SetOperationDelay(200ms);
  ASSERT_TRUE(object->Queue({2, 0}, ReportKind::Output));
  ASSERT_TRUE(WaitUntil([&] { return object->PendingReports() == 0; }));
  for (int n = 1; n <= 100; ++n) ASSERT_TRUE(object->Queue({2, static_cast<uint8_t>(n)}, ReportKind::Output));
  EXPECT_FALSE(object->Queue({2, 0xFF}, ReportKind::Output));
  device->SetOperationDelay(0ms);
  ASSERT_TRUE(WaitForSucceeded(LogOp::WriteOutput, 101));
  const auto writes = device->LogOf(LogOp::WriteOutput);
  for (int n = 0; n <= 100; ++n) EXPECT_EQ(writes[n].bytes[1], n);
}

TEST_F(PelmHidDeviceTest, StopDrainsOnTheOwnHandleOnceEach) {
  object->Open();
  device->FailNextSends(1'000'000);
  ASSERT_TRUE(object->Queue({2, 0xA}, ReportKind::Output));
  ASSERT_TRUE(object->Queue({3, 0xB}, ReportKind::Feature));
  object->StopThreads();
  EXPECT_EQ(object->PendingReports(), 0u);
  const auto sets = device->LogOf(LogOp::SetFeature);
  ASSERT_EQ(sets.size(), 1u);
  EXPECT_EQ(sets[0].mode, platform::OpenMode::Synchronous);
}

}  // namespace
}  // namespace pelm::test
