// A short demo session, end to end over the simulated bus.

#include <gtest/gtest.h>

#include <sstream>

#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/demo.h"
#include "tools/pelmctl/demo_script.h"
#include "models/segment_reading.h"

namespace pelmctl {
namespace {

using pelm::ReadSevenSegments;

class PelmctlDemo : public pelm::test::SimTest {
 protected:
  pelm::sim::SimDevice& Device(uint16_t productId, int instance) {
    for (const std::string& path : bus().PresentPaths()) {
      auto device = bus().Find(path);
      if (device->Description().productId == productId && path.back() == static_cast<char>('0' + instance)) return *device;
    }
    throw std::logic_error("no such simulated panel");
  }
};

TEST_F(PelmctlDemo, ShortSessionDeliversEverythingAndLeavesTheDisplaysRight) {
  constexpr double kShortSession = 3;
  std::ostringstream log;
  const DemoResult result = PlayDemo({kShortSession, false}, log);

  EXPECT_TRUE(result.Passed()) << SummaryLine(result);
  EXPECT_EQ(result.counts.inputs, result.inputsSent);
  EXPECT_EQ(result.counts.hotplugEvents, 2);
  EXPECT_EQ(result.counts.errors, 0);
  EXPECT_GT(result.reportsSent, 0u);
  EXPECT_EQ(SummaryLine(result).rfind("demo passed: ", 0), 0u);
  EXPECT_NE(log.str().find("removed buttons 1"), std::string::npos);
  EXPECT_NE(log.str().find("arrived buttons 1"), std::string::npos);

  const ScriptExpectations expected = DemoExpectations();
  EXPECT_EQ(expected.comActive, "122.000");
  EXPECT_EQ(ReadSevenSegments(Device(pelm::sim::RadioPanelSim::kProductId, 1).PanelAs<pelm::sim::RadioPanelSim>().LeftDisplay()),
            expected.comActive);
  EXPECT_EQ(ReadSevenSegments(Device(pelm::sim::RadioPanelSim::kProductId, 2).PanelAs<pelm::sim::RadioPanelSim>().RightDisplay()),
            "112.900");
  EXPECT_EQ(ReadSevenSegments(
                Device(pelm::sim::AutopilotPanelSim::kProductId, 1).PanelAs<pelm::sim::AutopilotPanelSim>().Display('A')),
            "275");
}

}  // namespace
}  // namespace pelmctl
