#include "tools/pelmctl/cli.h"

#include <CLI/CLI.hpp>
#include <limits>
#include <string>
#include <vector>

#include "core/pelm_dev.h"
#include "tools/pelmctl/device_list.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/monitor.h"
#include "tools/pelmctl/operations.h"
#include "tools/pelmctl/status_names.h"

namespace pelmctl {
namespace {

constexpr double kDefaultDemoSeconds = 20;
// Long enough to open the web view and watch.
constexpr double kDefaultWebDemoSeconds = 60;
constexpr int kHighestPort = 65535;

struct Arguments {
  bool sim = false;
  bool json = false;
  double seconds = 0;
  bool plain = false;
  std::vector<int> webPort;  // empty: any free port
  std::string family;
  std::string index;
  std::string operation;
  std::vector<std::string> values;
};

// Opens the library for one command and closes it on every way out.
class LibrarySession {
 public:
  explicit LibrarySession(Simulation* simulation) {
    if (simulation) simulation->PlugCockpit();
    PelmDev_Init(nullptr);
  }
  ~LibrarySession() { PelmDev_Terminate(); }
  LibrarySession(const LibrarySession&) = delete;
  LibrarySession& operator=(const LibrarySession&) = delete;
};

int32_t ParseIndex(const std::string& text) {
  const uint32_t index = ParseNumber(text, "device index");
  if (index > static_cast<uint32_t>(std::numeric_limits<int32_t>::max())) {
    throw UsageError("device index " + text + " is out of range");
  }
  return static_cast<int32_t>(index);
}

std::string FamilyNames() {
  std::string names;
  for (const Family& family : AllFamilies()) names += (names.empty() ? "" : ", ") + std::string(family.name);
  return names;
}

std::string OperationList(Direction direction) {
  std::string text;
  std::string_view family;
  for (const Operation& operation : AllOperations()) {
    if (operation.direction != direction) continue;
    if (operation.family != family) {
      family = operation.family;
      text += "\n  " + std::string(family) + ":";
    }
    text += "\n    " + Synopsis(operation);
  }
  return text;
}

int ReportStatus(const Operation& operation, int32_t index, int32_t status, std::ostream& err) {
  if (status == PELM_SUCCESS) return kExitSuccess;
  err << "pelmctl: " << operation.family << " " << index << " " << operation.name << " failed: " << StatusName(status);
  const std::string advice = StatusAdvice(status);
  if (!advice.empty()) err << " (" << advice << ")";
  err << "\n";
  return kExitFailure;
}

int RunOperation(Direction direction, const Arguments& arguments, Simulation* simulation, std::ostream& out,
                 std::ostream& err) {
  const Operation& operation = FindOperation(arguments.family, arguments.operation, direction);
  const int32_t index = ParseIndex(arguments.index);
  const LibrarySession session(simulation);
  const OperationResult result = Invoke(operation, index, arguments.values);
  if (result.status == PELM_SUCCESS) {
    for (std::size_t i = 0; i < result.values.size(); ++i) {
      const std::string name = i < operation.outputNames.size() ? std::string(operation.outputNames[i]) : "value";
      out << name << "=" << result.values[i] << "\n";
    }
  }
  return ReportStatus(operation, index, result.status, err);
}

const std::atomic<bool>& StopFlag(const Environment& environment) {
  static const std::atomic<bool> kNeverStop{false};
  return environment.stop ? *environment.stop : kNeverStop;
}

}  // namespace

int Run(int argc, const char* const* argv, const Environment& environment, std::ostream& out, std::ostream& err) {
  CLI::App app{"pelmctl: look at and drive USB cockpit panels through the PELMDEV library", "pelmctl"};
  Arguments arguments;
  app.set_version_flag("--version", "pelmctl " PELMCTL_VERSION);
  app.add_flag("--sim", arguments.sim, "Use a simulated cockpit of all eighteen panel models instead of real panels");
  app.require_subcommand(1);

  CLI::App* list = app.add_subcommand("list", "List every panel by model and slot");
  list->add_flag("--json", arguments.json, "Print JSON instead of a table");

  CLI::App* monitor = app.add_subcommand("monitor", "Print input and plug events as they happen, until Ctrl-C");
  monitor->add_option("--seconds", arguments.seconds, "Stop after this many seconds")->check(CLI::PositiveNumber);

  CLI::App* set = app.add_subcommand("set", "Call a setter: pelmctl set FAMILY INDEX OPERATION ARGS...");
  set->footer("Families and operations:" + OperationList(Direction::Set));
  CLI::App* get = app.add_subcommand("get", "Call a getter: pelmctl get FAMILY INDEX OPERATION [ARGS...]");
  get->footer("Families and operations:" + OperationList(Direction::Get));
  for (CLI::App* command : {set, get}) {
    command->add_option("family", arguments.family, "Panel family: " + FamilyNames())->required();
    command->add_option("index", arguments.index, "Device index within the family, from 0")->required();
    command->add_option("operation", arguments.operation, "Operation (see below)")->required();
    command->add_option("arguments", arguments.values, "The operation's arguments");
  }

  CLI::App* demo = app.add_subcommand("demo", "Play a scripted session on a simulated cockpit");
  demo->add_option("--seconds", arguments.seconds, "Length of the session (default 20)")->check(CLI::PositiveNumber);
  demo->add_flag("--plain", arguments.plain, "Print a plain log even in a terminal");
  CLI::Option* web = demo->add_option("--web", arguments.webPort,
                                      "Also serve the web view on 127.0.0.1:PORT (default: a free port; the session "
                                      "then lasts 60 s)")
                         ->expected(0, 1)
                         ->check(CLI::Range(0, kHighestPort));

  CLI::App* serve = app.add_subcommand("serve", "Serve the web view of the simulated cockpit and print its events, "
                                                "until Ctrl-C");
  serve->add_option("port", arguments.webPort, "Port on 127.0.0.1 (default: a free one)")
      ->expected(0, 1)
      ->check(CLI::Range(0, kHighestPort));

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, out, err);
  }

  const bool needsSimulation = arguments.sim || demo->parsed() || serve->parsed();
  const int webPort = arguments.webPort.empty() ? 0 : arguments.webPort.front();
  if (needsSimulation && environment.simulation == nullptr) return environment.handOffToSimulator();
  Simulation* simulation = environment.simulation;

  try {
    if (list->parsed()) {
      const LibrarySession session(simulation);
      const std::vector<ListedDevice> devices = CollectDevices();
      const std::vector<UnopenedPanel> unopened = CollectUnopenedPanels();
      out << (arguments.json ? FormatDeviceJson(devices, unopened) : FormatDeviceTable(devices, unopened));
      return kExitSuccess;
    }
    if (monitor->parsed()) {
      RunMonitor({arguments.seconds}, simulation, StopFlag(environment), out);
      return kExitSuccess;
    }
    if (serve->parsed()) {
      if (simulation->ServeWebView(webPort, out) < 0) return kExitFailure;
      MonitorOptions options;
      options.moveControls = false;
      RunMonitor(options, simulation, StopFlag(environment), out);
      return kExitSuccess;
    }
    if (set->parsed()) return RunOperation(Direction::Set, arguments, simulation, out, err);
    if (get->parsed()) return RunOperation(Direction::Get, arguments, simulation, out, err);
    const bool withWeb = web->count() > 0;
    const double seconds =
        arguments.seconds > 0 ? arguments.seconds : (withWeb ? kDefaultWebDemoSeconds : kDefaultDemoSeconds);
    DemoOptions options{seconds, environment.outputIsTerminal && !arguments.plain};
    if (withWeb) options.webPort = webPort;
    return simulation->RunDemo(options, out);
  } catch (const UsageError& error) {
    err << "pelmctl: " << error.what() << "\n";
    return kExitUsage;
  }
}

}  // namespace pelmctl
