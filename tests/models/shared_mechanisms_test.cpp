// What the models share but each wires up its own way: input reports handed to
// the host as records, the two-byte setters, which operations a panel that has
// gone still accepts, the writer variant and the feature-report getters.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <map>
#include <string>

#include "models/model_test.h"
#include "platform/sim/panels/engine_ctl_panel.h"
#include "platform/sim/panels/gear2_panel.h"
#include "platform/sim/panels/gear_panel.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/keypad_panel.h"
#include "platform/sim/panels/knob_panel.h"
#include "platform/sim/panels/map_ctl_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::test {
namespace {

using namespace std::chrono_literals;
using sim::LogOp;
using sim::Report;

constexpr uint16_t kAlphaId = 0x0010;
constexpr uint16_t kAlpha2Id = 0x0018;
constexpr uint16_t kRadioId = 0x0050;
constexpr uint16_t kAutopilotId = 0x0060;
constexpr uint16_t kAutopilot2Id = 0x0064;
constexpr uint16_t kSquawkId = 0x0070;
constexpr uint16_t kButtonsId = 0x0020;
constexpr uint16_t kTogglesId = 0x0030;
constexpr uint16_t kKnobsId = 0x0028;
constexpr uint16_t kGearId = 0x0040;
constexpr uint16_t kGear2Id = 0x0048;
constexpr uint16_t kKeypadId = 0x0074;

const char kText[] = "1";
const uint8_t kSegments[6] = {};
const uint16_t kGlyphs[4] = {};

using Operation = std::function<int32_t(int32_t index)>;

class EveryModelTest : public ModelTest {
 protected:
  // Plugs two panels of each row's model and gives the second of each.
  template <class Row>
  std::vector<std::shared_ptr<sim::SimDevice>> PlugTwoOfEach(const std::vector<Row>& rows) {
    std::vector<std::shared_ptr<sim::SimDevice>> second;
    for (const Row& row : rows) {
      Plug(row.productId, 1);
      second.push_back(Plug(row.productId, 2));
    }
    return second;
  }
};

// An input report and the record the host's callback gets for it.
struct DeliveryCase {
  uint16_t productId;
  int32_t modelType;
  Report report;
  std::vector<uint8_t> record;
};

// Each model's record layout, with signed counts at both ends of their range.
// The report goes to the second panel of the model, so the call names index 1.
TEST_F(EveryModelTest, InputReportsReachTheCallbackAsTheModelsRecord) {
  const std::vector<DeliveryCase> cases = {
      {kRadioId, PELM_MODEL_RADIO, {0, 0xFF, 0x02, 0x05}, BytesOf(PelmRadioInputRecord{{-1, 2}, 0x05})},
      {kAlphaId, PELM_MODEL_ALPHA, {0, 0x80, 0x7F}, BytesOf(PelmAlphaInputRecord{{-128, 127}})},
      {kAlpha2Id, PELM_MODEL_ALPHA2, {0, 0xFE, 0x01, 0x5A}, BytesOf(PelmAlpha2InputRecord{{-2, 1}, 0x5A})},
      {kSquawkId, PELM_MODEL_SQUAWK, {0, 0xFD, 0x81}, BytesOf(PelmSquawkInputRecord{-3, 0x81})},
      {kAutopilotId, PELM_MODEL_AUTOPILOT, {0, 0xFE, 0x01, 0x00, 0x7F, 0x80, 0x12, 0x34},
       BytesOf(PelmAutopilotInputRecord{{-2, 1, 0, 127, -128}, {0x12, 0x34}})},
      // Half-byte counts: low half first.
      {kAutopilot2Id, PELM_MODEL_AUTOPILOT2, {0, 0x1F, 0x2E, 0x3D, 0x80, 0x00, 0x00, 0x01},
       BytesOf(PelmAutopilot2InputRecord{{1, 2, -1, 3, -2, -3}, 0x80000001})},
      {sim::MapCtlPanel::kProductId, PELM_MODEL_MAPCTL, {0, 0, 0, 0x80, 0x7F, 0xFF, 0xA6, 0x0F},
       BytesOf(PelmMapCtlInputRecord{{-128, 127}, 0x0F7F, 0x52})},
      {sim::EngineCtlPanel::kProductId, PELM_MODEL_ENGINECTL, {0, 0x44, 0xAA, 0x05},
       BytesOf(PelmEngineCtlInputRecord{{1, 0, 1, 0}, 0x0FFF})},
      {sim::ThrottlePanel::kProductId, PELM_MODEL_THROTTLE, {0, 0x10, 1, 0x7F, 0x80, 0xFE, 0xFF, 0x01},
       BytesOf(PelmThrottleInputRecord{{0x10, 1, 0x7F, 0x80, 0xFE, 0xFF}, 0x10})},
      {kKnobsId, PELM_MODEL_KNOBS, {0, 0x03, 0xFD, 0x00, 0x80, 0x11}, BytesOf(PelmKnobsInputRecord{{3, -3, 0, -128}, 0x11})},
      {kGearId, PELM_MODEL_GEAR, {0, 0xFE, 0x40}, BytesOf(PelmGearInputRecord{-2, 0x40})},
      {kGear2Id, PELM_MODEL_GEAR2, {0, 0xFF, 0x80, 0x7F, 0x05}, BytesOf(PelmGear2InputRecord{{-1, -128, 127}, 0x05})},
      {sim::IoBoardPanel::kProductId, PELM_MODEL_IOBOARD, {0, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77},
       BytesOf(PelmIoBoardInputRecord{{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}})},
      // Only the key; the rest of the report is not passed on.
      {kKeypadId, PELM_MODEL_KEYPAD, {0, 0x17, 0x99, 0x42, 0x07}, BytesOf(PelmKeypadInputRecord{0x17, {0, 0, 0}})},
      {sim::WarningPanel::kProductId, PELM_MODEL_WARNING, {0, 0x81}, BytesOf(PelmWarningInputRecord{0x81})},
  };
  const auto devices = PlugTwoOfEach(cases);
  PelmDev_Init(nullptr);
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(devices[i]->Description().path);
    const InputCapture capture(cases[i].record.size());
    devices[i]->InjectInput(cases[i].report);
    ASSERT_TRUE(capture.WaitForCount(1));
    const std::vector<CapturedInput> calls = capture.Calls();
    ASSERT_EQ(calls.size(), 1u);
    EXPECT_EQ(calls[0].modelType, cases[i].modelType);
    EXPECT_EQ(calls[0].deviceIndex, 1);
    EXPECT_EQ(calls[0].record, cases[i].record);
  }
}

