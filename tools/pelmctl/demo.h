#pragma once
// `pelmctl demo`: plugs the simulated cockpit, opens it as a host would, plays
// the scripted session and checks that the panels ended up showing what the
// host meant them to.

#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "platform/sim/web/web_server.h"
#include "tools/pelmctl/cockpit_host.h"
#include "tools/pelmctl/simulation.h"

namespace pelmctl {

struct DemoResult {
  HostCounts counts;
  std::size_t reportsSent;
  int inputsSent;
  std::vector<std::string> failures;  // what the script expected and did not see
  bool Passed() const { return failures.empty(); }
};

DemoResult PlayDemo(const DemoOptions& options, std::ostream& out);

// The web view of the simulated cockpit, served on 127.0.0.1 while it lives.
struct WebView {
  std::unique_ptr<pelm::sim::web::WebServer> server;  // null when the port could not be bound
  std::string message;  // where to open it, or why it is not served
};
WebView ServeWebView(int port);

// "demo passed: 27 inputs delivered, ..." or "demo FAILED: ...".
std::string SummaryLine(const DemoResult& result);

}  // namespace pelmctl
