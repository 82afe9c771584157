// pelmctl for real panels, over the machine's hidraw devices. Commands that
// need the simulated cockpit (--sim, demo) run in pelmctl-sim, installed next
// to this program.

#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <iostream>

#include "tools/pelmctl/cli.h"
#include "tools/pelmctl/stop_signal.h"

namespace {

constexpr const char* kSimulatorProgram = "pelmctl-sim";

int RunSimulator(char** argv) {
  std::error_code error;
  const std::filesystem::path self = std::filesystem::read_symlink("/proc/self/exe", error);
  const std::filesystem::path simulator = self.parent_path() / kSimulatorProgram;
  if (!error) execv(simulator.c_str(), argv);
  std::cerr << "pelmctl: the simulated cockpit lives in " << kSimulatorProgram << ", which could not be started from "
            << simulator << " (" << (error ? error.message() : std::strerror(errno))
            << "); build the target pelmctl-sim or run it directly\n";
  return pelmctl::kExitFailure;
}

}  // namespace

int main(int argc, char** argv) {
  pelmctl::Environment environment;
  environment.handOffToSimulator = [argv] { return RunSimulator(argv); };
  environment.stop = &pelmctl::InstallStopSignals();
  return pelmctl::Run(argc, argv, environment, std::cout, std::cerr);
}
