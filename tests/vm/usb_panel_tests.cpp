// The Linux backend on the real kernel: panels that are USB devices, gadgets
// on dummy_hcd's emulated controllers driven by the kernel's own USB HID
// driver, reached through libpelmdev.so's public API. Beyond what uhid panels
// show, they give the version number from the USB device, the USB form of the
// physical path, and a device refusing an output report. Hot-plug here comes
// from the kernel's own uevents (no udevd runs in this VM).

#include <gtest/gtest.h>

#include <atomic>
#include <cctype>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "platform/sim/panel.h"
#include "testbed/panel_report_descriptor.h"
#include "testbed/usb/gadget_panel.h"
#include "testbed/uhid/uhid_cockpit.h"
#include "testbed/wait_until.h"
#include "tests/models_under_test.h"

namespace pelm::vm {
namespace {

using test::kModels;
using test::Model;
using test::ModelUnderTest;
using testbed::WaitUntil;

// bcdDevice holds binary-coded decimal digits: the gadget refuses anything else.
constexpr uint16_t kFirstVersion = 0x0100;
constexpr uint16_t kPaddedOutputVersion = 0x0200;
constexpr uint16_t kFeatureReportVersion = 0x0199;
constexpr uint8_t kAutopilot2Brightness = 0x0E;
constexpr uint8_t kPad = 0xDD;
constexpr uint8_t kInputReportId = 1;
constexpr uint16_t kForeignVendorId = 0x1234;

// "HIDRAW:VVVV:PPPP:" and the physical path, upper case.
std::string DevicePathFor(uint16_t productId, const std::string& phys) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "HIDRAW:%04X:%04X:", PELM_VENDOR_ID, productId);
  std::string path = prefix + phys;
  for (char& c : path) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return path;
}

// One bit per model type code that an input callback named.
std::atomic<uint32_t> modelsWithInput;
void OnInput(int32_t modelType, int32_t, void*) { modelsWithInput |= 1u << modelType; }
bool InputSeenFrom(int32_t modelType) { return (modelsWithInput.load() >> modelType & 1u) != 0; }

std::atomic<int> connectEvents;
std::atomic<int32_t> lastConnectEvent;
void OnConnect(int32_t, int32_t, int32_t event) {
  lastConnectEvent = event;
  ++connectEvents;
}

// A distinct version number for the i-th panel (i below 100).
uint16_t VersionFor(std::size_t i) { return static_cast<uint16_t>(kFirstVersion | (i / 10) << 4 | i % 10); }

class UsbPanelTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_TRUE(WaitUntil([] { return HidrawNodeCount() == 0; })) << "hidraw nodes left from an earlier test";
    modelsWithInput = 0;
    connectEvents = 0;
  }
  void TearDown() override {
    PelmDev_Terminate();
    panels_.clear();
  }

  GadgetPanel& Add(uint16_t productId, uint16_t version, std::string serial = {},
                   uint16_t vendorId = PELM_VENDOR_ID) {
    panels_.push_back(std::make_unique<GadgetPanel>(UsbIdentity{vendorId, productId, version, std::move(serial)},
                                                    sim::MakePanel(productId)));
    return *panels_.back();
  }
  void WaitForNodes() {
    ASSERT_TRUE(WaitUntil([this] { return HidrawNodeCount() == panels_.size(); }))
        << HidrawNodeCount() << " of " << panels_.size() << " hidraw nodes";
  }
  // What the library tells of a slot; all zero when it fails.
  static PelmDevInfo2 InfoOf(int32_t typeCode, int32_t slot) {
    PelmDevInfo2 info{};
    info.structSize = sizeof info;
    if (PelmDev_GetDeviceInfo2(typeCode, slot, &info) != PELM_SUCCESS) info = {};
    return info;
  }
  // The slot the library gave the panel of `typeCode` with this version number.
  static int32_t SlotWithVersion(int32_t typeCode, uint16_t version) {
    for (int32_t slot = 0; slot < static_cast<int32_t>(Model(typeCode).count()); ++slot) {
      if (InfoOf(typeCode, slot).versionNumber == version) return slot;
    }
    return -1;
  }

  std::vector<std::unique_ptr<GadgetPanel>> panels_;
};

