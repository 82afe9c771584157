// Arrival and removal while the host runs, pumped through the extension API.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cctype>
#include <future>
#include <thread>

#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kButtonsId = 0x0020;
constexpr uint16_t kEngineStartId = 0x003C;

using Events = std::vector<ConnectEvent>;
Events events;
// The stdcall form is registered beside the default one; both hear of each change.
int stdcallEvents = 0;

void RecordConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  events.push_back({modelType, deviceIndex, event});
}
void PELM_STDCALL CountConnectStdcall(int32_t, int32_t, int32_t) { ++stdcallEvents; }

class HotplugTest : public LibraryTest {
 protected:
  void SetUp() override {
    LibraryTest::SetUp();
    events.clear();
    stdcallEvents = 0;
  }

  void StartWithHotplug() {
    PelmDev_Init(kHostInstance);
    ASSERT_EQ(PelmDev_RegisterConnectCallback(RecordConnect), 1u);
    ASSERT_EQ(PelmDev_RegisterConnectCallback_stdcall(CountConnectStdcall), 1u);
  }

  void Pump() { PelmDevExt_DispatchEvents(); }
};

TEST_F(HotplugTest, UnplugAndReplugKeepTheSlotTheDescriptionAndTheState) {
  auto device = Plug(kButtonsId, 1);
  StartWithHotplug();
  device->InjectInput({0, 0x5A});
  uint8_t switches = 0;
  ASSERT_TRUE(WaitUntil([&] { return PelmButtons_GetSwitchVals(0, &switches) == 0 && switches == 0x5A; }));

  bus().Unplug(device->Description().path);
  EXPECT_GE(PelmDevExt_EventDescriptor(), 0);
  Pump();
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
  EXPECT_EQ(PelmButtons_GetSwitchVals(0, &switches), PELM_ERR_NODEVICE);
  EXPECT_EQ(PelmButtons_SetBrightness(0, 1), PELM_SUCCESS);  // brightness never refuses
  EXPECT_EQ(device->OpenHandles(), 0);
  // Still described until Terminate.
  PelmDevInfo info;
  ASSERT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_BUTTONS, 0, &info), PELM_SUCCESS);
  EXPECT_STRCASEEQ(info.devicePath, device->Description().path.c_str());
  PelmDevInfo2 info2{};
  info2.structSize = sizeof info2;
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_BUTTONS, 0, &info2), PELM_SUCCESS);

  bus().Plug(device->Description());
  Pump();
  EXPECT_EQ(events, (Events{{PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL}, {PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL}}));
  EXPECT_EQ(stdcallEvents, 2);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 1u);
  ASSERT_EQ(PelmButtons_GetSwitchVals(0, &switches), PELM_SUCCESS);
  EXPECT_EQ(switches, 0x5A);
}

TEST_F(HotplugTest, ANewPanelTakesTheLowestFreeSlotAndTheOldOneComesBackToItsOwn) {
  auto first = Plug(kButtonsId, 1);
  Plug(kButtonsId, 2);
  StartWithHotplug();
  bus().Unplug(first->Description().path);
  Plug(kButtonsId, 3);
  Pump();
  bus().Plug(first->Description());
  Pump();
  EXPECT_EQ(events, (Events{{PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL}, {PELM_MODEL_BUTTONS, 2, PELM_EVENT_ARRIVAL},
                           {PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL}}));
  EXPECT_EQ(PelmButtons_GetNumDevices(), 3u);
}

// The OS may report a path in mixed case: it is matched to the running device
// whatever its case.
TEST_F(HotplugTest, RepeatedBroadcastsAreReportedAgainWhateverTheCaseOfThePath) {
  sim::DeviceDescription description = PanelDescription(kButtonsId, 1);
  for (std::size_t i = 0; i < description.path.size(); i += 2) {
    description.path[i] = static_cast<char>(std::toupper(static_cast<unsigned char>(description.path[i])));
  }
  bus().Plug(description);
  StartWithHotplug();
  bus().Plug(description);  // arrival of a device that already runs: restarted
  bus().Unplug(description.path);
  bus().Unplug(description.path);
  Pump();
  EXPECT_EQ(events, (Events{{PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL}, {PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL},
                           {PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL}}));
}

