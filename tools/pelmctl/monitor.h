#pragma once
// `pelmctl monitor`: every input callback decoded, and every arrival and
// removal, each with a timestamp, until the stop flag is raised.

#include <atomic>
#include <ostream>

#include "tools/pelmctl/simulation.h"

namespace pelmctl {

struct MonitorOptions {
  double seconds = 0;  // 0: until `stop`
  bool moveControls = true;  // a simulation's pilot works the controls
};

struct MonitorCounts {
  int inputs = 0;
  int hotplugEvents = 0;
};

// Initialises the library with hot-plug on, follows the panels and terminates
// the library before it returns. With a simulation, its cockpit is plugged and
// its controls move while the monitor runs.
MonitorCounts RunMonitor(const MonitorOptions& options, Simulation* simulation, const std::atomic<bool>& stop,
                         std::ostream& out);

}  // namespace pelmctl