// A foreign device with the radio's product ID sits beside the panels: the
// radio's count of one says the library skipped it.
TEST_F(UsbPanelTest, EveryModelHasItsUsbVersionPathAndSerialAndReportsInputFromItsInterruptEndpoint) {
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    Add(kModels[i].productId, VersionFor(i), SerialFor(static_cast<int>(i)));
  }
  Add(Model(PELM_MODEL_RADIO).productId, kFirstVersion, {}, kForeignVendorId);
  WaitForNodes();
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    const ModelUnderTest& model = kModels[i];
    SCOPED_TRACE(model.typeCode);
    EXPECT_EQ(model.count(), 1u);
    const PelmDevInfo2 info = InfoOf(model.typeCode, 0);
    EXPECT_EQ(info.devicePath, DevicePathFor(model.productId, panels_[i]->PhysicalPath()));
    EXPECT_EQ(info.versionNumber, VersionFor(i));
    EXPECT_EQ(info.serialNumber, model.readsSerial ? SerialFor(static_cast<int>(i)) : std::string());
  }
  ASSERT_EQ(PelmDev_RegisterInputCallback(OnInput), 1u);
  for (std::size_t i = 0; i < std::size(kModels); ++i) {
    SCOPED_TRACE(kModels[i].typeCode);
    Report report(kDefaultReportLength, 0);
    report[0] = kInputReportId;
    for (std::size_t b = 1; b < report.size(); ++b) report[b] = static_cast<uint8_t>(0x11 * b);
    ASSERT_TRUE(panels_[i]->InjectInput(report));
    EXPECT_TRUE(WaitUntil([&] { return InputSeenFrom(kModels[i].typeCode); }));
  }
  // The bytes after the report ID are the radio's dials and switches: the ID
  // is not taken for payload.
  int16_t dial1 = 0, dial2 = 0;
  uint8_t switches = 0;
  ASSERT_EQ(PelmRadio_GetControlVals(0, &dial1, &dial2, &switches), PELM_SUCCESS);
  EXPECT_EQ(std::make_tuple(dial1, dial2, switches), std::make_tuple(int16_t{0x11}, int16_t{0x22}, uint8_t{0x33}));
}

// The kernel reads bcdDevice again for the new USB device on the same port;
// the library must know it for the panel that left and give it its slot back.
TEST_F(UsbPanelTest, ARepluggedUsbPanelReturnsToItsSlotWithItsPathAndVersion) {
  static int instance;
  PelmDev_Init(&instance);
  ASSERT_GE(PelmDevExt_EventDescriptor(), 0);
  ASSERT_EQ(PelmDev_RegisterConnectCallback(OnConnect), 1u);
  auto pumpUntilEvents = [](int count) {
    return WaitUntil([count] {
      PelmDevExt_DispatchEvents();
      return connectEvents.load() >= count;
    });
  };
  GadgetPanel& panel = Add(Model(PELM_MODEL_RADIO).productId, kPaddedOutputVersion, SerialFor(1));
  ASSERT_TRUE(pumpUntilEvents(1));
  panel.Unplug();
  ASSERT_TRUE(pumpUntilEvents(2));
  EXPECT_EQ(lastConnectEvent.load(), PELM_EVENT_REMOVAL);
  panel.Replug();
  ASSERT_TRUE(pumpUntilEvents(3));
  EXPECT_EQ(lastConnectEvent.load(), PELM_EVENT_ARRIVAL);
  EXPECT_EQ(PelmRadio_GetNumDevices(), 1u);
  const PelmDevInfo2 info = InfoOf(PELM_MODEL_RADIO, 0);
  EXPECT_EQ(info.devicePath, DevicePathFor(panel.Identity().productId, panel.PhysicalPath()));
  EXPECT_EQ(info.versionNumber, kPaddedOutputVersion);
  EXPECT_EQ(info.serialNumber, SerialFor(1));
}

