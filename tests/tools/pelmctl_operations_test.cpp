// The set/get table. Every row called with well-formed arguments on the
// plugged cockpit must succeed; a row bound to the wrong export or given too
// few segment positions shows up here (and under the sanitizers as a bad
// read). Malformed arguments are refused before any call.

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "core/pelm_dev.h"
#include "models/segment_reading.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/operations.h"
#include "tools/pelmctl/sim_cockpit.h"

namespace pelmctl {
namespace {

using pelm::ReadSevenSegments;

std::string UsageMessage(const std::function<void()>& action) {
  try {
    action();
  } catch (const UsageError& error) {
    return error.what();
  }
  return "(no usage error)";
}

std::vector<std::string> WellFormedArguments(const Operation& operation) {
  std::vector<std::string> arguments;
  for (const ArgumentKind kind : operation.arguments) {
    switch (kind) {
      case ArgumentKind::Number: arguments.emplace_back("1"); break;
      case ArgumentKind::Text: arguments.emplace_back("12.3"); break;
      case ArgumentKind::Bytes:
      case ArgumentKind::Words: {
        std::string list = "0x3F";
        for (uint32_t position = 1; position < operation.positions; ++position) list += ",0x3F";
        arguments.push_back(list);
        break;
      }
    }
  }
  return arguments;
}

std::string Key(const Operation& operation) {
  return std::string(operation.family) + (operation.direction == Direction::Set ? " set " : " get ") +
         std::string(operation.name);
}

class PelmctlEveryOperation : public pelm::test::SimTest {
 protected:
  void TearDown() override {
    PelmDev_Terminate();
    SimTest::TearDown();
  }
  static OperationResult Call(const char* family, Direction direction, const char* name, int32_t index,
                              const std::vector<std::string>& arguments) {
    return Invoke(FindOperation(family, name, direction), index, arguments);
  }
};

TEST_F(PelmctlEveryOperation, OnTheCockpitEachSucceeds) {
  SimCockpit cockpit;
  cockpit.Plug();
  PelmDev_Init(nullptr);
  for (const Operation& operation : AllOperations()) {
    const OperationResult result = Invoke(operation, 0, WellFormedArguments(operation));
    // The I/O board has no backlight and cannot read its outputs back.
    const bool unsupported = operation.family == "ioboard" &&
                             (operation.name == "brightness" ||
                              (operation.name == "indicators" && operation.direction == Direction::Get));
    EXPECT_EQ(result.status, unsupported ? PELM_ERR_UNSUPPORTED : PELM_SUCCESS) << Key(operation);
    EXPECT_EQ(result.values.size(), operation.outputNames.size()) << Key(operation);
  }
}

TEST(PelmctlOperationTable, RefusesMalformedArgumentsBeforeAnyCall) {
  const Operation& text = FindOperation("radio", "ldisplay-text", Direction::Set);
  EXPECT_NE(UsageMessage([&] { Invoke(text, 0, {}); }).find("usage: ldisplay-text TEXT"), std::string::npos);
  const Operation& segments = FindOperation("radio", "ldisplay-segments", Direction::Set);
  EXPECT_NE(UsageMessage([&] { Invoke(segments, 0, {"1,2"}); }).find("6 positions"), std::string::npos);
  EXPECT_NE(UsageMessage([&] { Invoke(segments, 0, {"1,2,3,4,5,0x100"}); }).find("does not fit"), std::string::npos);
  const Operation& color = FindOperation("warning", "ind-color-value", Direction::Set);
  for (const char* bad : {"", "-1", "3x", "0x", "4294967296"}) {
    EXPECT_NE(UsageMessage([&] { Invoke(color, 0, {"1", bad}); }).find("not a"), std::string::npos) << bad;
  }
}

TEST_F(PelmctlEveryOperation, SettersReachTheDevicesAndGettersReadBack) {
  SimCockpit cockpit;
  cockpit.Plug();
  PelmDev_Init(nullptr);
  EXPECT_EQ(Call("radio", Direction::Set, "ldisplay-text", 0, {"123.45"}).status, PELM_SUCCESS);
  EXPECT_EQ(Call("warning", Direction::Set, "ind-color-value", 0, {"3", "2"}).status, PELM_SUCCESS);
  EXPECT_EQ(Call("buttons", Direction::Set, "indicators", 1, {"0xA5"}).status, PELM_SUCCESS);

  EXPECT_EQ(Call("warning", Direction::Get, "ind-color-value", 0, {"3"}).values, (std::vector<int64_t>{2}));
  // The panel answers from the report its writer thread sends.
  EXPECT_TRUE(pelm::test::WaitUntil([&] {
    const OperationResult lamps = Call("buttons", Direction::Get, "indicators", 1, {});
    return lamps.status == PELM_SUCCESS && lamps.values == std::vector<int64_t>{0xA5};
  }));
  auto& radio = cockpit.Device(pelm::sim::RadioPanelSim::kProductId).PanelAs<pelm::sim::RadioPanelSim>();
  EXPECT_TRUE(pelm::test::WaitUntil([&] { return ReadSevenSegments(radio.LeftDisplay()) == "123.45 "; }));
}

}  // namespace
}  // namespace pelmctl
