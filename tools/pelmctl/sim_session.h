#pragma once
// The simulator build's Simulation: the cockpit of the demo for every command.

#include "tools/pelmctl/demo.h"
#include "tools/pelmctl/sim_cockpit.h"
#include "tools/pelmctl/simulation.h"

namespace pelmctl {

class SimSession final : public Simulation {
 public:
  void PlugCockpit() override;
  void MoveControls(int step) override;
  int RunDemo(const DemoOptions& options, std::ostream& out) override;
  int ServeWebView(int port, std::ostream& out) override;

 private:
  SimCockpit cockpit_;
  WebView webView_;
};

}  // namespace pelmctl