TEST_F(UsbPanelTest, AFeatureReadFailsWhenThePanelRefusesItOrAnswersShort) {
  GadgetPanel& knobs = Add(Model(PELM_MODEL_KNOBS).productId, kFirstVersion);
  WaitForNodes();
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmKnobs_SetIndicators(0, 0x5C), PELM_SUCCESS);
  ASSERT_TRUE(knobs.WaitForReceived([](const std::vector<Transfer>& received) { return !received.empty(); }));
  const struct {
    FeatureReads how;
    int32_t status;
  } kAnswers[] = {{FeatureReads::Answered, PELM_SUCCESS}, {FeatureReads::IdOnly, PELM_ERR_IO},
                  {FeatureReads::Refused, PELM_ERR_IO}};
  for (const auto& answer : kAnswers) {
    SCOPED_TRACE(static_cast<int>(answer.how));
    knobs.AnswerFeatureReads(answer.how);
    uint8_t lamps = 0;
    EXPECT_EQ(PelmKnobs_GetIndicators(0, &lamps), answer.status);
    if (answer.status == PELM_SUCCESS) {
      EXPECT_EQ(lamps, 0x5C);
    }
  }
}

// Two sends while the panel refuses the first, and everything it then received:
// refused sends carry only their report ID.
struct RefusalCase {
  const char* name;
  int32_t typeCode;
  uint16_t version;
  int refusals;
  int32_t (*first)(int32_t slot);
  int32_t (*second)(int32_t slot);
  std::vector<Transfer> expected;
};

Transfer Refused(TransferKind kind, uint8_t reportId) { return {kind, {reportId}, false}; }
Transfer Taken(TransferKind kind, Report bytes) { return {kind, std::move(bytes), true}; }
constexpr TransferKind kFeature = TransferKind::Feature;
constexpr TransferKind kOutput = TransferKind::Output;

const RefusalCase kRefusalCases[] = {
    {"autopilot 2 below 0x0200: feature reports, a refused one retried", PELM_MODEL_AUTOPILOT2,
     kFeatureReportVersion, 1, [](int32_t slot) { return PelmAutopilot2_SetBrightness(slot, 5); },
     [](int32_t slot) { return PelmAutopilot2_SetBrightness(slot, 6); },
     {Refused(kFeature, kAutopilot2Brightness), Taken(kFeature, {kAutopilot2Brightness, 5}),
      Taken(kFeature, {kAutopilot2Brightness, 6})}},
    {"autopilot 2 from 0x0200: padded output reports, a refused one discarded", PELM_MODEL_AUTOPILOT2,
     kPaddedOutputVersion, 1, [](int32_t slot) { return PelmAutopilot2_SetBrightness(slot, 5); },
     [](int32_t slot) { return PelmAutopilot2_SetBrightness(slot, 6); },
     {Refused(kOutput, kAutopilot2Brightness),
      Taken(kOutput, {kAutopilot2Brightness, 6, kPad, kPad, kPad, kPad, kPad, kPad})}},
    {"output reports retried (keypad)", PELM_MODEL_KEYPAD, kFirstVersion, 2,
     [](int32_t slot) { return PelmKeypad_SetIndicators(slot, 0x142); },
     [](int32_t slot) { return PelmKeypad_SetBrightness(slot, 0xFF); },
     {Refused(kOutput, 2), Refused(kOutput, 2), Taken(kOutput, {2, 0x42}), Taken(kOutput, {3, 0x0F})}},
};

TEST_F(UsbPanelTest, RefusedReportsAreRetriedOrDiscardedAsEachWriterSays) {
  for (const RefusalCase& refusal : kRefusalCases) Add(Model(refusal.typeCode).productId, refusal.version);
  WaitForNodes();
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < std::size(kRefusalCases); ++i) {
    const RefusalCase& refusal = kRefusalCases[i];
    SCOPED_TRACE(refusal.name);
    GadgetPanel& panel = *panels_[i];
    const int32_t slot = SlotWithVersion(refusal.typeCode, refusal.version);
    ASSERT_GE(slot, 0);
    panel.ClearReceived();
    panel.FailNextSends(refusal.refusals);
    ASSERT_EQ(refusal.first(slot), PELM_SUCCESS);
    ASSERT_EQ(refusal.second(slot), PELM_SUCCESS);
    EXPECT_TRUE(panel.WaitForReceived([&refusal](const std::vector<Transfer>& received) {
      return received.size() >= refusal.expected.size();
    }));
    EXPECT_EQ(panel.Received(), refusal.expected);
  }
}

}  // namespace
}  // namespace pelm::vm