// A setter of one value and the report it sends for kValue.
struct TwoByteSetter {
  uint16_t productId;
  std::function<int32_t(uint32_t value)> set;
  Report sent;
  LogOp op = LogOp::SetFeature;
};

// Every model's brightness and lamp-byte setters: the report ID, then the low
// byte of the value, brightness cut to four bits.
TEST_F(EveryModelTest, TwoByteSettersSendTheirReportIdAndTheLowByte) {
  constexpr uint32_t kValue = 0x1A7;
  const std::vector<TwoByteSetter> setters = {
      {kRadioId, [](uint32_t v) { return PelmRadio_SetBrightness(0, v); }, {6, 0x07}},
      {kRadioId, [](uint32_t v) { return PelmRadio_SetIndicators_stdcall(0, v); }, {7, 0xA7}},
      {kAlphaId, [](uint32_t v) { return PelmAlpha_SetBrightness(0, v); }, {6, 0x07}},
      {kAlpha2Id, [](uint32_t v) { return PelmAlpha2_SetBrightness_stdcall(0, v); }, {6, 0x07}},
      {kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetBrightness(0, v); }, {12, 0x07}},
      {kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetIndicators(0, v); }, {13, 0xA7}},
      {kAutopilot2Id, [](uint32_t v) { return PelmAutopilot2_SetBrightness(0, v); }, {14, 0x07}},
      {kSquawkId, [](uint32_t v) { return PelmSquawk_SetBrightness_stdcall(0, v); }, {4, 0x07}},
      {kButtonsId, [](uint32_t v) { return PelmButtons_SetBrightness(0, v); }, {3, 0x07}},
      {kButtonsId, [](uint32_t v) { return PelmButtons_SetIndicators(0, v); }, {2, 0xA7}},
      {kTogglesId, [](uint32_t v) { return PelmToggles_SetBrightness_stdcall(0, v); }, {3, 0x07}},
      {kTogglesId, [](uint32_t v) { return PelmToggles_SetIndicators(0, v); }, {2, 0xA7}},
      {kKnobsId, [](uint32_t v) { return PelmKnobs_SetBrightness(0, v); }, {3, 0x07}},
      {kGearId, [](uint32_t v) { return PelmGear_SetBrightness(0, v); }, {3, 0x07}},
      {kGear2Id, [](uint32_t v) { return PelmGear2_SetBrightness(0, v); }, {3, 0x07}},
      {kGear2Id, [](uint32_t v) { return PelmGear2_SetIndicators(0, v); }, {2, 0xA7}},
      {kKeypadId, [](uint32_t v) { return PelmKeypad_SetBrightness(0, v); }, {3, 0x07}, LogOp::WriteOutput},
      {kKeypadId, [](uint32_t v) { return PelmKeypad_SetIndicators(0, v); }, {2, 0xA7}, LogOp::WriteOutput},
  };
  std::map<uint16_t, std::shared_ptr<sim::SimDevice>> devices;
  for (const TwoByteSetter& setter : setters) {
    if (!devices.contains(setter.productId)) devices[setter.productId] = Plug(setter.productId, 1);
  }
  PelmDev_Init(nullptr);
  std::map<uint16_t, std::vector<Report>> expected;
  for (const TwoByteSetter& setter : setters) {
    EXPECT_EQ(setter.set(kValue), PELM_SUCCESS);
    expected[setter.productId].push_back(setter.sent);
  }
  for (const TwoByteSetter& setter : setters) {
    const std::vector<Report>& reports = expected[setter.productId];
    EXPECT_EQ(WaitForSent(*devices[setter.productId], reports.size(), setter.op), reports)
        << devices[setter.productId]->Description().path;
  }
}

