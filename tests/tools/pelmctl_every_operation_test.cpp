// Every row of the set/get table called with well-formed arguments: with no
// panel each must give the library's status, with the cockpit plugged each
// must succeed. A row bound to the wrong export or given too few segment
// positions shows up here (and under the sanitizers as a bad read).

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/pelm_dev.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/operations.h"
#include "tools/pelmctl/sim_cockpit.h"

namespace pelmctl {
namespace {

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
};

TEST_F(PelmctlEveryOperation, SegmentArgumentsKnowTheirPositions) {
  for (const Operation& operation : AllOperations()) {
    bool takesList = false;
    for (const ArgumentKind kind : operation.arguments) {
      takesList = takesList || kind == ArgumentKind::Bytes || kind == ArgumentKind::Words;
    }
    EXPECT_EQ(takesList, operation.positions > 0) << Key(operation);
  }
}

TEST_F(PelmctlEveryOperation, WithoutPanelsEachReportsTheEmptySlot) {
  PelmDev_Init(nullptr);
  for (const Operation& operation : AllOperations()) {
    const int32_t status = Invoke(operation, 0, WellFormedArguments(operation)).status;
    EXPECT_EQ(status, PELM_ERR_NODEVICE) << Key(operation);
  }
}

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

}  // namespace
}  // namespace pelmctl
