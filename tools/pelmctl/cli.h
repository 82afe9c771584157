#pragma once
// The command line of pelmctl: parses it and runs the command.

#include <atomic>
#include <functional>
#include <ostream>

#include "tools/pelmctl/simulation.h"

namespace pelmctl {

// Exit statuses.
inline constexpr int kExitSuccess = 0;
inline constexpr int kExitFailure = 1;  // the library or the demo reported a failure
inline constexpr int kExitUsage = 2;    // the command line was wrong

struct Environment {
  // The simulated cockpit, or null in the build that drives real panels.
  Simulation* simulation = nullptr;
  // Runs the whole command line in the simulator build instead, for commands
  // that need a simulation when there is none here.
  std::function<int()> handOffToSimulator;
  // Whether the output is a terminal, where the demo draws its dashboard.
  bool outputIsTerminal = false;
  // Raised by Ctrl-C; ends `monitor`.
  const std::atomic<bool>* stop = nullptr;
};

int Run(int argc, const char* const* argv, const Environment& environment, std::ostream& out, std::ostream& err);

}  // namespace pelmctl
