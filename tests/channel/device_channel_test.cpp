// The device channel over the simulated bus: a function-based record of a
// made-up model (open, identification, the reader, stop and restart), then the
// writers that keep a report until it went, the records' retrying writer and
// the class-based device base's: how queued reports reach the device, what a
// failed send does, the queue limit and the drain at stop.

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "channel/device_record.h"
#include "channel/pelm_hid_device.h"
#include "core/pelm_dev.h"
#include "support/sim_fixture.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;
using sim::LogOp;
using sim::Report;

constexpr uint16_t kTestProductId = 0x0F00;
constexpr uint8_t kTestOpenReportId = 9;
constexpr uint32_t kTestOpenReportLength = 4;

class TestRecord : public cPelmDeviceRecord {
 public:
  // The bytes of each report the hook looks at.
  static constexpr uint32_t kInputBytesRead = 8;

  TestRecord(const char* path, const RecordParams& params) : cPelmDeviceRecord(path, params) {}
  // Closed as its owner closes it, before it goes.
  ~TestRecord() override { Close(); }

  std::vector<std::vector<uint8_t>> Inputs() {
    std::lock_guard hold(mutex_);
    return inputs_;
  }
  std::vector<uint8_t> OpenTimeReport() {
    std::lock_guard hold(mutex_);
    return openTimeReport_;
  }
  int defaultsApplied = 0;

 protected:
  void OnOpenTimeReport(const uint8_t* report) override {
    std::lock_guard hold(mutex_);
    openTimeReport_.assign(report, report + kTestOpenReportLength);
  }
  void ApplyStateDefaults() override { ++defaultsApplied; }
  void OnInputReport(const uint8_t* report) override {
    std::lock_guard hold(mutex_);
    inputs_.emplace_back(report, report + kInputBytesRead);
  }

 private:
  std::mutex mutex_;
  std::vector<std::vector<uint8_t>> inputs_;
  std::vector<uint8_t> openTimeReport_;
};

RecordParams TestParams(WriterVariant writer, bool readsSerial = false) {
  RecordParams params;
  params.channel.writer = writer;
  params.channel.minInputReportLength = TestRecord::kInputBytesRead;
  params.openReportId = kTestOpenReportId;
  params.openReportLength = kTestOpenReportLength;
  params.readsSerialNumber = readsSerial;
  return params;
}

// Opens a record the way the library's "create" operation does.
using RecordPtr = std::unique_ptr<TestRecord>;
RecordPtr OpenTestRecord(const std::string& path, const RecordParams& params) {
  auto record = std::make_unique<TestRecord>(path.c_str(), params);
  record->Open();
  return record;
}

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

TEST_F(ChannelTest, OpenIdentifiesTheDeviceAndMakesTheOpenTimeRead) {
  sim::DeviceDescription description = PanelDescription(kTestProductId, 1, {5, 7, 9});
  description.versionNumber = 0x0123;
  description.serialNumber = u"AB12";
  device = bus().Plug(description);
  device->PanelAs<sim::GenericPanel>().SetFeatureAnswer({kTestOpenReportId, 0x11, 0x22, 0x33});

  RecordPtr record = OpenTestRecord(description.path, TestParams(WriterVariant::Direct, /*readsSerial=*/true));

  EXPECT_EQ(record->DevicePath(), UpperCasePath(description.path.c_str()));
  EXPECT_TRUE(record->Identified());
  EXPECT_EQ(record->Caps().featureReportByteLength, 9);
  EXPECT_EQ(record->Attributes().versionNumber, 0x0123);
  EXPECT_EQ(record->SerialNumber(), "AB12");
  EXPECT_EQ(record->OpenTimeReport(), (std::vector<uint8_t>{kTestOpenReportId, 0x11, 0x22, 0x33}));
  EXPECT_EQ(record->defaultsApplied, 1);
  EXPECT_EQ(record->deviceIndex, kUnplacedDeviceIndex);
}

TEST_F(ChannelTest, SerialNumbersAreNarrowedToTheLowBytesAndCut) {
  struct Case {
    std::u16string reported;
    std::string kept;
  };
  const Case cases[] = {
      {u"\u4142\u0031", "B1"},                      // low byte of each unit
      {u"AB\u0100CD", "AB"},                        // a unit whose low byte is 0 ends it
      {std::u16string(40, u'x'), std::string(32, 'x')},  // at most 32 characters
  };
  int instance = 0;
  for (const Case& c : cases) {
    sim::DeviceDescription description = PanelDescription(kTestProductId, ++instance);
    description.serialNumber = c.reported;
    bus().Plug(description);
    RecordPtr record = OpenTestRecord(description.path, TestParams(WriterVariant::Direct, true));
    EXPECT_EQ(record->SerialNumber(), c.kept);
  }
}

