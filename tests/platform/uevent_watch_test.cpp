// The hot-plug watch over a fake sysfs tree, fed uevent datagrams as the kernel
// and udevd send them.

#include "platform/linux/uevent_watch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "support/fake_sysfs.h"
#include "support/uevent_messages.h"

namespace pelm::linux_hid {
namespace {

struct SeenEvent {
  platform::DeviceEvent event;
  std::string path;
  bool operator==(const SeenEvent&) const = default;
  friend void PrintTo(const SeenEvent& seen, std::ostream* out) {
    *out << (seen.event == platform::DeviceEvent::Arrival ? "arrival " : "removal ") << seen.path;
  }
};

constexpr char kRadioPath[] = "HIDRAW:FFF0:0050:USB-0000:00:14.0-2/INPUT0";

class UeventWatchTest : public test::FakeSysfsTest {
 protected:
  void StartWatch(UeventGroup group = UeventGroup::Kernel) {
    watch_.reset();
    nodes_ = std::make_unique<NodeMap>(root.string(), nullptr);
    auto source = std::make_unique<test::FakeUeventSource>();
    source_ = source.get();
    watch_ = std::make_unique<UeventWatch>(*nodes_, std::move(source), group,
                                           [this](platform::DeviceEvent event, const char* path) {
                                             seen_.push_back({event, path});
                                           });
  }

  // The radio panel's node, as plugging it makes it.
  std::string PlugRadio(const std::string& node = "hidraw3", const std::string& hidName = "0003:FFF0:0050.0007") {
    return AddUsbNode(node, hidName, PanelUevent("0050", "usb-0000:00:14.0-2/input0"));
  }

