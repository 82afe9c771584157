// pelmctl over the simulated bus: every command works on a simulated cockpit
// of all eighteen panel models, with or without --sim.

#include <unistd.h>

#include <iostream>

#include "tools/pelmctl/cli.h"
#include "tools/pelmctl/sim_session.h"
#include "tools/pelmctl/stop_signal.h"

int main(int argc, char** argv) {
  pelmctl::SimSession simulation;
  pelmctl::Environment environment;
  environment.simulation = &simulation;
  environment.outputIsTerminal = isatty(STDOUT_FILENO) == 1;
  environment.stop = &pelmctl::InstallStopSignals();
  return pelmctl::Run(argc, argv, environment, std::cout, std::cerr);
}
