// Runs every benchmark on the simulated bus, prints one table and writes it as
// JSON.
//
//   pelm_bench [--quick] [results.json]
//
// Memory is measured first, while the process has not yet run other threads
// whose cached stacks and heap would hide what opening panels costs.

#include <cstring>
#include <fstream>
#include <iostream>
#include <thread>

#include "bench/benchmarks.h"
#include "bench/results_report.h"

namespace {

constexpr const char* kDefaultResultsPath = "results.json";

const std::vector<std::string>& MethodNotes() {
  static const std::vector<std::string> notes = {
      "Simulated bus, one process; every device has its transfer log off and only counts transfers.",
      "Input latency: a radio panel; each report is injected after the previous one arrived. The floor is a "
      "thread calling ReadInput on a second radio panel in a loop; floor and library reports alternate.",
      "Setter cost: with the writer asleep each call is timed alone; between calls, untimed, the writer sends "
      "the report and goes back to sleep, so every call wakes it. The floor is a bare condition-variable wake of "
      "a sleeping thread, timed the same way. 'Writer busy': the device takes 1 ms per report, so the writer is "
      "inside it while 19 calls are timed as a batch and none of them has to wake it; the floor is a bare "
      "append of an allocated report to a locked queue.",
      "Writer throughput: button panels (instant devices); producers keep the queues full and the count of "
      "reports the devices received over the window is divided by its length.",
      "Init/Terminate: timed from the host's call to its return; the panels' reader and writer threads are "
      "started and joined inside.",
      "Web view: a radio panel; each display text is set once the page event of the previous one arrived, "
      "at a client of the event stream in this process.",
      "Idle cost: whole-process user+system time and the context switches of every thread but the "
      "benchmark's own, which sleeps; an idle panel's threads should not run at all.",
  };
  return notes;
}

}  // namespace

int main(int argc, char** argv) {
  pelm::bench::RunLength length;
  const char* resultsPath = kDefaultResultsPath;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--quick") == 0) {
      length.quick = true;
    } else if (argv[i][0] == '-') {
      std::cerr << "pelm_bench: unknown option " << argv[i] << "\nusage: pelm_bench [--quick] [results.json]\n";
      return 2;
    } else {
      resultsPath = argv[i];
    }
  }

  using Measure = std::vector<pelm::bench::Figure> (*)(const pelm::bench::RunLength&);
  const Measure measures[] = {
      &pelm::bench::MeasureMemoryPerPanel, &pelm::bench::MeasureInitAndTerminate,
      &pelm::bench::MeasureIdleCpu,        &pelm::bench::MeasureInputLatency,
      &pelm::bench::MeasureSetterCost,     &pelm::bench::MeasureWriterThroughput,
      &pelm::bench::MeasureWebViewLatency,
  };
  std::cerr << "Running benchmarks" << (length.quick ? " (quick run: fewer samples, figures are rough)" : "")
            << ":\n";
  std::vector<std::string> notes = MethodNotes();
  notes.push_back("Load average before: " + pelm::bench::LoadAverages() + " on " +
                  std::to_string(std::thread::hardware_concurrency()) + " cores.");
  std::vector<pelm::bench::Figure> figures;
  for (const Measure measure : measures) {
    for (auto& figure : measure(length)) figures.push_back(std::move(figure));
  }
  notes.push_back("Load average after: " + pelm::bench::LoadAverages() + ".");

  std::cout << "\n";
  pelm::bench::PrintTable(std::cout, figures, notes);
  std::ofstream json(resultsPath);
  pelm::bench::WriteJson(json, figures, notes);
  json.close();
  if (!json) {
    std::cerr << "pelm_bench: could not write " << resultsPath << "; check that its folder exists and is writable\n";
    return 1;
  }
  std::cout << "\nResults written to " << resultsPath << "\n";
  return 0;
}
