// The library on the real kernel HID stack: panels made by uhid appear as
// hidraw nodes, and everything below goes through the public C API of
// libpelmdev.so and its Linux backend.

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <future>
#include <mutex>
#include <string>
#include <tuple>
#include <vector>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "testbed/uhid/uhid_cockpit.h"
#include "tests/vm/vm_models.h"

namespace pelm::vm {
namespace {

constexpr uint16_t kForeignVendorId = 0x1234;
constexpr int kForeignPort = 99;
constexpr uint8_t kInputReportId = 1;
// Long enough for every model's input report; the kernel pads nothing.
constexpr std::size_t kInputReportLength = 1 + UhidPanel::kReportPayload;

std::string ExpectedPath(uint16_t vendorId, uint16_t productId, int port) {
  return DevicePathFor(vendorId, productId, PhysFor(port));
}

struct Event {
  int32_t modelType;
  int32_t deviceIndex;
  int32_t kind;
  bool operator==(const Event&) const = default;
};

std::mutex eventsMutex;
std::vector<Event> connectEvents;
std::vector<int32_t> inputModels;  // the model of each input callback

void OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  std::lock_guard hold(eventsMutex);
  connectEvents.push_back({modelType, deviceIndex, event});
}

void OnInput(int32_t modelType, int32_t, void*) {
  std::lock_guard hold(eventsMutex);
  inputModels.push_back(modelType);
}

template <class T>
std::vector<T> Snapshot(const std::vector<T>& events) {
  std::lock_guard hold(eventsMutex);
  return events;
}

class VmTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(WaitUntil([] { return HidrawNodeCount() == 0; })) << "hidraw nodes left from an earlier test";
    std::lock_guard hold(eventsMutex);
    connectEvents.clear();
    inputModels.clear();
  }
  void TearDown() override {
    PelmDev_Terminate();
    panels_.clear();
  }

  UhidPanel& Add(uint16_t productId, int port, uint16_t vendorId = PELM_VENDOR_ID) {
    panels_.push_back(MakePanel(productId, port, vendorId));
    return *panels_.back();
  }
  void AddEveryModel() {
    for (std::size_t i = 0; i < std::size(kModels); ++i) Add(kModels[i].productId, static_cast<int>(i));
  }
  UhidPanel& PanelOf(int32_t typeCode) { return *panels_[&Model(typeCode) - kModels]; }
  void WaitForNodes() {
    ASSERT_TRUE(WaitUntil([this] { return HidrawNodeCount() == panels_.size(); }))
        << HidrawNodeCount() << " of " << panels_.size() << " hidraw nodes";
  }
  // Pumps hot-plug events on this (the Init) thread until `count` connect
  // events arrived.
  bool PumpUntilConnectEvents(std::size_t count) {
    return WaitUntil([count] {
      PelmDevExt_DispatchEvents();
      return Snapshot(connectEvents).size() >= count;
    });
  }

  std::vector<std::unique_ptr<UhidPanel>> panels_;
};

TEST_F(VmTest, InitFindsEveryModelWithItsPathAndSerialAndSkipsAForeignDevice) {
  AddEveryModel();
  Add(0x0050, kForeignPort, kForeignVendorId);
  WaitForNodes();
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    const ModelUnderTest& model = kModels[i];
    SCOPED_TRACE(model.typeCode);
    EXPECT_EQ(model.count(), 1u);
    PelmDevInfo2 info{};
    info.structSize = sizeof info;
    ASSERT_EQ(PelmDev_GetDeviceInfo2(model.typeCode, 0, &info), PELM_SUCCESS);
    EXPECT_EQ(info.devicePath, ExpectedPath(PELM_VENDOR_ID, model.productId, static_cast<int>(i)));
    EXPECT_EQ(info.serialNumber, model.readsSerial ? SerialFor(static_cast<int>(i)) : std::string());
    EXPECT_TRUE(panels_[i]->IsOpen()) << "the panel's hidraw node is held open";
  }
  EXPECT_EQ(PelmRadio_GetNumDevices(), 1u) << "the foreign device with the radio's product ID is no radio";
  EXPECT_FALSE(panels_.back()->IsOpen());
}

struct SetterCase {
  const char* name;
  int32_t typeCode;
  int32_t (*call)();
  TransferKind kind;
  Report expected;
};

