#pragma once
// What the web view draws: every panel plugged on the simulated bus since its
// last reset, as JSON, read from the reports each panel received (segment
// bytes, lamps, colours, backlight, outputs) and from the last input injected
// into it (switch and lever positions).

#include <string>

#include "platform/sim/sim_bus.h"

namespace pelm::sim::web {

// {"segments": {...bit of each segment...}, "panels": [{"id": 0, "model": 9,
// "name": "Radio", "ordinal": 1, "plugged": true, "inputLength": 4,
// "input": [...], "displays": [...], ...}, ...]}. A panel's id is its place in
// Bus::Devices(); devices of no panel model are left out.
std::string CockpitSnapshot(const Bus& bus);

// The length of the model's input report, report ID included; 0 for a
// product ID that is no panel.
std::size_t InputReportLength(uint16_t productId);

}  // namespace pelm::sim::web
