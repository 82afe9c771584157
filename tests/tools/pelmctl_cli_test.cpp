// The command line as a user meets it: help, errors and their exit statuses,
// list output, the monitor, and the real-panel program handing --sim over.

#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "support/sim_fixture.h"
#include "tools/pelmctl/cli.h"
#include "tools/pelmctl/monitor.h"
#include "tools/pelmctl/sim_session.h"

namespace pelmctl {
namespace {

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

class PelmctlCommandLine : public pelm::test::SimTest {
 protected:
  Outcome Run(std::vector<const char*> words, bool withSimulation = true) {
    words.insert(words.begin(), "pelmctl");
    Environment environment;
    environment.simulation = withSimulation ? &simulation_ : nullptr;
    environment.handOffToSimulator = [this] {
      ++handOffs_;
      return kExitSuccess;
    };
    std::ostringstream out;
    std::ostringstream err;
    const int status = pelmctl::Run(static_cast<int>(words.size()), words.data(), environment, out, err);
    return {status, out.str(), err.str()};
  }
  SimSession simulation_;
  int handOffs_ = 0;
};

TEST_F(PelmctlCommandLine, WrongCommandLinesExitWithUsageStatusAndSayWhy) {
  EXPECT_NE(Run({}).status, kExitSuccess);
  EXPECT_NE(Run({"fly"}).status, kExitSuccess);
  const Outcome family = Run({"set", "radoi", "0", "brightness", "3"});
  EXPECT_EQ(family.status, kExitUsage);
  EXPECT_NE(family.err.find("unknown family 'radoi'"), std::string::npos);
  const Outcome index = Run({"get", "radio", "first", "brightness"});
  EXPECT_EQ(index.status, kExitUsage);
  EXPECT_NE(index.err.find("'first' is not a device index"), std::string::npos);
  const Outcome count = Run({"set", "warning", "0", "ind-color-value", "3"});
  EXPECT_EQ(count.status, kExitUsage);
  EXPECT_NE(count.err.find("usage: ind-color-value INDICATOR COLOR"), std::string::npos);
}

TEST_F(PelmctlCommandLine, FailedCallsNameTheStatus) {
  const Outcome missing = Run({"set", "radio", "7", "ldisplay-text", "118.00"});
  EXPECT_EQ(missing.status, kExitFailure);
  EXPECT_NE(missing.err.find("PELM_ERR_NODEVICE"), std::string::npos);
  const Outcome got = Run({"get", "warning", "0", "ind-color-value", "1"});
  EXPECT_EQ(got.status, kExitSuccess);
  EXPECT_EQ(got.out, "color=0\n");
}

TEST_F(PelmctlCommandLine, ListJsonHasAConnectedEntryForEveryPanelOfTheCockpit) {
  const Outcome list = Run({"--sim", "list", "--json"});
  ASSERT_EQ(list.status, kExitSuccess) << list.err;
  const std::string entryStart = "  {\"family\": \"";
  std::set<std::string> families;
  int entries = 0;
  std::istringstream lines(list.out);
  for (std::string line; std::getline(lines, line);) {
    if (!line.starts_with(entryStart)) continue;
    ++entries;
    families.insert(line.substr(entryStart.size(), line.find('"', entryStart.size()) - entryStart.size()));
    EXPECT_NE(line.find("\"connected\": true"), std::string::npos) << line;
  }
  EXPECT_EQ(families.size(), 18u);
  EXPECT_EQ(entries, 20);  // two radios and two button panels
}

TEST_F(PelmctlCommandLine, TheRealPanelProgramHandsSimulationOver) {
  EXPECT_EQ(Run({"--sim", "list"}, false).status, kExitSuccess);
  EXPECT_EQ(Run({"demo"}, false).status, kExitSuccess);
  EXPECT_EQ(handOffs_, 2);
}

TEST_F(PelmctlCommandLine, MonitorShowsTheSimulatedPilotsInputs) {
  std::ostringstream out;
  const std::atomic<bool> stop{false};
  constexpr double kSeconds = 1.5;
  const MonitorCounts counts = RunMonitor({kSeconds}, &simulation_, stop, out);
  EXPECT_GE(counts.inputs, 1);
  EXPECT_NE(out.str().find("input    radio 0: dial1=3 dial2=0 switches=0x00"), std::string::npos) << out.str();
}

TEST(PelmctlProgram, ListsTheSimulatedCockpitEndToEnd) {
  FILE* pipe = popen(PELMCTL_PROGRAM " --sim list", "r");
  ASSERT_NE(pipe, nullptr);
  std::string out;
  std::array<char, 256> chunk;
  while (fgets(chunk.data(), chunk.size(), pipe)) out += chunk.data();
  EXPECT_EQ(pclose(pipe), 0);
  EXPECT_NE(out.find("radio        1     connected 0x0110  SIM0050-2"), std::string::npos) << out;
}

}  // namespace
}  // namespace pelmctl