// Where a value is written that no check looks at.
uint8_t scratch[7];
int16_t counts[4];

struct GoneModel {
  uint16_t productId;
  uint32_t (*devices)();
  std::vector<Operation> silent;   // PELM_SUCCESS and nothing sent
  std::vector<Operation> refused;  // PELM_ERR_NODEVICE
  // A setter and its report: the only report after the panel is back shows
  // that nothing was queued while it was away.
  Operation marker;
  Report markerReport;
  LogOp op = LogOp::SetFeature;
  std::size_t sentAtOpen = 0;
};

// Of two panels of a model the second goes: it keeps its slot, and while the
// first is served as before, the second refuses all but its silent setters.
// The I/O board's brightness is unsupported whether the board is there or not.
TEST_F(EveryModelTest, APanelThatHasGoneKeepsItsSlotAndRefusesAllButItsSilentSetters) {
  const std::vector<GoneModel> models = {
      {kRadioId, PelmRadio_GetNumDevices,
       {[](int32_t i) { return PelmRadio_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmRadio_SetLDisplayText(i, kText); },
        [](int32_t i) { return PelmRadio_GetControlVals(i, nullptr, nullptr, nullptr); },
        [](int32_t i) { uint8_t v; return PelmRadio_GetIndicators(i, &v); }},
       [](int32_t i) { return PelmRadio_SetIndicators(i, 0x42); }, {7, 0x42}},
      {kAlphaId, PelmAlpha_GetNumDevices,
       {[](int32_t i) { return PelmAlpha_SetBrightness(i, 1); },
        [](int32_t i) { return PelmAlpha_SetNumericSegments(i, kSegments); }},
       {[](int32_t i) { return PelmAlpha_SetAlphaSegments(i, kGlyphs); },
        [](int32_t i) { return PelmAlpha_SetNumeric(i, kText); },
        [](int32_t i) { return PelmAlpha_GetDialVals(i, nullptr, nullptr); }},
       [](int32_t i) { return PelmAlpha_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {kAlpha2Id, PelmAlpha2_GetNumDevices,
       {[](int32_t i) { return PelmAlpha2_SetBrightness(i, 1); },
        [](int32_t i) { return PelmAlpha2_SetNumericSegments(i, kSegments); }},
       {[](int32_t i) { return PelmAlpha2_SetAlpha(i, kText); },
        [](int32_t i) { uint16_t v; return PelmAlpha2_GetBrightness(i, &v); }},
       [](int32_t i) { return PelmAlpha2_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {kSquawkId, PelmSquawk_GetNumDevices,
       {[](int32_t i) { return PelmSquawk_SetBrightness(i, 1); },
        [](int32_t i) { return PelmSquawk_SetDigitSegments(i, kSegments); }},
       {[](int32_t i) { return PelmSquawk_SetDigit(i, kText); },
        [](int32_t i) { return PelmSquawk_GetControlVals(i, nullptr, nullptr); }},
       [](int32_t i) { return PelmSquawk_SetDigit(i, "8"); }, {3, 0x7F}},
      {kAutopilotId, PelmAutopilot_GetNumDevices,
       {[](int32_t i) { return PelmAutopilot_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmAutopilot_SetADisplaySegments(i, kSegments); },
        [](int32_t i) { uint16_t v; return PelmAutopilot_GetBrightness(i, &v); }},
       [](int32_t i) { return PelmAutopilot_SetIndicators(i, 0x42); }, {13, 0x42}},
      {kAutopilot2Id, PelmAutopilot2_GetNumDevices,
       {[](int32_t i) { return PelmAutopilot2_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmAutopilot2_SetIndicators(i, 1); },
        [](int32_t i) { return PelmAutopilot2_SetFDisplayText(i, kText); },
        [](int32_t i) { uint32_t v; return PelmAutopilot2_GetIndicators(i, &v); }},
       [](int32_t i) { return PelmAutopilot2_SetIndicators(i, 0x42); }, {15, 0, 0, 0, 0x42}},
      {kKnobsId, PelmKnobs_GetNumDevices,
       {[](int32_t i) { return PelmKnobs_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmKnobs_SetIndicators(i, 1); },
        [](int32_t i) { return PelmKnobs_GetControlVals(i, &counts[0], &counts[1], &counts[2], &counts[3], scratch); }},
       [](int32_t i) { return PelmKnobs_SetIndicators(i, 0x42); }, {2, 0x42}},
      {kGearId, PelmGear_GetNumDevices,
       {[](int32_t i) { return PelmGear_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmGear_SetIndicators(i, 1); },
        [](int32_t i) { return PelmGear_GetControlVals(i, counts, scratch); }},
       [](int32_t i) { return PelmGear_SetIndicators(i, 0x40); }, {2, 0x43}},
      {kGear2Id, PelmGear2_GetNumDevices,
       {[](int32_t i) { return PelmGear2_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmGear2_SetIndicators(i, 1); },
        [](int32_t i) { return PelmGear2_GetControlVals(i, &counts[0], &counts[1], &counts[2], scratch); }},
       [](int32_t i) { return PelmGear2_SetIndicators(i, 0x42); }, {2, 0x42}},
      {kKeypadId, PelmKeypad_GetNumDevices,
       {[](int32_t i) { return PelmKeypad_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmKeypad_SetIndicators(i, 1); },
        [](int32_t i) { uint32_t n; return PelmKeypad_GetKeycodes(i, scratch, &n); }},
       [](int32_t i) { return PelmKeypad_SetIndicators(i, 0x42); }, {2, 0x42}, LogOp::WriteOutput},
      {sim::IoBoardPanel::kProductId, PelmIoBoard_GetNumDevices,
       {},
       {[](int32_t i) { return PelmIoBoard_SetIndicators(i, 1, 1, 1, 1); },
        [](int32_t i) {
          uint8_t* s = scratch;
          return PelmIoBoard_GetSwitchVals(i, s, s + 1, s + 2, s + 3, s + 4, s + 5, s + 6);
        }},
       [](int32_t i) { return PelmIoBoard_SetIndicators(i, 1, 2, 3, 4); }, {2, 1, 2, 3, 4, 0, 0, 0},
       LogOp::WriteOutput, 1},
      // Full brightness, so that the marker's colour is the same whether the
      // level set while away is kept or not.
      {sim::WarningPanel::kProductId, PelmWarning_GetNumDevices,
       {[](int32_t i) { return PelmWarning_SetBrightness(i, 15); }},
       {[](int32_t i) { return PelmWarning_SetIndColorValue(i, 1, 1); },
        [](int32_t i) { return PelmWarning_GetControlVals(i, scratch); }},
       [](int32_t i) { return PelmWarning_SetIndColorValue(i, 2, 1); }, {2, 2, 100, 100, 100}, LogOp::WriteOutput,
       12},
  };
  const auto devices = PlugTwoOfEach(models);
  PelmDev_Init(kHostInstance);
  for (std::size_t m = 0; m < models.size(); ++m) {
    const GoneModel& model = models[m];
    sim::SimDevice& device = *devices[m];
    SCOPED_TRACE(device.Description().path);
    ASSERT_EQ(model.devices(), 2u);
    WaitForSent(device, model.sentAtOpen, model.op);
    Disconnect(device);
    EXPECT_EQ(model.devices(), 1u);
    for (const Operation& operation : model.silent) EXPECT_EQ(operation(1), PELM_SUCCESS);
    for (const Operation& operation : model.refused) {
      EXPECT_EQ(operation(1), PELM_ERR_NODEVICE);
      EXPECT_EQ(operation(0), PELM_SUCCESS);
    }
    device.ClearLog();
    Reconnect(device);
    ASSERT_EQ(model.marker(1), PELM_SUCCESS);
    ASSERT_TRUE(device.WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return std::any_of(log.begin(), log.end(), [&](const sim::LogEntry& e) { return e.bytes == model.markerReport; });
    }));
    EXPECT_EQ(SentReports(device, model.op), std::vector<Report>{model.markerReport});
  }
}

// The attempts at the device: (brightness level, succeeded).
using Attempts = std::vector<std::pair<uint8_t, bool>>;

struct WriterCase {
  uint16_t productId;
  uint16_t version;
  std::function<int32_t(uint32_t level)> setBrightness;
  LogOp op;
  platform::OpenMode mode;
  Attempts attempts;
};

TEST_F(EveryModelTest, EachModelSendsThroughItsOwnWriterVariant) {
  // Three sends fail, while levels 1 to 4 are queued.
  const Attempts dropped = {{1, false}, {2, false}, {3, false}, {4, true}};
  const Attempts retried = {{1, false}, {1, false}, {1, false}, {1, true}, {2, true}, {3, true}, {4, true}};
  const Attempts counted = {{1, false}, {1, false}, {1, false}, {2, true}, {3, true}, {4, true}};
  const auto main = platform::OpenMode::Overlapped;
  const auto own = platform::OpenMode::Synchronous;
  const std::vector<WriterCase> cases = {
      {kRadioId, 0x0100, [](uint32_t l) { return PelmRadio_SetBrightness(0, l); }, LogOp::SetFeature, own, counted},
      {kAlphaId, 0x0100, [](uint32_t l) { return PelmAlpha_SetBrightness(0, l); }, LogOp::SetFeature, main, dropped},
      {kAlpha2Id, 0x0100, [](uint32_t l) { return PelmAlpha2_SetBrightness(0, l); }, LogOp::SetFeature, own, retried},
      {kSquawkId, 0x0100, [](uint32_t l) { return PelmSquawk_SetBrightness(0, l); }, LogOp::SetFeature, own, retried},
      {kAutopilotId, 0x0100, [](uint32_t l) { return PelmAutopilot_SetBrightness(0, l); }, LogOp::SetFeature, own,
       retried},
      {kAutopilot2Id, 0x01FF, [](uint32_t l) { return PelmAutopilot2_SetBrightness(0, l); }, LogOp::SetFeature, own,
       retried},
      {kAutopilot2Id, 0x0200, [](uint32_t l) { return PelmAutopilot2_SetBrightness(0, l); }, LogOp::WriteOutput, own,
       dropped},
  };
  for (const WriterCase& c : cases) {
    auto device = PlugAndInit(c.productId, c.version);
    SCOPED_TRACE(device->Description().path);
    device->FailNextSends(3);
    for (uint32_t level = 1; level <= 4; ++level) ASSERT_EQ(c.setBrightness(level), PELM_SUCCESS);
    ASSERT_TRUE(device->WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return std::any_of(log.begin(), log.end(),
                         [&](const sim::LogEntry& e) { return e.op == c.op && e.succeeded && e.bytes[1] == 4; });
    }));
    Attempts attempts;
    for (const sim::LogEntry& entry : device->LogOf(c.op)) {
      attempts.emplace_back(entry.bytes[1], entry.succeeded);
      EXPECT_EQ(entry.mode, c.mode);
    }
    EXPECT_EQ(attempts, c.attempts);
    PelmDev_Terminate();
    bus().Reset();
  }
}