TEST_F(ChannelTest, ARecordOfADeviceThatCannotBeOpenedRunsAndIdentifiesItWhenItComesBack) {
  Plug();
  device->FailOpens(true);
  RecordPtr record = OpenTestRecord(Path(), TestParams(WriterVariant::Retrying));
  EXPECT_FALSE(record->Identified());
  EXPECT_TRUE(record->OpenTimeReport().empty());
  EXPECT_EQ(record->defaultsApplied, 1);
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 0u);
  // Its operations fail without touching memory.
  uint8_t value = 0x5A;
  EXPECT_EQ(record->ReadFeatureByte(2, value), PELM_ERR_IO);
  EXPECT_EQ(value, 0x5A);

  record->StopThreads();
  device->FailOpens(false);
  record->StartThreads();
  EXPECT_TRUE(record->Identified());
  device->InjectInput({0, 7});
  EXPECT_TRUE(WaitUntil([&] { return record->Inputs().size() == 1; }));
}

TEST_F(ChannelTest, AShortInputReportIsNeverParsedPastTheBuffer) {
  // The device's input reports are 3 bytes; the model reads 8.
  Plug({3, 0, 0});
  RecordPtr record = OpenTestRecord(Path(), TestParams(WriterVariant::Direct));
  device->InjectInput({0, 0xAA, 0xBB, 0xCC, 0xDD});  // longer than the device's length
  device->InjectInput({0, 0x11});                    // shorter than it
  ASSERT_TRUE(WaitUntil([&] { return record->Inputs().size() == 2; }));
  EXPECT_EQ(record->Inputs()[0], (std::vector<uint8_t>{0, 0xAA, 0xBB, 0, 0, 0, 0, 0}));
  EXPECT_EQ(record->Inputs()[1], (std::vector<uint8_t>{0, 0x11, 0, 0, 0, 0, 0, 0}));
}

TEST_F(ChannelTest, AGoneDevicesThreadsBackOffAndTheReaderGivesItsHandleUp) {
  Plug();
  RecordPtr record = OpenTestRecord(Path(), TestParams(WriterVariant::Retrying));
  bus().Unplug(Path(), /*notify=*/false);
  // A report that cannot go keeps the writer reopening its handle.
  ASSERT_EQ(record->QueueByteReport(3, 1), PELM_SUCCESS);
  const uint64_t readerBefore = record->ReaderPasses();
  const uint64_t writerBefore = record->WriterPasses();
  // Threads that retried every 10 ms would pass about a hundred times in this
  // second; backing off, each passes a few times.
  constexpr uint64_t kFewPasses = 12;
  EXPECT_FALSE(WaitUntil(
      [&] {
        return record->ReaderPasses() > readerBefore + kFewPasses || record->WriterPasses() > writerBefore + kFewPasses;
      },
      1s));
  // By now the reader has given its dead handle up and waits for its stop.
  const uint64_t settled = record->ReaderPasses();
  EXPECT_FALSE(WaitUntil([&] { return record->ReaderPasses() != settled; }, 300ms));
}

TEST_F(ChannelTest, RestartOpensAFreshHandleAndKeepsTheRecord) {
  Plug();
  RecordPtr record = OpenTestRecord(Path(), TestParams(WriterVariant::Direct, true));
  const platform::HidHandle first = record->MainHandle();
  bus().Unplug(Path(), false);
  record->StopThreads();
  bus().Plug(device->Description(), false);
  const std::size_t opensBefore = device->CountOf(sim::LogOp::Open);
  record->StartThreads();
  EXPECT_EQ(device->CountOf(sim::LogOp::Open), opensBefore + 1);
  EXPECT_NE(record->MainHandle(), first);
  // The open-time read is not made again.
  EXPECT_EQ(device->CountOf(sim::LogOp::GetFeature), 1u);
  device->InjectInput({0, 3});
  EXPECT_TRUE(WaitUntil([&] { return record->Inputs().size() == 1; }));
}

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
