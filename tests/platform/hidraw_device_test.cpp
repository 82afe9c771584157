// The hidraw device over a socket standing in for the node (one datagram a
// report, as hidraw reads give them): the report ID byte put back for devices
// without IDs, reads that a stop cancels at once, and reads of what waits.

#include "platform/linux/hidraw_device.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

namespace pelm::linux_hid {
namespace {

using platform::ReadStatus;

class HidrawDeviceTest : public ::testing::Test {
 protected:
  // The device reads one end; the test writes reports into the other.
  std::unique_ptr<HidrawDevice> OpenOverSocket(bool usesReportIds) {
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends), 0);
    writeEnd = ends[1];
    ReportLengths lengths{4, 0, 0, usesReportIds};
    return std::make_unique<HidrawDevice>(ends[0], HidrawNode{}, lengths);
  }
  void TearDown() override { close(writeEnd); }

  void Send(std::initializer_list<uint8_t> bytes) {
    const std::vector<uint8_t> report(bytes);
    ASSERT_EQ(write(writeEnd, report.data(), report.size()), static_cast<ssize_t>(report.size()));
  }

  int writeEnd = -1;
  EventFdCancel cancel;
};

TEST_F(HidrawDeviceTest, ReportsOfDevicesWithoutIdsGetAZeroIdByte) {
  auto device = OpenOverSocket(false);
  Send({0xAA, 0xBB, 0xCC});
  uint8_t buffer[4] = {0xFF, 0xFF, 0xFF, 0xFF};
  uint32_t bytesRead = 0;
  ASSERT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Completed);
  EXPECT_EQ(bytesRead, 4u);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[1], 0xAA);
  EXPECT_EQ(buffer[3], 0xCC);
}

TEST_F(HidrawDeviceTest, ReportsOfDevicesWithIdsKeepTheirOwn) {
  auto device = OpenOverSocket(true);
  Send({0x07, 0x11, 0x22});
  uint8_t buffer[4] = {};
  uint32_t bytesRead = 0;
  ASSERT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Completed);
  EXPECT_EQ(bytesRead, 3u);
  EXPECT_EQ(buffer[0], 0x07);
  EXPECT_EQ(buffer[2], 0x22);
}

TEST_F(HidrawDeviceTest, AStopEndsAWaitingReadAndEveryLaterOne) {
  auto device = OpenOverSocket(true);
  uint8_t buffer[4];
  uint32_t bytesRead = 0;
  std::thread stopper([&] { cancel.Signal(); });
  EXPECT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Cancelled);
  stopper.join();
  Send({1, 2});
  EXPECT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Cancelled);
}

TEST_F(HidrawDeviceTest, ADeviceThatGoesAwayFailsTheRead) {
  auto device = OpenOverSocket(true);
  close(writeEnd);  // the other side hangs up, as an unplugged node does
  writeEnd = -1;
  uint8_t buffer[4];
  uint32_t bytesRead = 0;
  EXPECT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Failed);
}

// What a reader that rested finds waiting, taken without ever blocking.
TEST_F(HidrawDeviceTest, PendingReportsAreTakenOldestFirstWithoutWaiting) {
  auto device = OpenOverSocket(false);
  uint8_t buffer[4] = {};
  uint32_t bytesRead = 0;
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::NothingPending);
  Send({0x11});
  Send({0x22, 0x33});
  ASSERT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Completed);
  EXPECT_EQ(bytesRead, 2u);
  EXPECT_EQ(buffer[1], 0x11);
  ASSERT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Completed);
  EXPECT_EQ(bytesRead, 3u);
  EXPECT_EQ(buffer[0], 0);
  EXPECT_EQ(buffer[2], 0x33);
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::NothingPending);
  close(writeEnd);
  writeEnd = -1;
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Failed);
}

// A device that answers a feature read with fewer bytes than asked for.
class ShortAnsweringDevice : public HidrawDevice {
 public:
  ShortAnsweringDevice(int fd, int answerLength) : HidrawDevice(fd, HidrawNode{}, {4, 4, 4, true}), answer_(answerLength) {}

 protected:
  int Control(unsigned long, void*) override { return answer_; }

 private:
  const int answer_;
};

TEST_F(HidrawDeviceTest, AFeatureReadIsGoodOnlyWhenTheDeviceGaveEveryByteAskedFor) {
  uint8_t report[4] = {2};
  for (const auto& [answered, good] : {std::pair{4, true}, {3, false}, {1, false}, {0, false}, {-1, false}}) {
    int ends[2];
    ASSERT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0);
    close(ends[1]);
    EXPECT_EQ(ShortAnsweringDevice(ends[0], answered).GetFeature(report, sizeof report), good) << answered << " bytes";
  }
}

}  // namespace
}  // namespace pelm::linux_hid