// A feature-report getter seen through a 32-bit variable, so that one table
// holds getters of every width. The variable changes only where the typed one did.
using Getter = std::function<int32_t(uint32_t* value)>;

template <class T>
Getter Widened(int32_t (*getter)(int32_t, T*)) {
  return [getter](uint32_t* value) {
    if (value == nullptr) return getter(0, nullptr);
    const T before = static_cast<T>(*value);
    T typed = before;
    const int32_t status = getter(0, &typed);
    if (typed != before) *value = typed;
    return status;
  };
}

struct GetterCase {
  uint16_t productId;
  std::function<int32_t(uint32_t value)> setter;
  Getter getter;
  uint32_t value;
};

TEST_F(EveryModelTest, FeatureGettersReadBackWhatWasSetAndReportFailures) {
  const std::vector<GetterCase> cases = {
      {kRadioId, [](uint32_t v) { return PelmRadio_SetBrightness(0, v); }, Widened(PelmRadio_GetBrightness), 9},
      {kRadioId, [](uint32_t v) { return PelmRadio_SetIndicators(0, v); }, Widened(PelmRadio_GetIndicators_stdcall),
       0xA5},
      {kAlpha2Id, [](uint32_t v) { return PelmAlpha2_SetBrightness(0, v); }, Widened(PelmAlpha2_GetBrightness), 12},
      // All 32 bits of the host's variable.
      {kSquawkId, [](uint32_t v) { return PelmSquawk_SetBrightness(0, v); }, Widened(PelmSquawk_GetBrightness), 9},
      {kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetBrightness(0, v); },
       Widened(PelmAutopilot_GetBrightness_stdcall), 3},
      {kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetIndicators(0, v); }, Widened(PelmAutopilot_GetIndicators),
       0x81},
      {kAutopilot2Id, [](uint32_t v) { return PelmAutopilot2_SetBrightness(0, v); },
       Widened(PelmAutopilot2_GetBrightness), 15},
  };
  constexpr uint32_t kUntouched = 0xFFFFFFFF;
  for (const GetterCase& c : cases) {
    auto device = PlugAndInit(c.productId);
    SCOPED_TRACE(device->Description().path);
    ASSERT_EQ(c.setter(c.value), PELM_SUCCESS);
    WaitForSent(*device, 1);
    uint32_t value = kUntouched;
    EXPECT_EQ(c.getter(&value), PELM_SUCCESS);
    EXPECT_EQ(value, c.value);
    EXPECT_EQ(c.getter(nullptr), PELM_ERR_PARAM);
    device->FailFeatureReads(true);
    value = kUntouched;
    EXPECT_EQ(c.getter(&value), PELM_ERR_IO);
    EXPECT_EQ(value, kUntouched);
    PelmDev_Terminate();
    bus().Reset();
  }
}

}  // namespace
}  // namespace pelm::test
