#include "tools/pelmctl/sim_session.h"

#include "tools/pelmctl/cli.h"
#include "tools/pelmctl/demo.h"
#include "tools/pelmctl/demo_script.h"

namespace pelmctl {

void SimSession::PlugCockpit() { cockpit_.Plug(); }

// The monitor's pilot works through the demo's inputs, round and round; it
// leaves the plugs alone so that the monitor's output stays about input.
void SimSession::MoveControls(int step) {
  static const std::vector<ScriptStep> kScript = DemoScript();
  std::vector<const ScriptStep*> inputs;
  for (const ScriptStep& scripted : kScript) {
    if (scripted.inputs > 0) inputs.push_back(&scripted);
  }
  inputs[static_cast<std::size_t>(step) % inputs.size()]->act(cockpit_);
}

int SimSession::RunDemo(const DemoOptions& options, std::ostream& out) {
  const DemoResult result = PlayDemo(options, out);
  out << SummaryLine(result) << "\n";
  return result.Passed() ? kExitSuccess : kExitFailure;
}

int SimSession::ServeWebView(int port, std::ostream& out) {
  webView_ = pelmctl::ServeWebView(port);
  out << webView_.message << "\n" << std::flush;
  return webView_.server ? webView_.server->Port() : -1;
}

}  // namespace pelmctl
