// The hidraw device over a socket standing in for the node (one datagram a
// report, as hidraw reads give them): the report ID byte put back for devices
// without IDs, reads of what waits, and feature reads answered short.

#include "platform/linux/hidraw_device.h"

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <unistd.h>

#include <vector>

namespace pelm::linux_hid {
namespace {

using platform::ReadStatus;
using Bytes = std::vector<uint8_t>;

class HidrawDeviceTest : public ::testing::Test {
 protected:
  // The device reads one end; the test writes reports into the other.
  std::unique_ptr<HidrawDevice> OpenOverSocket(bool usesReportIds) {
    HangUp();
    int ends[2];
    EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_NONBLOCK, 0, ends), 0);
    writeEnd = ends[1];
    return std::make_unique<HidrawDevice>(ends[0], HidrawNode{}, ReportLengths{4, 0, 0, usesReportIds});
  }
  // The other side goes, as an unplugged node does.
  void HangUp() {
    if (writeEnd >= 0) close(writeEnd);
    writeEnd = -1;
  }
  void TearDown() override { HangUp(); }

  void Send(const Bytes& report) {
    ASSERT_EQ(write(writeEnd, report.data(), report.size()), static_cast<ssize_t>(report.size()));
  }

  int writeEnd = -1;
  EventFdCancel cancel;
  uint8_t buffer[4] = {};
  uint32_t bytesRead = 0;
};

// Byte 0 is the report ID on every platform: hidraw leaves it out of the
// reports of devices without IDs, so it is put back as 0.
TEST_F(HidrawDeviceTest, EveryReportStartsWithItsIdByte) {
  for (const bool usesReportIds : {false, true}) {
    auto device = OpenOverSocket(usesReportIds);
    Send({0x07, 0x11});
    ASSERT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Completed);
    EXPECT_EQ(Bytes(buffer, buffer + bytesRead), (usesReportIds ? Bytes{0x07, 0x11} : Bytes{0, 0x07, 0x11}));
  }
}

// What a reader that rested finds waiting is taken without ever blocking; a
// device that has gone fails both kinds of read.
TEST_F(HidrawDeviceTest, PendingReportsAreTakenOldestFirstWithoutWaiting) {
  auto device = OpenOverSocket(false);
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::NothingPending);
  Send({0x11});
  Send({0x22, 0x33});
  ASSERT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Completed);
  EXPECT_EQ(Bytes(buffer, buffer + bytesRead), (Bytes{0, 0x11}));
  ASSERT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Completed);
  EXPECT_EQ(Bytes(buffer, buffer + bytesRead), (Bytes{0, 0x22, 0x33}));
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::NothingPending);
  HangUp();
  EXPECT_EQ(device->ReadPendingInput(buffer, sizeof buffer, bytesRead), ReadStatus::Failed);
  EXPECT_EQ(device->ReadInput(buffer, sizeof buffer, bytesRead, cancel), ReadStatus::Failed);
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
  constexpr int kNoNode = -1;  // the answer never comes from a node
  for (const auto& [answered, good] : {std::pair{4, true}, {3, false}, {1, false}, {0, false}, {-1, false}}) {
    EXPECT_EQ(ShortAnsweringDevice(kNoNode, answered).GetFeature(report, sizeof report), good) << answered << " bytes";
  }
}

}  // namespace
}  // namespace pelm::linux_hid