TEST_F(HotplugTest, PanelsBeyondTheSlotTableAreDiscardedAtInitAndAtArrival) {
  std::vector<std::shared_ptr<sim::SimDevice>> panels;
  for (int i = 0; i < 33; ++i) panels.push_back(Plug(kButtonsId, i));
  StartWithHotplug();
  EXPECT_EQ(PelmButtons_GetNumDevices(), 32u);
  EXPECT_EQ(panels.back()->OpenHandles(), 0);
  EXPECT_GT(panels.back()->CountOf(sim::LogOp::Open), 0u);  // opened, then closed
  auto extra = Plug(kButtonsId, 33);
  Pump();
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(PelmButtons_GetNumDevices(), 32u);
  EXPECT_EQ(extra->OpenHandles(), 0);
}

TEST_F(HotplugTest, ClassBasedArrivalsAreOpenedAndReported) {
  StartWithHotplug();
  auto device = Plug(kEngineStartId, 1);
  device->PanelAs<sim::GenericPanel>().SetFeatureAnswer({2, 0x61});
  Pump();
  EXPECT_EQ(events, (Events{{PELM_MODEL_ENGINESTART, 0, PELM_EVENT_ARRIVAL}}));
  std::array<uint8_t, 3> positions{};
  ASSERT_EQ(PelmEngineStart_GetControlVals(0, &positions[0], &positions[1], &positions[2]), PELM_SUCCESS);
  EXPECT_EQ(positions, (std::array<uint8_t, 3>{2, 3, 3}));
}

TEST_F(HotplugTest, WithoutAnInstanceChangesGoUnnoticedAndWithOneForeignDevicesAreIgnored) {
  auto device = Plug(kButtonsId, 1);
  PelmDev_Init(nullptr);
  PelmDev_RegisterConnectCallback(RecordConnect);
  EXPECT_EQ(PelmDevExt_EventDescriptor(), -1);
  bus().Unplug(device->Description().path);
  EXPECT_EQ(PelmDevExt_DispatchEvents(), 0u);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 1u);

  StartWithHotplug();
  sim::DeviceDescription foreign = PanelDescription(kButtonsId, 2);
  foreign.vendorId = 0x1234;
  bus().Plug(foreign);
  bus().Unplug(foreign.path);
  EXPECT_EQ(PelmDevExt_DispatchEvents(), 2u);
  EXPECT_TRUE(events.empty());
}

// A panel unplugged while a host thread keeps queuing reports for it, every
// send slow so that the host refills the queue as fast as a draining writer
// empties it: the removal stops the writer promptly instead of draining for as
// long as the host keeps queuing.
TEST_F(HotplugTest, RemovalOfAPanelUnderABusyHostEnds) {
  constexpr auto kSlowSend = std::chrono::milliseconds(1);
  auto device = Plug(kButtonsId, 1);
  device->SetOperationDelay(kSlowSend);
  StartWithHotplug();
  std::atomic<bool> hostBusy{true};
  std::thread host([&] {
    for (uint32_t value = 0; hostBusy; ++value) PelmButtons_SetIndicators(0, value);
  });
  ASSERT_TRUE(WaitUntil([&] { return device->CountOf(sim::LogOp::SetFeature) > 0; }));

  bus().Unplug(device->Description().path);
  auto removal = std::async(std::launch::async, [this] { Pump(); });
  const bool removalEnded = WaitUntil([&] { return removal.wait_for(std::chrono::seconds(0)) == std::future_status::ready; });
  hostBusy = false;
  host.join();
  EXPECT_TRUE(removalEnded);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
}

}  // namespace
}  // namespace pelm::test
