// The library on a desktop: udevd running with the project's rule, the test
// an ordinary user in the rule's group, the panels real kernel HID devices
// made by the panel server (uhid needs root).

#include <gtest/gtest.h>
#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "testbed/panel_server/panel_client.h"
#include "testbed/uhid/uhid_cockpit.h"
#include "testbed/wait_until.h"
#include "tests/models_under_test.h"

namespace pelm::desktop {
namespace {

using test::kModels;
using testbed::PanelServerClient;
using vm::HidrawNodeCount;
using testbed::WaitUntil;

constexpr uint16_t kButtonsId = 0x0020, kRadioId = 0x0050, kThrottleId = 0x0200;
constexpr char kRuleGroup[] = "plugdev";
constexpr uint8_t kInputReportId = 1;
std::mutex eventsMutex;
std::vector<std::pair<int32_t, int32_t>> connectEvents;  // (device index, event)

void OnConnect(int32_t, int32_t deviceIndex, int32_t event) {
  std::lock_guard hold(eventsMutex);
  connectEvents.emplace_back(deviceIndex, event);
}

std::vector<uint8_t> leverPositions;  // lever 1 of every input callback

void OnInput(int32_t, int32_t, void* record) {
  std::lock_guard hold(eventsMutex);
  leverPositions.push_back(*static_cast<const uint8_t*>(record));  // the record starts with lever 1
}

std::vector<PelmDevExt_PresentPanel> PresentPanels() {
  uint32_t count = 0;
  EXPECT_EQ(PelmDevExt_ListPresentPanels(nullptr, 0, &count), PELM_SUCCESS);
  std::vector<PelmDevExt_PresentPanel> panels(count);
  EXPECT_EQ(PelmDevExt_ListPresentPanels(panels.data(), count, &count), PELM_SUCCESS);
  panels.resize(std::min<std::size_t>(count, panels.size()));
  return panels;
}

class DesktopTest : public ::testing::Test {
 protected:
  static void SetUpTestSuite() {
    const std::string address = PanelServerClient::AddressFromEnvironment();
    ASSERT_FALSE(address.empty()) << PanelServerClient::kAddressVariable
                                  << " is not set: run this program with testbed/vm/run-desktop";
    server_ = std::make_unique<PanelServerClient>(address);
  }
  static void TearDownTestSuite() { server_.reset(); }

  void SetUp() override {
    ASSERT_TRUE(WaitUntil([] { return HidrawNodeCount() == 0; })) << "hidraw nodes left from an earlier test";
    std::lock_guard hold(eventsMutex);
    connectEvents.clear();
    leverPositions.clear();
  }
  void TearDown() override {
    PelmDev_Terminate();
    server_->Reset();
  }

  // Waits until the panel on `port` has `count` nodes that udevd gave the
  // rule's group and this user may open (from then on nothing changes their
  // access); returns them.
  std::vector<std::string> NodesReadyFor(int port, std::size_t count = 1) {
    const group* ruleGroup = getgrnam(kRuleGroup);
    std::vector<std::string> nodes;
    const bool ready = WaitUntil([&] {
      nodes = server_->Nodes(port);
      return ruleGroup != nullptr && nodes.size() == count &&
             std::all_of(nodes.begin(), nodes.end(), [ruleGroup](const std::string& node) {
               struct stat status{};
               return stat(node.c_str(), &status) == 0 && status.st_gid == ruleGroup->gr_gid &&
                      access(node.c_str(), R_OK | W_OK) == 0;
             });
    });
    EXPECT_TRUE(ready) << "udevd did not open port " << port << "'s node to group " << kRuleGroup
                       << ": is the rule installed?";
    return ready ? nodes : std::vector<std::string>();
  }

  bool PumpUntilConnectEvents(std::size_t count) {
    return WaitUntil([count] {
      PelmDevExt_DispatchEvents();
      std::lock_guard hold(eventsMutex);
      return connectEvents.size() >= count;
    });
  }

  static std::unique_ptr<PanelServerClient> server_;
};

std::unique_ptr<PanelServerClient> DesktopTest::server_;

// Terminate must not wait on readers blocked in their nodes, and must close
// every node.
TEST_F(DesktopTest, WithTheRuleInstalledTheUserOpensEveryModelAndTerminateClosesThemAll) {
  constexpr auto kTerminateBound = std::chrono::seconds(30);
  for (std::size_t i = 0; i < std::size(kModels); ++i) server_->Plug(kModels[i].productId, int(i) + 1);
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    ASSERT_EQ(NodesReadyFor(int(i) + 1).size(), 1u) << "product " << std::hex << kModels[i].productId;
  }
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    EXPECT_EQ(kModels[i].count(), 1u) << "model " << kModels[i].typeCode;
    EXPECT_TRUE(server_->IsOpen(int(i) + 1)) << "model " << kModels[i].typeCode;
  }

  auto terminated = std::async(std::launch::async, [] { PelmDev_Terminate(); });
  ASSERT_EQ(terminated.wait_for(kTerminateBound), std::future_status::ready) << "Terminate hangs";
  for (int port = 1; port <= int(std::size(kModels)); ++port) EXPECT_FALSE(server_->IsOpen(port)) << "port " << port;
}

