#pragma once
// The final-state end check of the soak. In a quiet phase (every panel present
// again, no failing sends, no slow device, no other caller) it sets every
// display and lamp report of every panel, waits for the writers to drain, and
// compares what each panel shows byte for byte with the report set last.

#include <functional>
#include <string>
#include <vector>

#include "platform/sim/sim_bus.h"

namespace pelm::soak {

struct FinalStateOutcome {
  int panels = 0;   // panels with displays or lamps that were checked
  int reports = 0;  // reports compared, over all rounds
  int restarts = 0;
  std::vector<std::string> failures;
};

// `panels`: every device the soak plugged, as it was last plugged. Runs on the
// thread that called PelmDev_Init, with no other thread calling the library.
// `restartLibrary` terminates and starts the library as the soak does; it is
// used only when a panel finds its model's slot table full of devices that
// left at other paths.
FinalStateOutcome CheckFinalState(const std::vector<sim::DeviceDescription>& panels,
                                  const std::function<void()>& restartLibrary);

}  // namespace pelm::soak