// One or more setters of every model that sends, and the report the device must receive.
const SetterCase kSetterCases[] = {
    {"alpha text", PELM_MODEL_ALPHA, [] { return PelmAlpha_SetAlpha(0, "ab"); }, TransferKind::Feature,
     {3, 0x22, 0x37, 0x0A, 0x8F, 0, 0, 0, 0}},
    {"alpha numeric", PELM_MODEL_ALPHA, [] { return PelmAlpha_SetNumeric(0, "12.3"); }, TransferKind::Feature,
     {5, 0, 0, 0x4F, 0xDB, 0x06}},
    {"alpha 2 numeric", PELM_MODEL_ALPHA2, [] { return PelmAlpha2_SetNumeric(0, "123456789"); },
     TransferKind::Feature, {5, 0x7D, 0x6D, 0x66, 0x4F, 0x5B, 0x06}},
    {"buttons lamps", PELM_MODEL_BUTTONS, [] { return PelmButtons_SetIndicators(0, 0x1A5); }, TransferKind::Feature,
     {2, 0xA5}},
    {"toggles brightness", PELM_MODEL_TOGGLES, [] { return PelmToggles_SetBrightness(0, 0x1F); },
     TransferKind::Feature, {3, 0x0F}},
    {"knobs lamps", PELM_MODEL_KNOBS, [] { return PelmKnobs_SetIndicators(0, 0x5C); }, TransferKind::Feature,
     {2, 0x5C}},
    {"gear lamps keep the always-lit two", PELM_MODEL_GEAR, [] { return PelmGear_SetIndicators(0, 0x1F0); },
     TransferKind::Feature, {2, 0xF3}},
    {"gear 2 brightness", PELM_MODEL_GEAR2, [] { return PelmGear2_SetBrightness(0, 0x1F); }, TransferKind::Feature,
     {3, 0x0F}},
    {"keypad lamps", PELM_MODEL_KEYPAD, [] { return PelmKeypad_SetIndicators(0, 0x142); }, TransferKind::Output,
     {2, 0x42}},
    {"warning colour", PELM_MODEL_WARNING, [] { return PelmWarning_SetIndColor(0, 4, 10, 20, 0x11E); },
     TransferKind::Output, {2, 4, 10, 20, 30}},
    {"i/o board outputs", PELM_MODEL_IOBOARD, [] { return PelmIoBoard_SetIndicators(0, 1, 2, 3, 0x104); },
     TransferKind::Output, {2, 1, 2, 3, 4, 0, 0, 0}},
    {"radio text", PELM_MODEL_RADIO, [] { return PelmRadio_SetLDisplayText(0, "123.45"); }, TransferKind::Feature,
     {3, 0x06, 0x5B, 0xCF, 0x66, 0x6D, 0}},
    {"radio lamps", PELM_MODEL_RADIO, [] { return PelmRadio_SetIndicators_stdcall(0, 0x1A5); },
     TransferKind::Feature, {7, 0xA5}},
    {"squawk brightness", PELM_MODEL_SQUAWK, [] { return PelmSquawk_SetBrightness_stdcall(0, 0x1F); },
     TransferKind::Feature, {4, 0x0F}},
    {"autopilot text", PELM_MODEL_AUTOPILOT, [] { return PelmAutopilot_SetDDisplayText(0, "1234567"); },
     TransferKind::Feature, {9, 6, 0x5B, 0x4F, 0x66, 0x6D, 0x7D}},
    {"autopilot 2 lamps", PELM_MODEL_AUTOPILOT2, [] { return PelmAutopilot2_SetIndicators(0, 0x01020304); },
     TransferKind::Feature, {15, 1, 2, 3, 4}},
};

TEST_F(VmTest, SettersReachTheDeviceByteForByte) {
  AddEveryModel();
  WaitForNodes();
  PelmDev_Init(nullptr);
  for (const SetterCase& setter : kSetterCases) {
    SCOPED_TRACE(setter.name);
    ASSERT_EQ(setter.call(), PELM_SUCCESS);
    const bool arrived = PanelOf(setter.typeCode).WaitForReceived([&setter](const std::vector<Transfer>& received) {
      return std::any_of(received.begin(), received.end(), [&setter](const Transfer& transfer) {
        return transfer.kind == setter.kind && transfer.bytes == setter.expected && transfer.accepted;
      });
    });
    EXPECT_TRUE(arrived);
  }
}

