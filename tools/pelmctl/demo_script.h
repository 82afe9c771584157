#pragma once
// The demo's scripted session: what the pilot does to the simulated cockpit,
// step by step, and what the host must show at the end.

#include <functional>
#include <string>
#include <vector>

#include "tools/pelmctl/sim_cockpit.h"

namespace pelmctl {

struct ScriptStep {
  double at;                 // when, as a fraction of the session
  std::string description;
  int inputs;                // input reports the step sends
  std::function<void(const SimCockpit&)> act;
};

// What the displays and lamps must show after the script has run.
struct ScriptExpectations {
  std::string comActive;     // radio 0, left display
  std::string navStandby;    // radio 1, right display
  std::string altitude;      // autopilot display D
  uint8_t buttonLamps;       // button panel 0
  int hotplugEvents;
};

std::vector<ScriptStep> DemoScript();
ScriptExpectations DemoExpectations();

}  // namespace pelmctl
