#pragma once
// The demo's live dashboard: every simulated panel as its devices show it now
// (displays drawn from the segment bytes they received, lamps, colours,
// levers), then the newest events and the counters. One frame is one string;
// the caller puts it on the terminal.

#include <string>

#include "tools/pelmctl/cockpit_host.h"
#include "tools/pelmctl/event_log.h"
#include "tools/pelmctl/sim_cockpit.h"

namespace pelmctl {

std::string RenderDashboard(const SimCockpit& cockpit, const EventLog& log, const HostCounts& counts,
                            std::size_t reportsSent, double elapsedSeconds, double sessionSeconds);

// The terminal sequences that put a frame at the top of a cleared screen.
inline constexpr const char* kClearScreen = "\x1b[H\x1b[2J";

}  // namespace pelmctl
