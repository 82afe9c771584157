// The Linux backend's view of hidraw nodes over a fake sysfs tree, laid out as
// the kernel lays it out: the scan, the node map and the hot-plug watch, fed
// uevent datagrams as the kernel and udevd send them.

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/sysfs_hidraw.h"
#include "platform/linux/uevent_message.h"
#include "platform/linux/uevent_watch.h"

namespace pelm::linux_hid {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t kKernelGroup = static_cast<uint32_t>(UeventGroup::Kernel);
constexpr uint32_t kUdevGroup = static_cast<uint32_t>(UeventGroup::Udev);
constexpr uint32_t kUdevdPortId = 4242;

// KEY=VALUE pairs, each ending in a NUL.
std::string Properties(const std::vector<std::string>& pairs) {
  std::string properties;
  for (const std::string& pair : pairs) properties += pair + '\0';
  return properties;
}

// "libudev", udevd's header (the properties' offset at byte 16, their length
// at 20), then the properties.
std::string UdevMessage(const std::string& properties) {
  constexpr uint32_t kHeaderSize = 40;
  std::string message(kHeaderSize, '\0');
  std::memcpy(message.data(), "libudev", 8);
  const auto length = static_cast<uint32_t>(properties.size());
  std::memcpy(message.data() + 16, &kHeaderSize, 4);
  std::memcpy(message.data() + 20, &length, 4);
  return message + properties;
}

// A device's event as the kernel sends it on its own group.
UeventDatagram KernelEvent(const std::string& action, const std::string& devpath, const std::string& subsystem,
                           const std::string& node = "") {
  std::vector<std::string> pairs = {"ACTION=" + action, "DEVPATH=" + devpath, "SUBSYSTEM=" + subsystem};
  if (!node.empty()) pairs.push_back("DEVNAME=" + node);
  return {action + "@" + devpath + '\0' + Properties(pairs), 0, kKernelGroup, 0};
}

// A hidraw node's event as udevd (root) re-broadcasts it: the node named by its
// path in /dev, and udevd's own properties.
UeventDatagram UdevdEvent(const std::string& action, const std::string& devpath, const std::string& node) {
  return {UdevMessage(Properties({"ACTION=" + action, "DEVPATH=" + devpath, "SUBSYSTEM=hidraw", "DEVNAME=/dev/" + node,
                                  "SEQNUM=812", "USEC_INITIALIZED=1234", "TAGS=:uaccess:", "CURRENT_TAGS=:uaccess:"})),
          kUdevdPortId, kUdevGroup, 0};
}

class FakeUeventSource : public UeventSource {
 public:
  int Descriptor() const override { return -1; }
  ReceiveResult Receive(UeventDatagram& datagram) override {
    if (queued_.empty()) return ReceiveResult::Empty;
    auto [result, next] = std::move(queued_.front());
    queued_.pop_front();
    datagram = std::move(next);
    return result;
  }
  void Push(UeventDatagram datagram) { queued_.emplace_back(ReceiveResult::Datagram, std::move(datagram)); }
  void Overrun() { queued_.emplace_back(ReceiveResult::Overrun, UeventDatagram{}); }

