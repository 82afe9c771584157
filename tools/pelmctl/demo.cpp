#include "tools/pelmctl/demo.h"

#include <poll.h>

#include <chrono>
#include <algorithm>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/warning_panel.h"
#include "tools/pelmctl/dashboard.h"
#include "tools/pelmctl/demo_script.h"
#include "tools/pelmctl/families.h"
#include "models/segment_reading.h"
#include "tools/pelmctl/switch_panel_state.h"

namespace pelmctl {
namespace {

using pelm::ReadSevenSegments;
using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

// Any non-null instance turns hot-plug notification on.
int gHostInstanceTag;
void* const kHostInstance = &gHostInstanceTag;

constexpr auto kFrameInterval = std::chrono::milliseconds(100);
// After the last step, how long the demo waits for the library to deliver
// what the script sent before it calls the session failed.
constexpr auto kSettleDeadline = std::chrono::seconds(10);
constexpr int kGearLamp = 1;

class Session {
 public:
  Session(const DemoOptions& options, std::ostream& out)
      : options_(options), out_(out), log_(options.dashboard ? nullptr : &out), start_(Clock::now()) {}

  DemoResult Play() {
    cockpit_.Plug();
    if (options_.webPort) {
      webView_ = ServeWebView(*options_.webPort);
      out_ << webView_.message << "\n" << std::flush;
    }
    PelmDev_Init(kHostInstance);
    uint32_t opened = 0;
    for (const Family& family : AllFamilies()) opened += family.connectedCount();
    log_.Add("opened " + std::to_string(opened) + " panels of " + std::to_string(AllFamilies().size()) + " models");
    StartCockpitHost(log_);

    int inputsSent = 0;
    int hotplugExpected = 0;
    for (const ScriptStep& step : DemoScript()) {
      PumpUntil(start_ + std::chrono::duration_cast<Clock::duration>(Seconds(step.at * options_.seconds)));
      log_.Add("script  " + step.description);
      step.act(cockpit_);
      inputsSent += step.inputs;
      if (step.inputs == 0) ++hotplugExpected;
    }
    const auto settled = [&] {
      const HostCounts counts = CockpitHostCounts();
      return counts.inputs >= inputsSent && counts.hotplugEvents >= hotplugExpected;
    };
    const auto end = start_ + std::chrono::duration_cast<Clock::duration>(Seconds(options_.seconds));
    PumpUntil(end > Clock::now() ? end : Clock::now());
    const auto deadline = Clock::now() + kSettleDeadline;
    while (!settled() && Clock::now() < deadline) PumpUntil(Clock::now() + kFrameInterval);

    PelmDev_Terminate();  // the writers send what is still queued first
    StopCockpitHost();
    DemoResult result{CockpitHostCounts(), cockpit_.ReportsReceived(), inputsSent, {}};
    Check(result, hotplugExpected);
    if (options_.dashboard) Draw();
    return result;
  }

 private:
  // Handles hot-plug events and redraws until `until`.
  void PumpUntil(Clock::time_point until) {
    while (true) {
      PelmDevExt_DispatchEvents();
      if (options_.dashboard && Clock::now() >= nextFrame_) {
        Draw();
        nextFrame_ = Clock::now() + kFrameInterval;
      }
      const auto now = Clock::now();
      if (now >= until) return;
      const auto wait = std::min(until, options_.dashboard ? nextFrame_ : until) - now;
      const int timeoutMs =
          static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(wait).count());
      pollfd events{PelmDevExt_EventDescriptor(), POLLIN, 0};
      poll(&events, events.fd >= 0 ? 1 : 0, timeoutMs);
    }
  }

  void Draw() {
    out_ << kClearScreen
         << RenderDashboard(cockpit_, log_, CockpitHostCounts(), cockpit_.ReportsReceived(),
                            Seconds(Clock::now() - start_).count(), options_.seconds)
         << (webView_.message.empty() ? "" : "\n" + webView_.message + "\n") << std::flush;
  }

  void Expect(DemoResult& result, bool held, const std::string& what) {
    if (!held) result.failures.push_back(what);
  }

  void Check(DemoResult& result, int hotplugExpected) {
    using namespace pelm::sim;
    const ScriptExpectations expected = DemoExpectations();
    const std::string com = ReadSevenSegments(cockpit_.Device(RadioPanelSim::kProductId, 1)
                                                  .PanelAs<RadioPanelSim>().LeftDisplay());
    const std::string nav = ReadSevenSegments(cockpit_.Device(RadioPanelSim::kProductId, 2)
                                                  .PanelAs<RadioPanelSim>().RightDisplay());
    const std::string altitude =
        ReadSevenSegments(cockpit_.Device(AutopilotPanelSim::kProductId).PanelAs<AutopilotPanelSim>().Display('D'));
    const uint8_t lamps = SwitchPanelLamps(cockpit_.Device(kButtonPanelId, 1));
    const WarningPanel::Components gear =
        cockpit_.Device(WarningPanel::kProductId).PanelAs<WarningPanel>().IndicatorColor(kGearLamp);
    Expect(result, result.counts.inputs >= result.inputsSent,
           "inputs: " + std::to_string(result.counts.inputs) + " of " + std::to_string(result.inputsSent));
    Expect(result, result.counts.hotplugEvents == hotplugExpected,
           "hot-plug events: " + std::to_string(result.counts.hotplugEvents) + ", expected " +
               std::to_string(hotplugExpected));
    Expect(result, result.counts.errors == 0, "the library refused " + std::to_string(result.counts.errors) + " call(s)");
    Expect(result, com == expected.comActive, "COM display shows '" + com + "', expected '" + expected.comActive + "'");
    Expect(result, nav == expected.navStandby, "NAV display shows '" + nav + "', expected '" + expected.navStandby + "'");
    Expect(result, altitude == expected.altitude,
           "altitude display shows '" + altitude + "', expected '" + expected.altitude + "'");
    Expect(result, lamps == expected.buttonLamps, "button panel lamps do not follow its switches");
    Expect(result, gear[0] == 0 && gear[1] > 0, "the gear warning lamp is not green with the gear down");
  }

  const DemoOptions options_;
  std::ostream& out_;
  EventLog log_;
  SimCockpit cockpit_;
  const Clock::time_point start_;
  Clock::time_point nextFrame_ = Clock::now();
  WebView webView_;
};

}  // namespace

DemoResult PlayDemo(const DemoOptions& options, std::ostream& out) { return Session(options, out).Play(); }

WebView ServeWebView(int port) {
  WebView view{std::make_unique<pelm::sim::web::WebServer>(pelm::sim::Bus::Instance()), {}};
  const std::string address = pelm::sim::web::kLoopbackAddress;
  const int bound = view.server->Start(address, port);
  if (bound < 0) {
    view.server.reset();
    view.message = "Web view: port " + std::to_string(port) + " of " + address +
                   " cannot be bound (another program has it?): choose another port, or 0 for a free one";
  } else {
    view.message = "Web view: http://" + address + ":" + std::to_string(bound) + "/ (open it in a browser)";
  }
  return view;
}

std::string SummaryLine(const DemoResult& result) {
  std::string line = result.Passed() ? "demo passed: " : "demo FAILED: ";
  line += std::to_string(result.counts.inputs) + " inputs delivered, " + std::to_string(result.reportsSent) +
          " reports sent, " + std::to_string(result.counts.hotplugEvents) + " hot-plug events, " +
          std::to_string(result.counts.errors) + " errors";
  for (const std::string& failure : result.failures) line += "; " + failure;
  return line;
}

}  // namespace pelmctl