TEST_F(VmTest, InputReachesTheCallbackOfEveryModel) {
  AddEveryModel();
  WaitForNodes();
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmDev_RegisterInputCallback(OnInput), 1u);
  for (const ModelUnderTest& model : kModels) {
    SCOPED_TRACE(model.typeCode);
    Report report(kInputReportLength, 0);
    report[0] = kInputReportId;
    for (std::size_t i = 1; i < report.size(); ++i) report[i] = static_cast<uint8_t>(0x11 * i);
    ASSERT_TRUE(PanelOf(model.typeCode).InjectInput(report));
    EXPECT_TRUE(WaitUntil([&model] {
      const std::vector<int32_t> models = Snapshot(inputModels);
      return std::find(models.begin(), models.end(), model.typeCode) != models.end();
    }));
  }
}

struct GetterCase {
  int32_t typeCode;
  Report input;
  // True once the getter gives what the input says.
  bool (*shows)();
};

const GetterCase kGetterCases[] = {
    {PELM_MODEL_RADIO, {kInputReportId, 0xFF, 0x02, 0x05, 0, 0, 0, 0},
     [] {
       int16_t dial1 = 0, dial2 = 0;
       uint8_t switches = 0;
       return PelmRadio_GetControlVals(0, &dial1, &dial2, &switches) == PELM_SUCCESS && dial1 == -1 && dial2 == 2 &&
              switches == 0x05;
     }},
    {PELM_MODEL_SQUAWK, {kInputReportId, 0xFD, 0x81, 0, 0, 0, 0, 0},
     [] {
       int16_t dial = 0;
       uint8_t switches = 0;
       return PelmSquawk_GetControlVals(0, &dial, &switches) == PELM_SUCCESS && dial == -3 && switches == 0x81;
     }},
    {PELM_MODEL_GEAR, {kInputReportId, 0xFE, 0x40, 0, 0, 0, 0, 0},
     [] {
       int16_t value = 0;
       uint8_t control = 0;
       return PelmGear_GetControlVals(0, &value, &control) == PELM_SUCCESS && value == -2 && control == 0x40;
     }},
};

TEST_F(VmTest, InputReachesTheGetters) {
  for (const GetterCase& getter : kGetterCases) Add(Model(getter.typeCode).productId, getter.typeCode);
  WaitForNodes();
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < std::size(kGetterCases); ++i) {
    SCOPED_TRACE(kGetterCases[i].typeCode);
    ASSERT_TRUE(panels_[i]->InjectInput(kGetterCases[i].input));
    EXPECT_TRUE(WaitUntil(kGetterCases[i].shows));
  }
}

TEST_F(VmTest, FeatureGettersAskTheDeviceAndReportItsFailure) {
  UhidPanel& knobs = Add(0x0028, 1);
  WaitForNodes();
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmKnobs_SetIndicators(0, 0x5C), PELM_SUCCESS);
  ASSERT_TRUE(knobs.WaitForReceived([](const std::vector<Transfer>& received) { return !received.empty(); }));
  uint8_t lamps = 0;
  ASSERT_EQ(PelmKnobs_GetIndicators(0, &lamps), PELM_SUCCESS);
  EXPECT_EQ(lamps, 0x5C);
  knobs.FailFeatureReads(true);
  EXPECT_EQ(PelmKnobs_GetIndicators(0, &lamps), PELM_ERR_IO);
}

// Sends `first` while the device refuses `refusals` sends, then `second`, and
// returns what the device received, refused or taken.
std::vector<Transfer> SendThroughRefusals(UhidPanel& panel, int refusals, int32_t (*first)(), int32_t (*second)(),
                                          std::size_t expectedTransfers) {
  panel.ClearReceived();
  panel.FailNextSends(refusals);
  EXPECT_EQ(first(), PELM_SUCCESS);
  EXPECT_TRUE(panel.WaitForReceived([refusals](const std::vector<Transfer>& received) {
    return received.size() >= static_cast<std::size_t>(refusals);
  }));
  EXPECT_EQ(second(), PELM_SUCCESS);
  EXPECT_TRUE(panel.WaitForReceived(
      [expectedTransfers](const std::vector<Transfer>& received) { return received.size() >= expectedTransfers; }));
  return panel.Received();
}

Transfer Refused(Report bytes) { return {TransferKind::Feature, std::move(bytes), false}; }
Transfer Taken(Report bytes) { return {TransferKind::Feature, std::move(bytes), true}; }

