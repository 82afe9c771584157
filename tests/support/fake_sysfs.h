#pragma once
// A sysfs tree in a temporary folder, laid out as the kernel lays out hidraw
// nodes, for the Linux backend's tests.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace pelm::test {

class FakeSysfsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    root = std::filesystem::temp_directory_path() /
           ("pelm-sysfs-" + std::to_string(::testing::UnitTest::GetInstance()->random_seed()) + "-" +
            test->test_suite_name() + "-" + test->name());
    std::filesystem::remove_all(root);
    std::filesystem::create_directories(root / "class" / "hidraw");
  }
  void TearDown() override { std::filesystem::remove_all(root); }

  static void Write(const std::filesystem::path& file, const std::string& text) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file) << text;
  }

  // A USB panel: usb device (bcdDevice) > interface > HID device > hidraw
  // node. Returns the node's sysfs path below the root, as uevents carry it.
  std::string AddUsbNode(const std::string& node, const std::string& hidName, const std::string& uevent,
                         const std::string& bcdDevice = "0100") {
    const std::filesystem::path usbDevice = root / "devices" / "pci0000:00" / "usb1" / ("1-" + node);
    if (!bcdDevice.empty()) Write(usbDevice / "bcdDevice", bcdDevice + "\n");
    const std::filesystem::path hidDevice = usbDevice / ("1-" + node + ":1.0") / hidName;
    Write(hidDevice / "uevent", uevent);
    const std::filesystem::path nodeDir = hidDevice / "hidraw" / node;
    std::filesystem::create_directories(nodeDir);
    std::filesystem::create_directory_symlink(std::filesystem::path("../../..") / hidName, nodeDir / "device");
    std::filesystem::create_directory_symlink(nodeDir, root / "class" / "hidraw" / node);
    // Appended rather than concatenated: GCC 12 at -O3 warns of overlapping
    // copies in the temporary.
    std::string devpath = "/";
    devpath += nodeDir.lexically_relative(root).string();
    return devpath;
  }

  // Takes a node (and the devices above it) out of the tree, as an unplug does.
  void RemoveUsbNode(const std::string& node) {
    std::filesystem::remove_all(root / "devices" / "pci0000:00" / "usb1" / ("1-" + node));
    std::filesystem::remove(root / "class" / "hidraw" / node);
  }

  // The HID device uevent of a panel of this product on USB port `phys`.
  static std::string PanelUevent(const std::string& productHex, const std::string& phys,
                                 const std::string& uniq = "") {
    return "DRIVER=hid-generic\nHID_ID=0003:0000FFF0:0000" + productHex + "\nHID_NAME=Panel\nHID_PHYS=" + phys +
           "\nHID_UNIQ=" + uniq + "\n";
  }

  std::filesystem::path root;
};

}  // namespace pelm::test