 private:
  std::deque<std::pair<ReceiveResult, UeventDatagram>> queued_;
};

struct SeenEvent {
  platform::DeviceEvent event;
  std::string path;
  bool operator==(const SeenEvent&) const = default;
  friend void PrintTo(const SeenEvent& seen, std::ostream* out) {
    *out << (seen.event == platform::DeviceEvent::Arrival ? "arrival " : "removal ") << seen.path;
  }
};

constexpr char kRadioPath[] = "HIDRAW:FFF0:0050:USB-0000:00:14.0-2/INPUT0";

class HidrawNodesTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const ::testing::TestInfo* test = ::testing::UnitTest::GetInstance()->current_test_info();
    root = fs::temp_directory_path() / ("pelm-sysfs-" + std::to_string(getpid()) + "-" + test->name());
    fs::remove_all(root);
    fs::create_directories(root / "class" / "hidraw");
  }
  void TearDown() override { fs::remove_all(root); }

  // A USB panel: usb device (bcdDevice) > interface > HID device > hidraw
  // node. Returns the node's sysfs path below the root, as uevents carry it.
  std::string AddUsbNode(const std::string& node, const std::string& hidName, const std::string& uevent,
                         const std::string& bcdDevice = "0100") {
    const fs::path usbDevice = root / "devices" / "pci0000:00" / "usb1" / ("1-" + node);
    const fs::path hidDevice = usbDevice / ("1-" + node + ":1.0") / hidName;
    const fs::path nodeDir = hidDevice / "hidraw" / node;
    fs::create_directories(nodeDir);
    if (!bcdDevice.empty()) std::ofstream(usbDevice / "bcdDevice") << bcdDevice << '\n';
    std::ofstream(hidDevice / "uevent") << uevent;
    fs::create_directory_symlink(fs::path("../../..") / hidName, nodeDir / "device");
    fs::create_directory_symlink(nodeDir, root / "class" / "hidraw" / node);
    // Appended rather than concatenated: GCC 12 at -O3 warns of overlapping
    // copies in the temporary.
    std::string devpath = "/";
    devpath += nodeDir.lexically_relative(root).string();
    return devpath;
  }

  // Takes a node (and the devices above it) out of the tree, as an unplug does.
  void RemoveUsbNode(const std::string& node) {
    fs::remove_all(root / "devices" / "pci0000:00" / "usb1" / ("1-" + node));
    fs::remove(root / "class" / "hidraw" / node);
  }

  // The HID device uevent of a panel of this product on USB port `phys`.
  static std::string PanelUevent(const std::string& productHex, const std::string& phys,
                                 const std::string& uniq = "") {
    return "DRIVER=hid-generic\nHID_ID=0003:0000FFF0:0000" + productHex + "\nHID_NAME=Panel\nHID_PHYS=" + phys +
           "\nHID_UNIQ=" + uniq + "\n";
  }

  // The radio panel's node, as plugging it makes it.
  std::string PlugRadio(const std::string& node = "hidraw3", const std::string& hidName = "0003:FFF0:0050.0007") {
    return AddUsbNode(node, hidName, PanelUevent("0050", "usb-0000:00:14.0-2/input0"));
  }

  void StartWatch(UeventGroup group = UeventGroup::Kernel) {
    watch_.reset();
    nodes_ = std::make_unique<NodeMap>(root.string(), nullptr);
    auto source = std::make_unique<FakeUeventSource>();
    source_ = source.get();
    watch_ = std::make_unique<UeventWatch>(*nodes_, std::move(source), group,
                                           [this](platform::DeviceEvent event, const char* path) {
                                             seen_.push_back({event, path});
                                           });
  }

  fs::path root;
  std::unique_ptr<NodeMap> nodes_;
  FakeUeventSource* source_ = nullptr;
  std::unique_ptr<UeventWatch> watch_;
  std::vector<SeenEvent> seen_;
};

TEST_F(HidrawNodesTest, EveryFormOfAddAndRemoveBecomesAnArrivalAndARemoval) {
  for (const UeventGroup group : {UeventGroup::Kernel, UeventGroup::Udev}) {
    SCOPED_TRACE(group == UeventGroup::Kernel ? "kernel" : "udevd");
    seen_.clear();
    StartWatch(group);
    const std::string devpath = PlugRadio();
    const auto event = [&](const std::string& action) {
      return group == UeventGroup::Kernel ? KernelEvent(action, devpath, "hidraw", "hidraw3")
                                          : UdevdEvent(action, devpath, "hidraw3");
    };
    source_->Push(event("add"));
    EXPECT_EQ(watch_->DispatchPending(), 1u);
    RemoveUsbNode("hidraw3");
    source_->Push(event("remove"));
    EXPECT_EQ(watch_->DispatchPending(), 1u);
    EXPECT_EQ(seen_, (std::vector<SeenEvent>{{platform::DeviceEvent::Arrival, kRadioPath},
                                             {platform::DeviceEvent::Removal, kRadioPath}}));
  }
}

// A node whose permissions come after its add (udevadm trigger after the rule
// is installed) or whose driver binds late is looked at again; one that opened
// fine is not reported twice.
TEST_F(HidrawNodesTest, AChangeOrBindReportsAgainANodeThatCouldNotBeOpened) {
  StartWatch();
  const std::string devpath = PlugRadio();
  const std::string hidDevpath = devpath.substr(0, devpath.rfind("/hidraw/"));
  const auto arrivals = [this] { return std::count_if(seen_.begin(), seen_.end(), [](const SeenEvent& seen) {
                                   return seen.event == platform::DeviceEvent::Arrival && seen.path == kRadioPath;
                                 }); };
  // Its add was missed: a change is as good.
  source_->Push(KernelEvent("change", devpath, "hidraw", "hidraw3"));
  watch_->DispatchPending();
  EXPECT_EQ(arrivals(), 1);

  const struct {
    int lastOpenError;
    UeventDatagram event;
    int arrivalsAfter;
  } steps[] = {
      {EACCES, KernelEvent("change", devpath, "hidraw", "hidraw3"), 2},
      {0, KernelEvent("change", devpath, "hidraw", "hidraw3"), 2},
      {0, KernelEvent("bind", hidDevpath, "hid"), 2},
      {EACCES, KernelEvent("bind", hidDevpath, "hid"), 3},
  };
  for (const auto& step : steps) {
    nodes_->NoteOpenResult(kRadioPath, step.lastOpenError);
    source_->Push(step.event);
    watch_->DispatchPending();
    EXPECT_EQ(arrivals(), step.arrivalsAfter) << step.event.bytes.substr(0, step.event.bytes.find('@'))
                                              << " after open error " << step.lastOpenError;
  }
  EXPECT_EQ(seen_.size(), 3u);
}

