// What pelmctl shows: device lists (a removed panel, awkward paths), the
// dashboard drawn from what the simulated devices received, and segment bytes
// read back as text.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <sstream>
#include <string>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "models/segment_drawing.h"
#include "models/segment_encoding.h"
#include "platform/sim/panels/radio_panel.h"
#include "support/sim_fixture.h"
#include "tools/pelmctl/dashboard.h"
#include "tools/pelmctl/device_list.h"
#include "models/segment_reading.h"
#include "tools/pelmctl/sim_cockpit.h"

namespace pelmctl {
namespace {

using pelm::ReadSevenSegments;

using pelm::sim::RadioPanelSim;

TEST(PelmctlSegmentReading, ReadsBackWhatTheEncoderWrote) {
  for (const std::string text : {"118.000", "-12.50 ", "0.0.0.0.0.0."}) {
    std::array<uint8_t, 6> segments{};
    pelm::TextToSegments(text.c_str(), segments.data(), segments.size(), false);
    EXPECT_EQ(ReadSevenSegments(segments), text);
  }
  EXPECT_EQ(ReadSevenSegments(std::array<uint8_t, 1>{pelm::kSegmentA | pelm::kSegmentE}), "?");
}

TEST(PelmctlDeviceFormats, EscapeAwkwardPathsAndSayWhatToDoWhenEmpty) {
  const ListedDevice device{"radio", "Radio panel", PELM_MODEL_RADIO, 0, false, "A\"B\\C\x01", 0x0100, ""};
  EXPECT_EQ(FormatDeviceJson({device}, {}), R"([
  {"family": "radio", "model": "Radio panel", "modelType": 5, "index": 0, "connected": false, "path": "A\"B\\C\u0001", "version": 256, "serial": ""}
]
)");
  EXPECT_EQ(FormatDeviceJson({}, {}), "[]\n");
  EXPECT_NE(FormatDeviceTable({}, {}).find("No panels found"), std::string::npos);
}

class PelmctlCockpitViews : public pelm::test::SimTest {
 protected:
  void SetUp() override {
    SimTest::SetUp();
    cockpit_.Plug();
  }
  void TearDown() override {
    PelmDev_Terminate();
    SimTest::TearDown();
  }
  SimCockpit cockpit_;
};

// An unplugged panel is marked removed; one plugged in that the user may not
// open is no mystery: the list says so and what to do.
TEST_F(PelmctlCockpitViews, ListMarksRemovedPanelsAndSaysWhyAPresentOneIsNotOpen) {
  bus().Plug(pelm::test::PanelDescription(RadioPanelSim::kProductId, 9))->DenyAccess(true);
  int hostInstance = 0;
  PelmDev_Init(&hostInstance);
  cockpit_.Unplug(RadioPanelSim::kProductId, 2);
  ASSERT_TRUE(pelm::test::WaitUntil([] { return PelmDevExt_DispatchEvents() > 0; }));
  const std::vector<UnopenedPanel> unopened = CollectUnopenedPanels();
  ASSERT_EQ(unopened.size(), 1u);
  const std::string table = FormatDeviceTable(CollectDevices(), unopened);
  EXPECT_NE(table.find("radio        0     connected"), std::string::npos) << table;
  EXPECT_NE(table.find("radio        1     removed"), std::string::npos) << table;
  EXPECT_NE(table.find("present, permission denied: add yourself to group plugdev (sudo usermod"), std::string::npos)
      << table;
  EXPECT_NE(FormatDeviceJson({}, unopened).find(R"("openStatus": 1, "osError": 13)"), std::string::npos);
}

TEST_F(PelmctlCockpitViews, DashboardDrawsTheDisplaysTheDevicesReceived) {
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmRadio_SetLDisplayText(0, "118.025"), PELM_SUCCESS);
  auto& radio = cockpit_.Device(RadioPanelSim::kProductId).PanelAs<RadioPanelSim>();
  ASSERT_TRUE(pelm::test::WaitUntil([&] { return ReadSevenSegments(radio.LeftDisplay()) == "118.025"; }));
  cockpit_.Unplug(RadioPanelSim::kProductId, 2);

  std::ostringstream echo;
  EventLog log(&echo);
  log.Add("script  something happened");
  const std::string frame = RenderDashboard(cockpit_, log, {1, 2, 3}, 4, 1.0, 20.0);

  // The first line of the drawing of "118.025", as the radio shows it.
  std::string topLine;
  for (const uint8_t glyph : radio.LeftDisplay()) topLine += pelm::DrawSevenSegment(glyph)[0];
  EXPECT_NE(frame.find(topLine), std::string::npos) << frame;
  EXPECT_NE(frame.find("radio       #2  [unplugged]"), std::string::npos);
  EXPECT_NE(frame.find("inputs 1  reports 4  hot-plug 2  errors 3"), std::string::npos);
  EXPECT_NE(frame.find("something happened"), std::string::npos);
  EXPECT_NE(echo.str().find("something happened"), std::string::npos);
}

}  // namespace
}  // namespace pelmctl
