// Initialisation and shutdown through the exports, and the export layer's
// index checks.

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <set>
#include <thread>
#include <utility>

#include "core/model_table.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kButtonsId = 0x0020;
constexpr uint16_t kTogglesId = 0x0030;
constexpr uint16_t kEngineStartId = 0x003C;

class LifecycleTest : public LibraryTest {};

// Init and Terminate in any order, in both calling forms: a Terminate with
// nothing open, a second Init that reopens from slot zero, Terminate twice.
TEST_F(LifecycleTest, InitAndTerminateRepeatInAnyOrderAndASecondInitReopensFromSlotZero) {
  auto first = Plug(kButtonsId, 1);
  first->PanelAs<sim::GenericPanel>().SetFeatureAnswer({4, 0x11});
  EXPECT_EQ(PelmDev_Terminate(), 0u);
  EXPECT_EQ(PelmDev_Init(nullptr), 0u);
  auto second = Plug(kButtonsId, 2);
  bus().Unplug(first->Description().path);
  bus().Plug(first->Description());  // now enumerated after the second panel
  second->PanelAs<sim::GenericPanel>().SetFeatureAnswer({4, 0x22});

  EXPECT_EQ(PelmDev_Init_stdcall(kHostInstance), 0u);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 2u);
  std::array<uint8_t, 2> switches{};
  EXPECT_EQ(PelmButtons_GetSwitchVals(0, &switches[0]), PELM_SUCCESS);
  EXPECT_EQ(PelmButtons_GetSwitchVals(1, &switches[1]), PELM_SUCCESS);
  EXPECT_EQ(switches, (std::array<uint8_t, 2>{0x22, 0x11}));
  EXPECT_EQ(first->OpenHandles(), 1);  // the new record's main handle; nothing of the first Init is left
  EXPECT_EQ(PelmDev_Terminate_stdcall(), 0u);
  EXPECT_EQ(PelmDev_Terminate(), 0u);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 0u);
  PelmDevInfo info;
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_BUTTONS, 0, &info), PELM_ERR_NODEVICE);
}

// Opens that found no other handle of the device open: the ones a USB HID
// driver pauses on.
int ColdOpens(const sim::SimDevice& device) {
  std::set<uint64_t> open;
  int cold = 0;
  for (const sim::LogEntry& entry : device.Log()) {
    if (entry.op == sim::LogOp::Open) {
      if (open.empty()) ++cold;
      open.insert(entry.handleId);
    } else if (entry.op == sim::LogOp::Close) {
      open.erase(entry.handleId);
    }
  }
  return cold;
}

TEST_F(LifecycleTest, WhereTheOsTellsTheIdsEveryPanelIsProbedOnceAndAForeignDeviceNeverElseOncePerModel) {
  bus().TellIdsWithoutOpening(true);
  sim::DeviceDescription foreign = PanelDescription(kButtonsId, 1);
  foreign.vendorId = 0x046D;
  auto stranger = bus().Plug(foreign);
  std::vector<std::shared_ptr<sim::SimDevice>> panels;
  for (const ModelDescriptor& model : ModelsInProbeOrder()) panels.push_back(Plug(model.productId, 2));
  const std::size_t opensOfTheFirstModel = 1 + 2;  // its probe, its identification, its reader's handle

  PelmDev_Init(nullptr);
  EXPECT_EQ(stranger->CountOf(sim::LogOp::Open), 0u);
  for (std::size_t i = 0; i < panels.size(); ++i) {
    SCOPED_TRACE(panels[i]->Description().path);
    EXPECT_GT(panels[i]->OpenHandles(), 0);
    // Main handles only: writers open their own handles on their own threads.
    std::size_t mainOpens = 0;
    for (const sim::LogEntry& entry : panels[i]->LogOf(sim::LogOp::Open)) {
      mainOpens += entry.mode == platform::OpenMode::Overlapped ? 1 : 0;
    }
    EXPECT_EQ(mainOpens, opensOfTheFirstModel);
    // The probe's handle stays open while the object opens its own.
    EXPECT_EQ(ColdOpens(*panels[i]), 1);
  }

  // Where the OS does not tell them, each model's probe opens the foreign
  // device once, and it lands nowhere.
  bus().TellIdsWithoutOpening(false);
  PelmDev_Init(nullptr);
  EXPECT_EQ(stranger->CountOf(sim::LogOp::Open), ModelsInProbeOrder().size());
  EXPECT_EQ(stranger->OpenHandles(), 0);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 1u);
}

TEST_F(LifecycleTest, EnumerationStepsThatKeepFailingAndPathsTooLongForADeviceObjectAreSkipped) {
  Plug(kButtonsId, 1);
  Plug(kButtonsId, 2);
  sim::DeviceDescription tooLong = PanelDescription(kButtonsId, 3);
  tooLong.path += std::string(260 - tooLong.path.size(), 'x');
  auto unopened = bus().Plug(tooLong);
  bus().FailNextListSteps(3);  // a passing hiccup: the first interface is still found
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 2u);
  EXPECT_EQ(unopened->CountOf(sim::LogOp::Open), 0u);

  // Outages that hide every interface, after which Init still returns: a long
  // run of failing steps; an enumerator that refuses every index, past the last
  // one too, as SetupDi does when handed records of another process's layout;
  // no list of interfaces at all.
  const std::pair<int, bool> outages[] = {{1000, false}, {sim::Bus::kEveryListStep, false}, {0, true}};
  for (const auto& [failingSteps, listingFails] : outages) {
    bus().FailNextListSteps(failingSteps);
    bus().FailListing(listingFails);
    EXPECT_EQ(PelmDev_Init(nullptr), 0u);
    EXPECT_EQ(PelmButtons_GetNumDevices(), 0u) << failingSteps << " failing steps, listing fails " << listingFails;
  }
}

TEST_F(LifecycleTest, TwoHundredInitTerminateCyclesUnderInputLeakNothing) {
  std::vector<std::shared_ptr<sim::SimDevice>> panels = {Plug(kButtonsId, 1), Plug(kTogglesId, 1),
                                                         Plug(kEngineStartId, 1)};
  std::atomic<bool> done{false};
  std::thread traffic([&] {
    while (!done) {
      for (auto& panel : panels) panel->InjectInput({0, 0x3C});
      std::this_thread::yield();
    }
  });
  static std::atomic<int> inputs{0};
  constexpr int kCyclesBetweenDeliveryChecks = 20;
  for (int cycle = 0; cycle < 200; ++cycle) {
    PelmDev_Init(cycle % 2 == 0 ? kHostInstance : nullptr);
    PelmDev_RegisterInputCallback([](int32_t, int32_t, void*) { ++inputs; });
    PelmButtons_SetIndicators(0, static_cast<uint32_t>(cycle));
    if (cycle % kCyclesBetweenDeliveryChecks == 0) {
      // Now and then the devices must be heard before they are closed again.
      const int before = inputs;
      EXPECT_TRUE(WaitUntil([&] { return inputs > before; })) << "cycle " << cycle;
    }
    PelmDev_Terminate();
  }
  done = true;
  traffic.join();
  for (auto& panel : panels) EXPECT_EQ(panel->OpenHandles(), 0);
}

}  // namespace
}  // namespace pelm::test