// Events lost to a full socket buffer are made good by looking at sysfs: what
// went is removed, what came arrives, what stayed is left alone.
TEST_F(HidrawNodesTest, AnOverrunIsAnsweredByARescanThatReconcilesThePaths) {
  const std::string autopilotPath = "HIDRAW:FFF0:0060:USB-0000:00:14.0-6/INPUT0";
  const std::string squawkPath = "HIDRAW:FFF0:0070:USB-0000:00:14.0-7/INPUT0";
  PlugRadio();
  AddUsbNode("hidraw5", "0003:FFF0:0020.0002", PanelUevent("0020", "usb-0000:00:14.0-5/input0"));
  AddUsbNode("hidraw6", "0003:FFF0:0060.0003", PanelUevent("0060", "usb-0000:00:14.0-6/input0"));
  StartWatch();
  // Lost: the radio replugged (a new HID device on the same port), the
  // autopilot panel unplugged, a transponder panel plugged in.
  RemoveUsbNode("hidraw3");
  PlugRadio("hidraw3", "0003:FFF0:0050.0009");
  RemoveUsbNode("hidraw6");
  AddUsbNode("hidraw7", "0003:FFF0:0070.0004", PanelUevent("0070", "usb-0000:00:14.0-7/input0"));
  source_->Overrun();
  EXPECT_EQ(watch_->DispatchPending(), 4u);
  EXPECT_EQ(seen_, (std::vector<SeenEvent>{{platform::DeviceEvent::Removal, kRadioPath},
                                           {platform::DeviceEvent::Removal, autopilotPath},
                                           {platform::DeviceEvent::Arrival, kRadioPath},
                                           {platform::DeviceEvent::Arrival, squawkPath}}));
  // The rescan's picture holds: the lost autopilot's removal, when it does come,
  // is not reported again.
  source_->Push(KernelEvent("remove", "/devices/pci0000:00/usb1/1-hidraw6/1-hidraw6:1.0/0003:FFF0:0060.0003/hidraw/hidraw6",
                            "hidraw", "hidraw6"));
  EXPECT_EQ(watch_->DispatchPending(), 0u);
}

// Devices are opened by path all the time (a writer retries its open while its
// panel is away): the map answers from what it knows and the kernel's events,
// never with a scan of sysfs.
TEST_F(HidrawNodesTest, TheNodeMapFollowsTheKernelsEventsAndScansOnlyWhenTheyWereLost) {
  const std::string buttonsPath = "HIDRAW:FFF0:0020:USB-0000:00:14.0-5/INPUT0";
  auto owned = std::make_unique<FakeUeventSource>();
  FakeUeventSource& events = *owned;
  NodeMap nodes(root.string(), std::move(owned));
  const std::string radioDevpath = PlugRadio();
  EXPECT_EQ(nodes.Rescan().size(), 1u);

  const std::string buttonsDevpath = AddUsbNode("hidraw5", "0003:FFF0:0020.0002", PanelUevent("0020", "usb-0000:00:14.0-5/input0"));
  EXPECT_FALSE(nodes.Find(buttonsPath)) << "found by a scan";
  events.Push(KernelEvent("add", buttonsDevpath, "hidraw", "hidraw5"));
  // Hosts may name the path in any case.
  ASSERT_TRUE(nodes.Find("hidraw:fff0:0020:usb-0000:00:14.0-5/input0"));
  EXPECT_EQ(nodes.Find(buttonsPath)->node, "hidraw5");

  RemoveUsbNode("hidraw3");
  EXPECT_TRUE(nodes.Find(kRadioPath)) << "forgotten without an event";
  events.Push(KernelEvent("remove", radioDevpath, "hidraw", "hidraw3"));
  EXPECT_FALSE(nodes.Find(kRadioPath));

  // Lost events: the next lookup rescans.
  PlugRadio("hidraw3", "0003:FFF0:0050.0009");
  RemoveUsbNode("hidraw5");
  events.Overrun();
  EXPECT_TRUE(nodes.Find(kRadioPath));
  EXPECT_FALSE(nodes.Find(buttonsPath));
}

