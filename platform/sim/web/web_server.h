#pragma once
// The web view of the simulated cockpit: a small HTTP server on its own
// threads that serves one page drawing every panel of the bus, streams a new
// snapshot to the page whenever a panel receives a report or is plugged or
// unplugged (server-sent events), and takes the page's clicks as plugs,
// unplugs and input reports.
//
//   GET  /                    the page
//   GET  /state               the snapshot (cockpit_snapshot.h)
//   GET  /events              a snapshot at once, then one at every change
//   POST /panels/ID/plug      plug the panel in again (409 when it is in)
//   POST /panels/ID/unplug    unplug it (409 when it is out)
//   POST /panels/ID/input?report=HEX
//                             inject one input report of the model's length,
//                             report ID first (409 when the panel is out)
//
// A request that names no panel gets 404, a malformed one 400; neither
// changes anything.

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "platform/sim/sim_bus.h"

namespace httplib {
class Server;
}

namespace pelm::sim::web {

// Where the view listens unless told otherwise: this machine only.
inline constexpr const char* kLoopbackAddress = "127.0.0.1";

class WebServer {
 public:
  explicit WebServer(Bus& bus);
  // Stops the server: no thread of it runs once the destructor returns.
  ~WebServer();
  WebServer(const WebServer&) = delete;
  WebServer& operator=(const WebServer&) = delete;

  // Listens on `address`:`port` (port 0: a free one the system picks) and
  // serves on threads of its own. The port it listens on; -1 when it could not
  // bind (the port taken, the address not this machine's).
  int Start(const std::string& address, int port);
  // Ends every open event stream and waits for the server's threads.
  void Stop();
  int Port() const { return port_; }

 private:
  void AddRoutes();

  Bus& bus_;
  std::unique_ptr<httplib::Server> server_;
  std::thread listener_;
  std::atomic<bool> stopping_{false};
  std::atomic<bool> listenerEnded_{false};
  int port_ = 0;
};

}  // namespace pelm::sim::web
