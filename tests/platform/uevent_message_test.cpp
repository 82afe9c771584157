#include "platform/linux/uevent_message.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/uevent_messages.h"

namespace pelm::linux_hid {
namespace {

std::string Properties() {
  using namespace std::string_literals;
  return "ACTION=remove\0DEVPATH=/devices/usb1/1-2/1-2:1.0/0003:FFF0:0050.0007/hidraw/hidraw3\0"
         "SUBSYSTEM=hidraw\0DEVNAME=hidraw3\0SEQNUM=4711\0"s;
}

TEST(UeventMessageTest, KernelMessagesAreParsed) {
  const std::string message = std::string("remove@/devices/usb1/1-2/1-2:1.0/0003:FFF0:0050.0007/hidraw/hidraw3") +
                              '\0' + Properties();
  const auto event = ParseUeventMessage(message.data(), message.size());
  ASSERT_TRUE(event);
  EXPECT_EQ(event->action, "remove");
  EXPECT_EQ(event->subsystem, "hidraw");
  EXPECT_EQ(event->devname, "hidraw3");
  EXPECT_EQ(event->devpath, "/devices/usb1/1-2/1-2:1.0/0003:FFF0:0050.0007/hidraw/hidraw3");
}

TEST(UeventMessageTest, UdevMessagesAreParsedThroughTheirHeader) {
  const std::string message = test::UdevMessage(Properties());
  const auto event = ParseUeventMessage(message.data(), message.size());
  ASSERT_TRUE(event);
  EXPECT_EQ(event->action, "remove");
  EXPECT_EQ(event->devname, "hidraw3");
}

TEST(UeventMessageTest, MalformedMessagesAreRefused) {
  const std::vector<std::string> bad = {
      "",
      "no header at all",
      std::string("add@/devices/x") + '\0' + "DEVPATH=/devices/x",  // no ACTION or SUBSYSTEM
      std::string("libudev\0\0\0\0\0\0\0\0\0\xff\xff\0\0\x10\0\0\0", 24),  // offset past the end
  };
  for (const std::string& message : bad) EXPECT_FALSE(ParseUeventMessage(message.data(), message.size()));
}

TEST(UeventMessageTest, HidrawNodesAreNamedInTheKernelsFormAndUdevdsAndNothingElse) {
  EXPECT_EQ(HidrawNodeName("hidraw3"), "hidraw3");
  EXPECT_EQ(HidrawNodeName("/dev/hidraw12"), "hidraw12");
  for (const char* other : {"", "hidraw", "/dev/hidraw", "hidraw3x", "/dev/hidraw/3", "/dev/../hidraw3", "../hidraw3",
                            "/dev//hidraw3", "/dev/input/event3", "usb/hiddev0", "/tmp/hidraw3"}) {
    EXPECT_EQ(HidrawNodeName(other), std::nullopt) << other;
  }
}

}  // namespace
}  // namespace pelm::linux_hid
