// What the six display models share but each wires up its own way: slot counts,
// which operations a disconnected panel still accepts, the writer variant, the
// queue limit and the feature-report getters.

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

struct IndexCase {
  std::string family;
  int32_t slotCount;
  Operation operation;
};

TEST(DisplayModelIndexTest, IndicesOutsideTheSlotTableAndEmptySlotsAreRefused) {
  const std::vector<IndexCase> cases = {
      {"PelmRadio", 16, [](int32_t i) { return PelmRadio_SetLDisplayText(i, kText); }},
      {"PelmRadio_stdcall", 16, [](int32_t i) { return PelmRadio_GetControlVals_stdcall(i, nullptr, nullptr, nullptr); }},
      {"PelmAlpha", 16, [](int32_t i) { return PelmAlpha_GetDialVals(i, nullptr, nullptr); }},
      {"PelmAlpha_stdcall", 16, [](int32_t i) { return PelmAlpha_SetAlphaSegments_stdcall(i, kGlyphs); }},
      {"PelmAlpha2", 16, [](int32_t i) { return PelmAlpha2_SetNumeric(i, kText); }},
      {"PelmAlpha2_stdcall", 16, [](int32_t i) { return PelmAlpha2_SetBrightness_stdcall(i, 1); }},
      {"PelmSquawk", 8, [](int32_t i) { return PelmSquawk_SetDigit(i, kText); }},
      {"PelmSquawk_stdcall", 8, [](int32_t i) { return PelmSquawk_SetDigitSegments_stdcall(i, kSegments); }},
      {"PelmAutopilot", 4, [](int32_t i) { return PelmAutopilot_SetEDisplayText(i, kText); }},
      {"PelmAutopilot_stdcall", 4, [](int32_t i) { return PelmAutopilot_SetIndicators_stdcall(i, 1); }},
      {"PelmAutopilot2", 4, [](int32_t i) { return PelmAutopilot2_SetFDisplaySegments(i, kSegments); }},
      {"PelmAutopilot2_stdcall", 4, [](int32_t i) { return PelmAutopilot2_GetIndicators_stdcall(i, nullptr); }},
  };
  PelmDev_Init(nullptr);
  for (const IndexCase& c : cases) {
    EXPECT_EQ(c.operation(-1), PELM_ERR_INDEX) << c.family;
    EXPECT_EQ(c.operation(c.slotCount), PELM_ERR_INDEX) << c.family;
    EXPECT_EQ(c.operation(c.slotCount - 1), PELM_ERR_NODEVICE) << c.family;
  }
  PelmDev_Terminate();
}

struct DisconnectedCase {
  std::string description;
  Operation operation;
  int32_t status;
};

struct DisconnectedModel {
  std::string family;
  uint16_t productId;
  std::vector<DisconnectedCase> cases;
  // A setter that queues on a connected panel, and its report: the first report
  // after the panel is back shows that nothing was queued while it was away.
  Operation marker;
  Report markerReport;
};

class DisplayModelsTest : public DisplayTest {};