TEST_F(VmTest, WritersDropRetryOrGiveUpAfterThreeAsTheirModelSays) {
  UhidPanel& buttons = Add(0x0020, 1);
  UhidPanel& gear = Add(0x0040, 2);
  UhidPanel& radio = Add(0x0050, 3);
  WaitForNodes();
  PelmDev_Init(nullptr);

  // Buttons: a refused report is dropped.
  EXPECT_EQ(SendThroughRefusals(
                buttons, 1, [] { return PelmButtons_SetIndicators(0, 1); },
                [] { return PelmButtons_SetIndicators(0, 2); }, 2),
            (std::vector<Transfer>{Refused({2, 1}), Taken({2, 2})}));
  // Gear: retried until the device takes it.
  EXPECT_EQ(SendThroughRefusals(
                gear, 2, [] { return PelmGear_SetBrightness(0, 1); }, [] { return PelmGear_SetBrightness(0, 2); }, 4),
            (std::vector<Transfer>{Refused({3, 1}), Refused({3, 1}), Taken({3, 1}), Taken({3, 2})}));
  // Radio: retried, but three refusals in a row drop it.
  EXPECT_EQ(SendThroughRefusals(
                radio, 3, [] { return PelmRadio_SetIndicators(0, 1); }, [] { return PelmRadio_SetIndicators(0, 2); },
                4),
            (std::vector<Transfer>{Refused({7, 1}), Refused({7, 1}), Refused({7, 1}), Taken({7, 2})}));
  EXPECT_EQ(SendThroughRefusals(
                radio, 2, [] { return PelmRadio_SetIndicators(0, 3); }, [] { return PelmRadio_SetIndicators(0, 4); },
                4),
            (std::vector<Transfer>{Refused({7, 3}), Refused({7, 3}), Taken({7, 3}), Taken({7, 4})}));
}

TEST_F(VmTest, HotPlugKeepsAReturningPanelsSlotAndGivesANewPanelTheNextFreeOne) {
  static int instance;
  PelmDev_Init(&instance);
  ASSERT_GE(PelmDevExt_EventDescriptor(), 0);
  ASSERT_EQ(PelmDev_RegisterConnectCallback(OnConnect), 1u);
  // Plugged one at a time after Init, so that each arrival is heard once.
  UhidPanel& first = Add(0x0020, 1);
  ASSERT_TRUE(PumpUntilConnectEvents(1));
  Add(0x0020, 2);
  ASSERT_TRUE(PumpUntilConnectEvents(2));
  ASSERT_EQ(PelmButtons_GetNumDevices(), 2u);

  first.Unplug();
  ASSERT_TRUE(PumpUntilConnectEvents(3));
  first.Replug();
  ASSERT_TRUE(PumpUntilConnectEvents(4));
  Add(0x0020, 3);
  ASSERT_TRUE(PumpUntilConnectEvents(5));
  EXPECT_EQ(Snapshot(connectEvents), (std::vector<Event>{{PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL},
                                                         {PELM_MODEL_BUTTONS, 1, PELM_EVENT_ARRIVAL},
                                                         {PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL},
                                                         {PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL},
                                                         {PELM_MODEL_BUTTONS, 2, PELM_EVENT_ARRIVAL}}));
  EXPECT_EQ(PelmButtons_GetNumDevices(), 3u);
  for (int port = 1; port <= 3; ++port) {
    PelmDevInfo info{};
    ASSERT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_BUTTONS, port - 1, &info), PELM_SUCCESS);
    EXPECT_EQ(info.devicePath, ExpectedPath(PELM_VENDOR_ID, 0x0020, port));
  }
  // The returning panel is driven again.
  first.ClearReceived();
  ASSERT_EQ(PelmButtons_SetIndicators(0, 0x33), PELM_SUCCESS);
  EXPECT_TRUE(first.WaitForReceived([](const std::vector<Transfer>& received) {
    return !received.empty() && received.back().bytes == Report{2, 0x33};
  }));
}

TEST_F(VmTest, TerminateReturnsPromptlyWhileEveryReaderWaitsAndClosesEveryNode) {
  AddEveryModel();
  WaitForNodes();
  PelmDev_Init(nullptr);
  const auto start = std::chrono::steady_clock::now();
  auto terminated = std::async(std::launch::async, [] { return PelmDev_Terminate(); });
  ASSERT_EQ(terminated.wait_for(std::chrono::seconds(30)), std::future_status::ready) << "Terminate hangs";
  const auto took = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start);
  std::printf("Terminate with %zu panels reading took %lld ms\n", panels_.size(),
              static_cast<long long>(took.count()));
  EXPECT_TRUE(WaitUntil([this] {
    return std::none_of(panels_.begin(), panels_.end(), [](const auto& panel) { return panel->IsOpen(); });
  })) << "a hidraw node left open";
}

}  // namespace
}  // namespace pelm::vm
