#pragma once
// What the simulated cockpit does for the commands, so that the command code
// stays a plain host of the public interface. Only the simulator build of the
// tool has one.

#include <optional>
#include <ostream>

namespace pelmctl {

struct DemoOptions {
  double seconds;  // length of the scripted session
  bool dashboard;  // draw the live dashboard rather than a plain log
  std::optional<int> webPort = std::nullopt;  // serve the web view on this port (0: any free one)
};

class Simulation {
 public:
  virtual ~Simulation() = default;
  // Plugs every panel of the cockpit on the simulated bus; before PelmDev_Init.
  virtual void PlugCockpit() = 0;
  // One step of a pilot's hands on the controls, for `monitor`.
  virtual void MoveControls(int step) = 0;
  // Plays the scripted session; the exit status is 0 only when everything the
  // script expected happened.
  virtual int RunDemo(const DemoOptions& options, std::ostream& out) = 0;
  // Serves the web view of the cockpit on 127.0.0.1 until the simulation
  // ends, and prints its address; the port, or -1 when it cannot be bound.
  virtual int ServeWebView(int port, std::ostream& out) = 0;
};

}  // namespace pelmctl