TEST_F(DisplayModelsTest, DisconnectedPanelsRefuseAllButTheirSilentSetters) {
  constexpr int32_t kSilent = PELM_SUCCESS;
  constexpr int32_t kRefused = PELM_ERR_NODEVICE;
  const std::vector<DisconnectedModel> models = {
      {"PelmRadio", kRadioId,
       {{"SetBrightness", [](int32_t i) { return PelmRadio_SetBrightness(i, 1); }, kSilent},
        {"SetIndicators", [](int32_t i) { return PelmRadio_SetIndicators(i, 1); }, kRefused},
        {"SetLDisplayText", [](int32_t i) { return PelmRadio_SetLDisplayText(i, kText); }, kRefused},
        {"SetRDisplaySegments", [](int32_t i) { return PelmRadio_SetRDisplaySegments(i, kSegments); }, kRefused},
        {"GetControlVals", [](int32_t i) { return PelmRadio_GetControlVals(i, nullptr, nullptr, nullptr); }, kRefused},
        {"GetIndicators", [](int32_t i) { uint8_t v; return PelmRadio_GetIndicators(i, &v); }, kRefused}},
       [](int32_t i) { return PelmRadio_SetIndicators(i, 0x42); }, {7, 0x42}},
      {"PelmAlpha", kAlphaId,
       {{"SetBrightness", [](int32_t i) { return PelmAlpha_SetBrightness(i, 1); }, kSilent},
        {"SetNumericSegments", [](int32_t i) { return PelmAlpha_SetNumericSegments(i, kSegments); }, kSilent},
        {"SetAlpha", [](int32_t i) { return PelmAlpha_SetAlpha(i, kText); }, kRefused},
        {"SetAlphaSegments", [](int32_t i) { return PelmAlpha_SetAlphaSegments(i, kGlyphs); }, kRefused},
        {"SetNumeric", [](int32_t i) { return PelmAlpha_SetNumeric(i, kText); }, kRefused},
        {"GetDialVals", [](int32_t i) { return PelmAlpha_GetDialVals(i, nullptr, nullptr); }, kRefused}},
       [](int32_t i) { return PelmAlpha_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {"PelmAlpha2", kAlpha2Id,
       {{"SetBrightness", [](int32_t i) { return PelmAlpha2_SetBrightness(i, 1); }, kSilent},
        {"SetNumericSegments", [](int32_t i) { return PelmAlpha2_SetNumericSegments(i, kSegments); }, kSilent},
        {"SetAlpha", [](int32_t i) { return PelmAlpha2_SetAlpha(i, kText); }, kRefused},
        {"GetControlVals", [](int32_t i) { return PelmAlpha2_GetControlVals(i, nullptr, nullptr, nullptr); }, kRefused},
        {"GetBrightness", [](int32_t i) { uint16_t v; return PelmAlpha2_GetBrightness(i, &v); }, kRefused}},
       [](int32_t i) { return PelmAlpha2_SetAlpha(i, "X"); }, {3, 0x15, 0x40, 0, 0, 0, 0, 0, 0}},
      {"PelmSquawk", kSquawkId,
       {{"SetBrightness", [](int32_t i) { return PelmSquawk_SetBrightness(i, 1); }, kSilent},
        {"SetDigitSegments", [](int32_t i) { return PelmSquawk_SetDigitSegments(i, kSegments); }, kSilent},
        {"SetDigit", [](int32_t i) { return PelmSquawk_SetDigit(i, kText); }, kRefused},
        {"GetControlVals", [](int32_t i) { return PelmSquawk_GetControlVals(i, nullptr, nullptr); }, kRefused},
        {"GetBrightness", [](int32_t i) { uint32_t v; return PelmSquawk_GetBrightness(i, &v); }, kRefused}},
       [](int32_t i) { return PelmSquawk_SetDigit(i, "8"); }, {3, 0x7F}},
      {"PelmAutopilot", kAutopilotId,
       {{"SetBrightness", [](int32_t i) { return PelmAutopilot_SetBrightness(i, 1); }, kSilent},
        {"SetIndicators", [](int32_t i) { return PelmAutopilot_SetIndicators(i, 1); }, kRefused},
        {"SetADisplaySegments", [](int32_t i) { return PelmAutopilot_SetADisplaySegments(i, kSegments); }, kRefused},
        {"SetEDisplayText", [](int32_t i) { return PelmAutopilot_SetEDisplayText(i, kText); }, kRefused},
        {"GetControlVals",
         [](int32_t i) {
           return PelmAutopilot_GetControlVals(i, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
         },
         kRefused}},
       [](int32_t i) { return PelmAutopilot_SetIndicators(i, 0x42); }, {13, 0x42}},
      {"PelmAutopilot2", kAutopilot2Id,
       {{"SetBrightness", [](int32_t i) { return PelmAutopilot2_SetBrightness(i, 1); }, kSilent},
        {"SetIndicators", [](int32_t i) { return PelmAutopilot2_SetIndicators(i, 1); }, kRefused},
        {"SetFDisplayText", [](int32_t i) { return PelmAutopilot2_SetFDisplayText(i, kText); }, kRefused},
        {"GetIndicators", [](int32_t i) { uint32_t v; return PelmAutopilot2_GetIndicators(i, &v); }, kRefused},
        {"GetControlVals",
         [](int32_t i) {
           return PelmAutopilot2_GetControlVals(i, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
         },
         kRefused}},
       [](int32_t i) { return PelmAutopilot2_SetIndicators(i, 0x42); }, {15, 0, 0, 0, 0x42}},
  };
  std::vector<std::shared_ptr<sim::SimDevice>> devices;
  for (const auto& model : models) devices.push_back(Plug(model.productId, 1));
  PelmDev_Init(kHostInstance);
  for (std::size_t m = 0; m < models.size(); ++m) {
    const DisconnectedModel& model = models[m];
    Disconnect(*devices[m]);
    for (const DisconnectedCase& c : model.cases) {
      EXPECT_EQ(c.operation(0), c.status) << model.family << "_" << c.description;
    }
    devices[m]->ClearLog();
    Reconnect(*devices[m]);
    ASSERT_EQ(model.marker(0), PELM_SUCCESS) << model.family;
    ASSERT_TRUE(devices[m]->WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      return std::any_of(log.begin(), log.end(), [&](const sim::LogEntry& e) { return e.bytes == model.markerReport; });
    })) << model.family;
    EXPECT_EQ(SentReports(*devices[m], LogOp::SetFeature), std::vector<Report>{model.markerReport})
        << model.family << ": something was queued while the panel was away";
  }
}

// The attempts at the device: (brightness level, succeeded).
using Attempts = std::vector<std::pair<uint8_t, bool>>;

struct WriterCase {
  std::string model;
  uint16_t productId;
  uint16_t version;
  std::function<int32_t(uint32_t level)> setBrightness;
  LogOp op;
  platform::OpenMode mode;
  Attempts attempts;
};

TEST_F(DisplayModelsTest, EachModelSendsThroughItsOwnWriterVariant) {
  // Three failed sends, then levels 1 to 4 are queued.
  const Attempts direct = {{1, false}, {2, false}, {3, false}, {4, true}};
  const Attempts retrying = {{1, false}, {1, false}, {1, false}, {1, true}, {2, true}, {3, true}, {4, true}};
  const Attempts counted = {{1, false}, {1, false}, {1, false}, {2, true}, {3, true}, {4, true}};
  const auto own = platform::OpenMode::Synchronous;
  const std::vector<WriterCase> cases = {
      {"radio", kRadioId, 0x0100, [](uint32_t l) { return PelmRadio_SetBrightness(0, l); }, LogOp::SetFeature, own,
       counted},
      {"alpha", kAlphaId, 0x0100, [](uint32_t l) { return PelmAlpha_SetBrightness(0, l); }, LogOp::SetFeature,
       platform::OpenMode::Overlapped, direct},
      {"alpha2", kAlpha2Id, 0x0100, [](uint32_t l) { return PelmAlpha2_SetBrightness(0, l); }, LogOp::SetFeature,
       own, retrying},
      {"squawk", kSquawkId, 0x0100, [](uint32_t l) { return PelmSquawk_SetBrightness(0, l); }, LogOp::SetFeature,
       own, retrying},
      {"autopilot", kAutopilotId, 0x0100, [](uint32_t l) { return PelmAutopilot_SetBrightness(0, l); },
       LogOp::SetFeature, own, retrying},
      {"older autopilot2", kAutopilot2Id, 0x01FF, [](uint32_t l) { return PelmAutopilot2_SetBrightness(0, l); },
       LogOp::SetFeature, own, retrying},
      {"newer autopilot2", kAutopilot2Id, 0x0200, [](uint32_t l) { return PelmAutopilot2_SetBrightness(0, l); },
       LogOp::WriteOutput, own, direct},
  };
  for (const WriterCase& c : cases) {
    SCOPED_TRACE(c.model);
    sim::DeviceSpec spec = PanelSpec(c.productId, 1);
    spec.versionNumber = c.version;
    auto device = bus().Plug(spec);
    PelmDev_Init(nullptr);
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

struct QueueCase {
  std::string model;
  uint16_t productId;
  std::function<int32_t()> setter;
};

TEST_F(DisplayModelsTest, ASetterIsRefusedOnceTwentyFiveReportsWait) {
  constexpr int kCalls = 30;
  const std::vector<QueueCase> cases = {
      {"radio", kRadioId, [] { return PelmRadio_SetLDisplayText(0, kText); }},
      {"alpha", kAlphaId, [] { return PelmAlpha_SetNumericSegments(0, kSegments); }},
      {"alpha2", kAlpha2Id, [] { return PelmAlpha2_SetAlphaSegments(0, kGlyphs); }},
      {"squawk", kSquawkId, [] { return PelmSquawk_SetDigit(0, kText); }},
      {"autopilot", kAutopilotId, [] { return PelmAutopilot_SetDDisplayText(0, kText); }},
      {"autopilot2", kAutopilot2Id, [] { return PelmAutopilot2_SetIndicators(0, 7); }},
  };
  for (const QueueCase& c : cases) {
    SCOPED_TRACE(c.model);
    auto device = Plug(c.productId, 1);
    PelmDev_Init(nullptr);
    device->SetOperationDelay(200ms);  // holds the writer in its first send
    std::vector<int32_t> statuses;
    for (int call = 0; call < kCalls; ++call) statuses.push_back(c.setter());
    // The writer may already have taken the first report off the queue.
    const auto accepted = static_cast<std::size_t>(std::count(statuses.begin(), statuses.end(), PELM_SUCCESS));
    EXPECT_TRUE(accepted == 25 || accepted == 26) << accepted;
    EXPECT_TRUE(std::all_of(statuses.begin() + accepted, statuses.end(), [](int32_t s) { return s == PELM_ERR_QUEUE; }));
    device->SetOperationDelay(0ms);
    EXPECT_EQ(WaitForSent(*device, accepted).size(), accepted);
    PelmDev_Terminate();
    EXPECT_EQ(device->CountOf(LogOp::SetFeature), accepted);  // the refused ones were never sent
    bus().Reset();
  }
}

// A feature-report getter seen through a 32-bit variable, so that one table
// holds getters of every width.
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
  std::string description;
  uint16_t productId;
  std::function<int32_t(uint32_t value)> setter;
  Getter getter;
  uint32_t value;
};

TEST_F(DisplayModelsTest, FeatureGettersReadBackWhatWasSetAndReportFailures) {
  const std::vector<GetterCase> cases = {
      {"radio brightness", kRadioId, [](uint32_t v) { return PelmRadio_SetBrightness(0, v); },
       Widened(PelmRadio_GetBrightness), 9},
      {"radio indicators", kRadioId, [](uint32_t v) { return PelmRadio_SetIndicators(0, v); },
       Widened(PelmRadio_GetIndicators_stdcall), 0xA5},
      {"alpha2 brightness", kAlpha2Id, [](uint32_t v) { return PelmAlpha2_SetBrightness(0, v); },
       Widened(PelmAlpha2_GetBrightness), 12},
      {"squawk brightness, all 32 bits", kSquawkId, [](uint32_t v) { return PelmSquawk_SetBrightness(0, v); },
       Widened(PelmSquawk_GetBrightness), 9},
      {"autopilot brightness", kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetBrightness(0, v); },
       Widened(PelmAutopilot_GetBrightness_stdcall), 3},
      {"autopilot indicators", kAutopilotId, [](uint32_t v) { return PelmAutopilot_SetIndicators(0, v); },
       Widened(PelmAutopilot_GetIndicators), 0x81},
      {"autopilot2 brightness", kAutopilot2Id, [](uint32_t v) { return PelmAutopilot2_SetBrightness(0, v); },
       Widened(PelmAutopilot2_GetBrightness), 15},
  };
  constexpr uint32_t kUntouched = 0xFFFFFFFF;
  for (const GetterCase& c : cases) {
    SCOPED_TRACE(c.description);
    auto device = Plug(c.productId, 1);
    PelmDev_Init(nullptr);
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