// Panels that their HID devices do not tell apart by physical path (all
// Bluetooth panels on one adapter; uhid devices made with one phys) still get
// one path each: the serial number when the bus is not USB, else the HID
// device's sysfs name for all but the first. A virtual device without any
// physical path is named by its HID device; a node whose identity cannot be
// read is left out. Nodes come in number order.
TEST_F(HidrawNodesTest, PanelsThatShareAPhysicalPathGetDistinctPaths) {
  const std::string adapter = "00:1a:7d:da:71:13";
  const auto bluetooth = [](const std::string& phys, const std::string& uniq) {
    return "HID_ID=0005:0000FFF0:00000050\nHID_PHYS=" + phys + "\nHID_UNIQ=" + uniq + "\n";
  };
  AddUsbNode("hidraw1", "0005:FFF0:0050.0001", bluetooth(adapter, "c4:11:00:00:00:01"), "");
  AddUsbNode("hidraw2", "0005:FFF0:0050.0002", bluetooth(adapter, "c4:11:00:00:00:02"), "");
  AddUsbNode("hidraw3", "0003:FFF0:0020.0003", PanelUevent("0020", "virtual-panel"), "");
  AddUsbNode("hidraw4", "0003:FFF0:0020.0004", PanelUevent("0020", "virtual-panel"), "");
  AddUsbNode("hidraw10", "0006:FFF0:0010.000A", "HID_ID=0006:0000FFF0:00000010\nHID_PHYS=\n", "");
  AddUsbNode("hidraw9", "0003:FFF0:0040.0009", "HID_ID=garbage\n");
  NodeMap nodes(root.string(), std::make_unique<FakeUeventSource>());
  std::vector<std::string> paths;
  for (const HidrawNode& node : nodes.Rescan()) paths.push_back(node.path);
  EXPECT_EQ(paths, (std::vector<std::string>{"HIDRAW:FFF0:0050:00:1A:7D:DA:71:13/C4:11:00:00:00:01",
                                             "HIDRAW:FFF0:0050:00:1A:7D:DA:71:13/C4:11:00:00:00:02",
                                             "HIDRAW:FFF0:0020:VIRTUAL-PANEL",
                                             "HIDRAW:FFF0:0020:VIRTUAL-PANEL#0003:FFF0:0020.0004",
                                             "HIDRAW:FFF0:0010:0006:FFF0:0010.000A"}));
  // The first keeps its path when the second comes back, and gets it back
  // when it comes back itself.
  RemoveUsbNode("hidraw4");
  AddUsbNode("hidraw4", "0003:FFF0:0020.0006", PanelUevent("0020", "virtual-panel"), "");
  ASSERT_TRUE(nodes.Refresh("hidraw4"));
  EXPECT_EQ(nodes.Refresh("hidraw4")->path, "HIDRAW:FFF0:0020:VIRTUAL-PANEL#0003:FFF0:0020.0006");
  EXPECT_EQ(nodes.Refresh("hidraw3")->path, "HIDRAW:FFF0:0020:VIRTUAL-PANEL");
  RemoveUsbNode("hidraw3");
  EXPECT_FALSE(nodes.Refresh("hidraw3"));
  AddUsbNode("hidraw5", "0003:FFF0:0020.0007", PanelUevent("0020", "virtual-panel"), "");
  EXPECT_EQ(nodes.Refresh("hidraw5")->path, "HIDRAW:FFF0:0020:VIRTUAL-PANEL");
}

// Any local process may send a datagram to the watch's socket; only the
// kernel speaks on its group, and only root (udevd) on udev's.
TEST_F(HidrawNodesTest, MessagesFromAnyoneButTheKernelOrUdevdAreIgnored) {
  const std::string devpath = PlugRadio();
  const std::string kernelForm = KernelEvent("add", devpath, "hidraw", "hidraw3").bytes;
  const std::string udevForm = UdevdEvent("add", devpath, "hidraw3").bytes;
  const uint32_t localPort = 31337;
  const struct {
    const char* what;
    UeventGroup watched;
    UeventDatagram datagram;
  } impostors[] = {
      {"a process on the kernel's group", UeventGroup::Kernel, {kernelForm, localPort, kKernelGroup, 0}},
      {"a unicast to the kernel watch", UeventGroup::Kernel, {kernelForm, localPort, 0, 1000}},
      {"a user's process on udev's group", UeventGroup::Udev, {udevForm, localPort, kUdevGroup, 1000}},
      {"no credentials on udev's group", UeventGroup::Udev, {udevForm, kUdevdPortId, kUdevGroup, std::nullopt}},
      {"a unicast to the udev watch", UeventGroup::Udev, {udevForm, localPort, 0, 0}},
  };
  for (const auto& impostor : impostors) {
    StartWatch(impostor.watched);
    source_->Push(impostor.datagram);
    EXPECT_EQ(watch_->DispatchPending(), 0u) << impostor.what;
  }
  EXPECT_TRUE(seen_.empty());
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