TEST_F(DesktopTest, APanelTheUserMayNotOpenIsListedWithItsErrorAndTheOthersOpen) {
  server_->Plug(kButtonsId, 1);
  server_->Plug(kButtonsId, 2);
  ASSERT_EQ(NodesReadyFor(1).size(), 1u);
  const std::vector<std::string> lockedNodes = NodesReadyFor(2);
  ASSERT_EQ(lockedNodes.size(), 1u);
  const std::string& locked = lockedNodes[0];
  server_->SetMode(2, "600");
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 1u);

  const std::vector<PelmDevExt_PresentPanel> present = PresentPanels();
  ASSERT_EQ(present.size(), 2u);
  const auto denied = std::find_if(present.begin(), present.end(),
                                   [&locked](const PelmDevExt_PresentPanel& panel) { return locked == panel.node; });
  ASSERT_NE(denied, present.end()) << locked << " is not listed";
  EXPECT_EQ(denied->modelType, PELM_MODEL_BUTTONS);
  EXPECT_EQ(denied->deviceIndex, -1);
  EXPECT_EQ(denied->openInSlot, 0);
  EXPECT_EQ(denied->openStatus, PELMEXT_OPEN_PERMISSION_DENIED);
  EXPECT_EQ(denied->osError, EACCES);
  const auto opened = denied == present.begin() ? present.begin() + 1 : present.begin();
  EXPECT_EQ(opened->openInSlot, 1);
  EXPECT_EQ(opened->openStatus, PELMEXT_OPEN_OK);
}

// udevd re-sends the kernel's events on its own group with DEVNAME as a
// /dev path; the library must take those too.
TEST_F(DesktopTest, UnderUdevdARepluggedPanelComesBackAndANewPanelOpens) {
  static int instance;
  PelmDev_Init(&instance);
  ASSERT_EQ(PelmDev_RegisterConnectCallback(OnConnect), 1u);
  server_->Plug(kButtonsId, 1);
  ASSERT_TRUE(PumpUntilConnectEvents(1)) << "the first panel never arrived";
  server_->Unplug(1);
  ASSERT_TRUE(PumpUntilConnectEvents(2)) << "the removal was not heard";
  server_->Replug(1);
  ASSERT_TRUE(PumpUntilConnectEvents(3)) << "the replugged panel never came back";
  server_->Plug(kButtonsId, 2);
  ASSERT_TRUE(PumpUntilConnectEvents(4)) << "the new panel was never opened";
  {
    std::lock_guard hold(eventsMutex);
    EXPECT_EQ(connectEvents, (std::vector<std::pair<int32_t, int32_t>>{{0, PELM_EVENT_ARRIVAL},
                                                                       {0, PELM_EVENT_REMOVAL},
                                                                       {0, PELM_EVENT_ARRIVAL},
                                                                       {1, PELM_EVENT_ARRIVAL}}));
  }
  ASSERT_EQ(PelmButtons_SetIndicators(0, 0x33), PELM_SUCCESS);
  const auto received = server_->WaitReceived(1, 1, 10'000);
  ASSERT_FALSE(received.empty()) << "the returning panel is not driven";
  EXPECT_EQ(received.back().bytes, (std::vector<uint8_t>{2, 0x33}));
}

// Two panels of one model behind one physical path (a Bluetooth adapter, or
// uhid) are still two panels.
TEST_F(DesktopTest, PanelsThatShareAPhysicalPathGetDistinctPaths) {
  server_->Plug(kRadioId, 1, "phys=shared-adapter serial=");
  server_->Plug(kRadioId, 2, "phys=shared-adapter serial=");
  ASSERT_EQ(NodesReadyFor(1, 2).size(), 2u);
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmRadio_GetNumDevices(), 2u);
  PelmDevInfo first{}, second{};
  ASSERT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_RADIO, 0, &first), PELM_SUCCESS);
  ASSERT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_RADIO, 1, &second), PELM_SUCCESS);
  EXPECT_STRNE(first.devicePath, second.devicePath);
  EXPECT_TRUE(server_->IsOpen(1));
  EXPECT_TRUE(server_->IsOpen(2));
}

std::vector<uint8_t> ThrottleReport(uint8_t lever) {
  constexpr std::size_t kReportLength = 8;
  std::vector<uint8_t> report(kReportLength, 0);
  report[0] = kInputReportId;
  report[1] = lever;
  return report;
}

// The quadrant reports all the time while its reader rests between passes,
// so reports pile up in its node. The host must hear where the lever is now,
// not work through the pile one stale position a pass.
TEST_F(DesktopTest, TheThrottleHandsOnItsNewestLeverPositionWhileItReportsContinuously) {
  constexpr int kRamp = 59;  // with the final position, fewer than the node holds: none dropped
  constexpr uint8_t kFinal = UINT8_MAX;
  // A pass may have read the burst part way before it ended.
  constexpr std::size_t kMostStaleCallbacks = 2;
  server_->Plug(kThrottleId, 1);
  ASSERT_EQ(NodesReadyFor(1).size(), 1u);
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmThrottle_GetNumDevices(), 1u);
  ASSERT_EQ(PelmDev_RegisterInputCallback(OnInput), 1u);

  std::vector<std::vector<uint8_t>> burst;
  for (int position = 1; position <= kRamp; ++position) burst.push_back(ThrottleReport(uint8_t(position)));
  burst.push_back(ThrottleReport(kFinal));
  server_->Input(1, burst);
  std::size_t afterBurst;
  {
    std::lock_guard hold(eventsMutex);
    afterBurst = leverPositions.size();
  }
  // The lever stays where it is, and the quadrant keeps saying so.
  const bool arrived = WaitUntil([] {
    server_->Input(1, ThrottleReport(kFinal));
    std::lock_guard hold(eventsMutex);
    return !leverPositions.empty() && leverPositions.back() == kFinal;
  });
  std::lock_guard hold(eventsMutex);
  ASSERT_TRUE(arrived) << "the final position never arrived";
  const auto stale = std::count_if(leverPositions.begin() + std::ptrdiff_t(afterBurst), leverPositions.end(),
                                   [](uint8_t lever) { return lever != kFinal; });
  EXPECT_LE(std::size_t(stale), kMostStaleCallbacks) << "stale positions handed on after the burst";
}

}  // namespace
}  // namespace pelm::desktop
