// Device paths and attributes of hidraw nodes, read from a fake sysfs tree laid
// out as the kernel lays it out.

#include "platform/linux/sysfs_hidraw.h"

#include <gtest/gtest.h>

#include "support/fake_sysfs.h"

namespace pelm::linux_hid {
namespace {

using SysfsHidrawTest = test::FakeSysfsTest;

TEST_F(SysfsHidrawTest, NodesAreDescribedFromTheirHidDeviceAndUsbParent) {
  AddUsbNode("hidraw3", "0003:FFF0:0050.0007",
             "DRIVER=hid-generic\nHID_ID=0003:0000FFF0:00000050\nHID_NAME=Radio\n"
             "HID_PHYS=usb-0000:00:14.0-2/input0\nHID_UNIQ=RP0042\n",
             "0123");
  const std::vector<HidrawNode> nodes = ScanHidrawNodes(root.string());
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].node, "hidraw3");
  EXPECT_EQ(nodes[0].vendorId, 0xFFF0);
  EXPECT_EQ(nodes[0].productId, 0x0050);
  EXPECT_EQ(nodes[0].versionNumber, 0x0123);
  EXPECT_EQ(nodes[0].uniq, "RP0042");
  EXPECT_EQ(nodes[0].path, "HIDRAW:FFF0:0050:USB-0000:00:14.0-2/INPUT0");
  EXPECT_EQ(nodes[0].devpath.substr(0, 9), "/devices/");
  EXPECT_EQ(nodes[0].devpath.substr(nodes[0].devpath.size() - 15), "/hidraw/hidraw3");
}

TEST_F(SysfsHidrawTest, TheSamePanelOnTheSamePortKeepsItsPathUnderANewNode) {
  const std::string uevent = "HID_ID=0003:0000FFF0:00000020\nHID_PHYS=usb-0000:00:14.0-3/input0\n";
  AddUsbNode("hidraw1", "0003:FFF0:0020.0001", uevent, "0100");
  const std::string before = ScanHidrawNodes(root.string()).at(0).path;
  RemoveUsbNode("hidraw1");
  AddUsbNode("hidraw4", "0003:FFF0:0020.0009", uevent, "0100");
  EXPECT_EQ(ScanHidrawNodes(root.string()).at(0).path, before);
}

TEST_F(SysfsHidrawTest, DevicesWithoutAPhysicalPathFallBackOnTheirSysfsName) {
  // A virtual HID device: no USB parent (version 0), no HID_PHYS.
  AddUsbNode("hidraw0", "0006:FFF0:0010.0002", "HID_ID=0006:0000FFF0:00000010\nHID_PHYS=\n", "");
  const std::vector<HidrawNode> nodes = ScanHidrawNodes(root.string());
  ASSERT_EQ(nodes.size(), 1u);
  EXPECT_EQ(nodes[0].path, "HIDRAW:FFF0:0010:0006:FFF0:0010.0002");
  EXPECT_EQ(nodes[0].versionNumber, 0);
}

TEST_F(SysfsHidrawTest, NodesAreListedInNumberOrderAndBrokenOnesAreSkipped) {
  AddUsbNode("hidraw10", "0003:FFF0:0020.0003", "HID_ID=0003:0000FFF0:00000020\nHID_PHYS=b\n", "0100");
  AddUsbNode("hidraw2", "0003:FFF0:0030.0004", "HID_ID=0003:0000FFF0:00000030\nHID_PHYS=a\n", "0100");
  AddUsbNode("hidraw5", "0003:FFF0:0040.0005", "HID_ID=garbage\n", "0100");
  const std::vector<HidrawNode> nodes = ScanHidrawNodes(root.string());
  ASSERT_EQ(nodes.size(), 2u);
  EXPECT_EQ(nodes[0].node, "hidraw2");
  EXPECT_EQ(nodes[1].node, "hidraw10");
}

TEST(DevicePathTest, PathsCompareWithoutRegardToCase) {
  EXPECT_TRUE(SamePathIgnoringCase("HIDRAW:FFF0:0050:USB-1/INPUT0", "hidraw:fff0:0050:usb-1/input0"));
  EXPECT_FALSE(SamePathIgnoringCase("HIDRAW:FFF0:0050:USB-1/INPUT0", "HIDRAW:FFF0:0050:USB-1/INPUT1"));
  EXPECT_FALSE(DevicePathFor({{"HID_ID", "0003:0000FFF0"}}, "x").has_value());
}

}  // namespace
}  // namespace pelm::linux_hid
