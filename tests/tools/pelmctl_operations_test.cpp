// The set/get table: lookup and argument errors without touching a device, and
// calls through to simulated panels.

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "core/pelm_dev.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/operations.h"
#include "models/segment_reading.h"
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

TEST(PelmctlOperationTable, CoversEveryFamilyOnceForEachOperation) {
  std::set<std::string> families;
  std::set<std::string> keys;
  for (const Operation& operation : AllOperations()) {
    families.emplace(operation.family);
    const std::string key = std::string(operation.family) + (operation.direction == Direction::Set ? " set " : " get ") +
                            std::string(operation.name);
    EXPECT_TRUE(keys.insert(key).second) << "twice: " << key;
    EXPECT_EQ(operation.argumentNames.size(), operation.arguments.size()) << key;
    EXPECT_NE(FamilyByName(operation.family), nullptr) << key;
  }
  EXPECT_EQ(families.size(), AllFamilies().size());
}

TEST(PelmctlOperationTable, NamesWhatExistsWhenTheLookupFails) {
  EXPECT_NE(UsageMessage([] { FindOperation("radoi", "brightness", Direction::Set); }).find("families: "),
            std::string::npos);
  const std::string unknownOperation = UsageMessage([] { FindOperation("radio", "volume", Direction::Set); });
  EXPECT_NE(unknownOperation.find("'volume'"), std::string::npos);
  EXPECT_NE(unknownOperation.find("ldisplay-text"), std::string::npos);
  // A getter's name is no setter.
  EXPECT_NE(UsageMessage([] { FindOperation("radio", "control-vals", Direction::Set); }), "(no usage error)");
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

class PelmctlOperationsOnPanels : public pelm::test::SimTest {
 protected:
  void SetUp() override {
    SimTest::SetUp();
    cockpit_.Plug();
    PelmDev_Init(nullptr);
  }
  void TearDown() override {
    PelmDev_Terminate();
    SimTest::TearDown();
  }
  OperationResult Call(const char* family, Direction direction, const char* name, int32_t index,
                       const std::vector<std::string>& arguments) {
    return Invoke(FindOperation(family, name, direction), index, arguments);
  }
  SimCockpit cockpit_;
};

TEST_F(PelmctlOperationsOnPanels, SettersReachTheDevicesAndGettersReadBack) {
  EXPECT_EQ(Call("radio", Direction::Set, "ldisplay-text", 0, {"123.45"}).status, PELM_SUCCESS);
  EXPECT_EQ(Call("warning", Direction::Set, "ind-color-value", 0, {"3", "2"}).status, PELM_SUCCESS);
  EXPECT_EQ(Call("buttons", Direction::Set, "indicators", 1, {"0xA5"}).status, PELM_SUCCESS);

  EXPECT_EQ(Call("warning", Direction::Get, "ind-color-value", 0, {"3"}).values, (std::vector<int64_t>{2}));
  // The panel answers from the report its writer thread sends.
  EXPECT_TRUE(pelm::test::WaitUntil([&] {
    const OperationResult lamps = Call("buttons", Direction::Get, "indicators", 1, {});
    return lamps.status == PELM_SUCCESS && lamps.values == std::vector<int64_t>{0xA5};
  }));
  auto& radio = cockpit_.Device(pelm::sim::RadioPanelSim::kProductId).PanelAs<pelm::sim::RadioPanelSim>();
  EXPECT_TRUE(pelm::test::WaitUntil([&] { return ReadSevenSegments(radio.LeftDisplay()) == "123.45 "; }));
}

TEST_F(PelmctlOperationsOnPanels, GivesTheLibraryStatusForAMissingDevice) {
  EXPECT_EQ(Call("radio", Direction::Set, "ldisplay-text", 2, {"1"}).status, PELM_ERR_NODEVICE);
  const OperationResult result = Call("keypad", Direction::Get, "keycodes", 1000, {});
  EXPECT_EQ(result.status, PELM_ERR_INDEX);
}

}  // namespace
}  // namespace pelmctl
