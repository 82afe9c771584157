// What the six display models share but each wires up its own way: slot counts,
// which operations a disconnected panel still accepts, the writer variant, the
// queue limit, the feature-report getters and the serial number.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <string>

#include "models/display_test_support.h"

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

const char kText[] = "1";
const uint8_t kSegments[6] = {};
const uint16_t kGlyphs[4] = {};

using Operation = std::function<int32_t(int32_t index)>;

class DisplayModelsTest : public DisplayTest {};

TEST_F(DisplayModelsTest, IndicesOutsideTheSlotTableAndEmptySlotsAreRefused) {
  const std::vector<std::tuple<const char*, int32_t, Operation>> cases = {
      {"PelmRadio", 16, [](int32_t i) { return PelmRadio_SetLDisplayText(i, kText); }},
      {"PelmAlpha", 16, [](int32_t i) { return PelmAlpha_GetDialVals_stdcall(i, nullptr, nullptr); }},
      {"PelmAlpha2", 16, [](int32_t i) { return PelmAlpha2_SetAlphaSegments(i, kGlyphs); }},
      {"PelmSquawk", 8, [](int32_t i) { return PelmSquawk_SetDigitSegments_stdcall(i, kSegments); }},
      {"PelmAutopilot", 4, [](int32_t i) { return PelmAutopilot_SetIndicators(i, 1); }},
      {"PelmAutopilot2", 4, [](int32_t i) { return PelmAutopilot2_GetIndicators_stdcall(i, nullptr); }},
  };
  PelmDev_Init(nullptr);
  for (const auto& [family, slotCount, operation] : cases) {
    EXPECT_EQ(operation(-1), PELM_ERR_INDEX) << family;
    EXPECT_EQ(operation(slotCount), PELM_ERR_INDEX) << family;
    EXPECT_EQ(operation(slotCount - 1), PELM_ERR_NODEVICE) << family;
  }
}

struct DisconnectedModel {
  uint16_t productId;
  std::vector<Operation> silent;   // PELM_SUCCESS and nothing sent
  std::vector<Operation> refused;  // PELM_ERR_NODEVICE
  // A setter and its report: the only report after the panel is back shows
  // that nothing was queued while it was away.
  Operation marker;
  Report markerReport;
};

