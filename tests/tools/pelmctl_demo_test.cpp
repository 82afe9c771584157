// A short demo session, end to end over the simulated bus.

#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>

#include "models/segment_reading.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/demo.h"
#include "tools/pelmctl/demo_script.h"

namespace pelmctl {
namespace {

using pelm::sim::RadioPanelSim;

class PelmctlDemo : public pelm::test::SimTest {};

TEST_F(PelmctlDemo, AShortSessionDeliversEverythingAndPasses) {
  constexpr double kShortSession = 3;
  std::ostringstream log;
  const DemoResult result = PlayDemo({kShortSession, false}, log);
  EXPECT_TRUE(result.Passed()) << SummaryLine(result);
  EXPECT_EQ(result.counts.inputs, result.inputsSent);
  EXPECT_EQ(result.counts.hotplugEvents, 2);
  EXPECT_GT(result.reportsSent, 0u);
  EXPECT_NE(log.str().find("removed buttons 1"), std::string::npos);
  EXPECT_NE(log.str().find("arrived buttons 1"), std::string::npos);
  // What the demo checks itself, read here from the first radio.
  const auto devices = bus().Devices();
  const auto radio = std::find_if(devices.begin(), devices.end(),
                                  [](const auto& device) { return device->Description().serialNumber == u"SIM0050-1"; });
  ASSERT_NE(radio, devices.end());
  EXPECT_EQ(pelm::ReadSevenSegments((*radio)->PanelAs<RadioPanelSim>().LeftDisplay()), DemoExpectations().comActive);
}

}  // namespace
}  // namespace pelmctl