  std::unique_ptr<NodeMap> nodes_;
  test::FakeUeventSource* source_ = nullptr;
  std::unique_ptr<UeventWatch> watch_;
  std::vector<SeenEvent> seen_;
};

// How each sender words a hidraw node's event.
struct MessageForm {
  const char* name;
  UeventGroup group;
  UeventDatagram (*make)(const std::string& action, const std::string& devpath, const std::string& node);
};

const MessageForm kMessageForms[] = {
    {"kernel", UeventGroup::Kernel,
     [](const std::string& action, const std::string& devpath, const std::string& node) {
       return test::FromKernel(test::KernelMessage(
           action, devpath,
           test::UeventProperties({"ACTION=" + action, "DEVPATH=" + devpath, "SUBSYSTEM=hidraw", "DEVNAME=" + node})));
     }},
    // udevd names the node by its full path in /dev.
    {"udevd", UeventGroup::Udev,
     [](const std::string& action, const std::string& devpath, const std::string& node) {
       return test::FromUdevd(test::UdevMessage(test::UeventProperties(
           {"ACTION=" + action, "DEVPATH=" + devpath, "SUBSYSTEM=hidraw", "DEVNAME=/dev/" + node, "SEQNUM=812",
            "USEC_INITIALIZED=1234", "TAGS=:uaccess:", "CURRENT_TAGS=:uaccess:"})));
     }},
};

TEST_F(UeventWatchTest, EveryFormOfAddAndRemoveBecomesAnArrivalAndARemoval) {
  for (const MessageForm& form : kMessageForms) {
    SCOPED_TRACE(form.name);
    seen_.clear();
    StartWatch(form.group);
    const std::string devpath = PlugRadio();
    source_->Push(form.make("add", devpath, "hidraw3"));
    EXPECT_EQ(watch_->DispatchPending(), 1u);
    RemoveUsbNode("hidraw3");
    source_->Push(form.make("remove", devpath, "hidraw3"));
    EXPECT_EQ(watch_->DispatchPending(), 1u);
    EXPECT_EQ(seen_, (std::vector<SeenEvent>{{platform::DeviceEvent::Arrival, kRadioPath},
                                             {platform::DeviceEvent::Removal, kRadioPath}}));
  }
}

UeventDatagram KernelEvent(const std::string& action, const std::string& devpath, const std::string& subsystem,
                           const std::string& node = "") {
  std::vector<std::string> properties = {"ACTION=" + action, "DEVPATH=" + devpath, "SUBSYSTEM=" + subsystem};
  if (!node.empty()) properties.push_back("DEVNAME=" + node);
  return test::FromKernel(test::KernelMessage(action, devpath, test::UeventProperties(properties)));
}

// A node whose permissions come after its add (udevadm trigger after the rule
// is installed) or whose driver binds late is looked at again; one that opened
// fine is not reported twice.
TEST_F(UeventWatchTest, AChangeOrBindReportsAgainANodeThatCouldNotBeOpened) {
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
TEST_F(UeventWatchTest, AnOverrunIsAnsweredByARescanThatReconcilesThePaths) {
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
TEST_F(UeventWatchTest, TheNodeMapFollowsTheKernelsEventsAndScansOnlyWhenTheyWereLost) {
  const std::string buttonsPath = "HIDRAW:FFF0:0020:USB-0000:00:14.0-5/INPUT0";
  auto owned = std::make_unique<test::FakeUeventSource>();
  test::FakeUeventSource& events = *owned;
  NodeMap nodes(root.string(), std::move(owned));
  const std::string radioDevpath = PlugRadio();
  EXPECT_EQ(nodes.Rescan().size(), 1u);

  const std::string buttonsDevpath = AddUsbNode("hidraw5", "0003:FFF0:0020.0002", PanelUevent("0020", "usb-0000:00:14.0-5/input0"));
  EXPECT_FALSE(nodes.Find(buttonsPath)) << "found by a scan";
  events.Push(KernelEvent("add", buttonsDevpath, "hidraw", "hidraw5"));
  ASSERT_TRUE(nodes.Find(buttonsPath));
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
// device's sysfs name for all but the first.
TEST_F(UeventWatchTest, PanelsThatShareAPhysicalPathGetDistinctPaths) {
  const std::string adapter = "00:1a:7d:da:71:13";
  const auto bluetooth = [](const std::string& phys, const std::string& uniq) {
    return "HID_ID=0005:0000FFF0:00000050\nHID_PHYS=" + phys + "\nHID_UNIQ=" + uniq + "\n";
  };
  AddUsbNode("hidraw1", "0005:FFF0:0050.0001", bluetooth(adapter, "c4:11:00:00:00:01"), "");
  AddUsbNode("hidraw2", "0005:FFF0:0050.0002", bluetooth(adapter, "c4:11:00:00:00:02"), "");
  AddUsbNode("hidraw3", "0003:FFF0:0020.0003", PanelUevent("0020", "virtual-panel"), "");
  AddUsbNode("hidraw4", "0003:FFF0:0020.0004", PanelUevent("0020", "virtual-panel"), "");
  NodeMap nodes(root.string(), std::make_unique<test::FakeUeventSource>());
  std::vector<std::string> paths;
  for (const HidrawNode& node : nodes.Rescan()) paths.push_back(node.path);
  EXPECT_EQ(paths, (std::vector<std::string>{"HIDRAW:FFF0:0050:00:1A:7D:DA:71:13/C4:11:00:00:00:01",
                                             "HIDRAW:FFF0:0050:00:1A:7D:DA:71:13/C4:11:00:00:00:02",
                                             "HIDRAW:FFF0:0020:VIRTUAL-PANEL",
                                             "HIDRAW:FFF0:0020:VIRTUAL-PANEL#0003:FFF0:0020.0004"}));
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
TEST_F(UeventWatchTest, MessagesFromAnyoneButTheKernelOrUdevdAreIgnored) {
  const std::string devpath = PlugRadio();
  const auto properties =
      test::UeventProperties({"ACTION=add", "DEVPATH=" + devpath, "SUBSYSTEM=hidraw", "DEVNAME=hidraw3"});
  const std::string kernelForm = test::KernelMessage("add", devpath, properties);
  const std::string udevForm = test::UdevMessage(properties);
  const uint32_t kernelGroup = static_cast<uint32_t>(UeventGroup::Kernel);
  const uint32_t udevGroup = static_cast<uint32_t>(UeventGroup::Udev);
  const uint32_t localPort = 31337;
  const struct {
    const char* what;
    UeventGroup watched;
    UeventDatagram datagram;
  } impostors[] = {
      {"a process on the kernel's group", UeventGroup::Kernel, {kernelForm, localPort, kernelGroup, 0}},
      {"a unicast to the kernel watch", UeventGroup::Kernel, {kernelForm, localPort, 0, 1000}},
      {"a user's process on udev's group", UeventGroup::Udev, {udevForm, localPort, udevGroup, 1000}},
      {"no credentials on udev's group", UeventGroup::Udev, {udevForm, test::kUdevdPortId, udevGroup, std::nullopt}},
      {"a unicast to the udev watch", UeventGroup::Udev, {udevForm, localPort, 0, 0}},
  };
  for (const auto& impostor : impostors) {
    StartWatch(impostor.watched);
    source_->Push(impostor.datagram);
    EXPECT_EQ(watch_->DispatchPending(), 0u) << impostor.what;
  }
  EXPECT_TRUE(seen_.empty());
}

}  // namespace
}  // namespace pelm::linux_hid
