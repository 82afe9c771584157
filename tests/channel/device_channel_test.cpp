// The device channel over the simulated bus: open, identification, the reader,
// stop and restart.

#include <gtest/gtest.h>

#include "support/sim_fixture.h"
#include "support/test_record.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;

class DeviceChannelTest : public SimTest {};

TEST_F(DeviceChannelTest, OpenIdentifiesTheDeviceAndMakesTheOpenTimeRead) {
  sim::DeviceDescription description = PanelDescription(kTestProductId, 1, {5, 7, 9});
  description.versionNumber = 0x0123;
  description.serialNumber = u"AB12";
  auto device = bus().Plug(description);
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

TEST_F(DeviceChannelTest, SerialNumbersAreNarrowedToTheLowBytesAndCut) {
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

TEST_F(DeviceChannelTest, ARecordOfADeviceThatCannotBeOpenedRunsAndIdentifiesItWhenItComesBack) {
  auto device = bus().Plug(PanelDescription(kTestProductId, 1));
  device->FailOpens(true);
  RecordPtr record = OpenTestRecord(device->Description().path, TestParams(WriterVariant::Retrying));
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

TEST_F(DeviceChannelTest, AShortInputReportIsNeverParsedPastTheBuffer) {
  // The device's input reports are 3 bytes; the model reads 8.
  auto device = bus().Plug(PanelDescription(kTestProductId, 1, {3, 0, 0}));
  RecordPtr record = OpenTestRecord(device->Description().path, TestParams(WriterVariant::Direct));
  device->InjectInput({0, 0xAA, 0xBB, 0xCC, 0xDD});  // longer than the device's length
  device->InjectInput({0, 0x11});                    // shorter than it
  ASSERT_TRUE(WaitUntil([&] { return record->Inputs().size() == 2; }));
  EXPECT_EQ(record->Inputs()[0], (std::vector<uint8_t>{0, 0xAA, 0xBB, 0, 0, 0, 0, 0}));
  EXPECT_EQ(record->Inputs()[1], (std::vector<uint8_t>{0, 0x11, 0, 0, 0, 0, 0, 0}));
}

TEST_F(DeviceChannelTest, AGoneDevicesThreadsBackOffAndTheReaderGivesItsHandleUp) {
  auto device = bus().Plug(PanelDescription(kTestProductId, 1));
  RecordPtr record = OpenTestRecord(device->Description().path, TestParams(WriterVariant::Retrying));
  bus().Unplug(device->Description().path, /*notify=*/false);
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
  record->StopThreads();
  EXPECT_EQ(record->PendingReports(), 0u);
}

TEST_F(DeviceChannelTest, RestartOpensAFreshHandleAndKeepsTheRecord) {
  auto device = bus().Plug(PanelDescription(kTestProductId, 1));
  RecordPtr record = OpenTestRecord(device->Description().path, TestParams(WriterVariant::Direct, true));
  const platform::HidHandle first = record->MainHandle();
  bus().Unplug(device->Description().path, false);
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

}  // namespace
}  // namespace pelm::test