TEST_F(DisplayModelsTest, DisconnectedPanelsRefuseAllButTheirSilentSetters) {
  const std::vector<DisconnectedModel> models = {
      {kRadioId,
       {[](int32_t i) { return PelmRadio_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmRadio_SetLDisplayText(i, kText); },
        [](int32_t i) { return PelmRadio_GetControlVals(i, nullptr, nullptr, nullptr); },
        [](int32_t i) { uint8_t v; return PelmRadio_GetIndicators(i, &v); }},
       [](int32_t i) { return PelmRadio_SetIndicators(i, 0x42); }, {7, 0x42}},
      {kAlphaId,
       {[](int32_t i) { return PelmAlpha_SetBrightness(i, 1); },
        [](int32_t i) { return PelmAlpha_SetNumericSegments(i, kSegments); }},
       {[](int32_t i) { return PelmAlpha_SetAlphaSegments(i, kGlyphs); },
        [](int32_t i) { return PelmAlpha_SetNumeric(i, kText); },
        [](int32_t i) { return PelmAlpha_GetDialVals(i, nullptr, nullptr); }},
       [](int32_t i) { return PelmAlpha_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {kAlpha2Id,
       {[](int32_t i) { return PelmAlpha2_SetBrightness(i, 1); },
        [](int32_t i) { return PelmAlpha2_SetNumericSegments(i, kSegments); }},
       {[](int32_t i) { return PelmAlpha2_SetAlpha(i, kText); },
        [](int32_t i) { uint16_t v; return PelmAlpha2_GetBrightness(i, &v); }},
       [](int32_t i) { return PelmAlpha2_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {kSquawkId,
       {[](int32_t i) { return PelmSquawk_SetBrightness(i, 1); },
        [](int32_t i) { return PelmSquawk_SetDigitSegments(i, kSegments); }},
       {[](int32_t i) { return PelmSquawk_SetDigit(i, kText); },
        [](int32_t i) { return PelmSquawk_GetControlVals(i, nullptr, nullptr); }},
       [](int32_t i) { return PelmSquawk_SetDigit(i, "8"); }, {3, 0x7F}},
      {kAutopilotId,
       {[](int32_t i) { return PelmAutopilot_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmAutopilot_SetADisplaySegments(i, kSegments); },
        [](int32_t i) { uint16_t v; return PelmAutopilot_GetBrightness(i, &v); }},
       [](int32_t i) { return PelmAutopilot_SetIndicators(i, 0x42); }, {13, 0x42}},
      {kAutopilot2Id,
       {[](int32_t i) { return PelmAutopilot2_SetBrightness(i, 1); }},
       {[](int32_t i) { return PelmAutopilot2_SetIndicators(i, 1); },
        [](int32_t i) { return PelmAutopilot2_SetFDisplayText(i, kText); },
        [](int32_t i) { uint32_t v; return PelmAutopilot2_GetIndicators(i, &v); }},
       [](int32_t i) { return PelmAutopilot2_SetIndicators(i, 0x42); }, {15, 0, 0, 0, 0x42}},
  };
  std::vector<std::shared_ptr<sim::SimDevice>> devices;
  for (const auto& model : models) devices.push_back(Plug(model.productId, 1));
  PelmDev_Init(kHostInstance);
  for (std::size_t m = 0; m < models.size(); ++m) {
    const DisconnectedModel& model = models[m];
    sim::SimDevice& device = *devices[m];
    SCOPED_TRACE(device.Description().path);
    Disconnect(device);
    for (const Operation& operation : model.silent) EXPECT_EQ(operation(0), PELM_SUCCESS);
    for (const Operation& operation : model.refused) EXPECT_EQ(operation(0), PELM_ERR_NODEVICE);
    device.ClearLog();
    Reconnect(device);
    ASSERT_EQ(model.marker(0), PELM_SUCCESS);
    ASSERT_TRUE(device.WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return std::any_of(log.begin(), log.end(), [&](const sim::LogEntry& e) { return e.bytes == model.markerReport; });
    }));
    EXPECT_EQ(SentReports(device, LogOp::SetFeature), std::vector<Report>{model.markerReport});
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

TEST_F(DisplayModelsTest, EachModelSendsThroughItsOwnWriterVariant) {
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

TEST_F(DisplayModelsTest, ASetterIsRefusedOnceTwentyFiveReportsWait) {
  constexpr int kCalls = 30;
  const std::vector<std::pair<uint16_t, std::function<int32_t()>>> cases = {
      {kRadioId, [] { return PelmRadio_SetLDisplayText(0, kText); }},
      {kAlphaId, [] { return PelmAlpha_SetNumericSegments(0, kSegments); }},
      {kAlpha2Id, [] { return PelmAlpha2_SetAlphaSegments(0, kGlyphs); }},
      {kSquawkId, [] { return PelmSquawk_SetDigit(0, kText); }},
      {kAutopilotId, [] { return PelmAutopilot_SetDDisplayText(0, kText); }},
      {kAutopilot2Id, [] { return PelmAutopilot2_SetIndicators(0, 7); }},
  };
  for (const auto& [productId, setter] : cases) {
    auto device = PlugAndInit(productId);
    SCOPED_TRACE(device->Description().path);
    device->SetOperationDelay(200ms);  // holds the writer in its first send
    std::vector<int32_t> statuses;
    for (int call = 0; call < kCalls; ++call) statuses.push_back(setter());
    // The writer may or may not have taken the first report off the queue yet.
    const auto accepted = static_cast<std::size_t>(std::count(statuses.begin(), statuses.end(), PELM_SUCCESS));
    EXPECT_TRUE(accepted == 25 || accepted == 26) << accepted;
    EXPECT_TRUE(std::all_of(statuses.begin() + accepted, statuses.end(),
                            [](int32_t status) { return status == PELM_ERR_QUEUE; }));
    device->SetOperationDelay(0ms);
    EXPECT_EQ(WaitForSent(*device, accepted).size(), accepted);
    PelmDev_Terminate();
    EXPECT_EQ(device->CountOf(LogOp::SetFeature), accepted);  // the refused ones were never sent
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

TEST_F(DisplayModelsTest, FeatureGettersReadBackWhatWasSetAndReportFailures) {
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

TEST_F(DisplayModelsTest, OnlyTheRadioAndTheSecondAutopilotPanelReadTheirSerialNumber) {
  for (const auto& [productId, typeCode, serial] : std::vector<std::tuple<uint16_t, int32_t, std::string>>{
           {kRadioId, PELM_MODEL_RADIO, "AB12"}, {kAutopilot2Id, PELM_MODEL_AUTOPILOT2, "AB12"},
           {kAutopilotId, PELM_MODEL_AUTOPILOT, ""}, {kSquawkId, PELM_MODEL_SQUAWK, ""}}) {
    sim::DeviceDescription description = PanelDescription(productId, 1);
    description.serialNumber = u"AB12";
    bus().Plug(description);
    PelmDev_Init(nullptr);
    PelmDevInfo2 info{};
    info.structSize = sizeof info;
    ASSERT_EQ(PelmDev_GetDeviceInfo2(typeCode, 0, &info), PELM_SUCCESS);
    EXPECT_EQ(std::string(info.serialNumber), serial) << description.path;
  }
}

}  // namespace
}  // namespace pelm::test
