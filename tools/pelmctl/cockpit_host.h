#pragma once
// The host half of the demo: what a cockpit application does with the panels.
// Radio dials tune frequencies shown on the radio displays, autopilot dials set
// altitude and heading, lamps follow their switches, the gear lever turns the
// warning lamp green or red, the knob panel sets the backlight, and a panel
// that comes back is given its displays again.

#include <atomic>
#include <cstdint>
#include <string>

#include "tools/pelmctl/event_log.h"

namespace pelmctl {

struct HostCounts {
  int inputs;
  int hotplugEvents;
  int errors;  // setter calls that did not return PELM_SUCCESS
};

// Starting values of what the host shows.
inline constexpr int32_t kComStartKhz = 118000;
inline constexpr int32_t kNavStartKhz = 113000;
inline constexpr int32_t kKhzPerOuterDialStep = 1000;
inline constexpr int32_t kKhzPerInnerDialStep = 25;
inline constexpr int32_t kAltitudeStartFeet = 5000;
inline constexpr int32_t kFeetPerAltitudeStep = 100;
inline constexpr int32_t kHeadingStartDegrees = 270;

// "118.025"
std::string FrequencyText(int32_t khz);
// "  5000", right-aligned in the autopilot's six altitude digits
std::string AltitudeText(int32_t feet);

// Registers the callbacks and fills every display; after PelmDev_Init.
void StartCockpitHost(EventLog& log);
// Lets go of the log; after PelmDev_Terminate, when no callback can run.
void StopCockpitHost();
HostCounts CockpitHostCounts();

}  // namespace pelmctl
