#pragma once
// What every benchmark shares: the figures it reports, simulated panels to
// measure on, and the process's own clocks (monotonic time, CPU time, resident
// memory).

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/sim/sim_bus.h"

namespace pelm::bench {

using Clock = std::chrono::steady_clock;

// One line of the results table.
struct Figure {
  std::string name;
  double value = 0;
  std::string unit;
  std::optional<double> limit;  // none for figures shown only for comparison
  bool higherIsBetter = false;
  std::string note;

  // Whether the value keeps its limit; none without a limit.
  std::optional<bool> Met() const;
};

// How long the benchmarks run: the full run gives the reported figures; the
// quick run (a tenth of the samples, one second idle) proves that every
// benchmark works, for instance under a sanitizer.
struct RunLength {
  bool quick = false;
  std::size_t Scaled(std::size_t full) const { return quick ? std::max<std::size_t>(full / 10, 1) : full; }
};

// The value at `fraction` (0 to 1) of the sorted samples; 0 for none.
double Percentile(std::vector<double> samples, double fraction);
double Median(std::vector<double> samples);

// A panel of the model with this product ID; instance numbers keep paths apart.
sim::DeviceDescription PanelDescription(uint16_t productId, int instance);
// A HID device of another vendor, which the library probes and leaves alone.
sim::DeviceDescription ForeignDeviceDescription(int instance);

// Plugs a device with its transfer log off, so that long runs only count.
std::shared_ptr<sim::SimDevice> PlugQuietly(const sim::DeviceDescription& description);
// Plugs `count` panels, taking the models in probe order in turn.
std::vector<std::shared_ptr<sim::SimDevice>> PlugMixedPanels(int count);
// True when every device has been opened at least once.
bool AllOpened(const std::vector<std::shared_ptr<sim::SimDevice>>& devices);

// Reports and output writes the device has received.
std::size_t SendsReceived(const sim::SimDevice& device);

// Busy-waits, yielding the core, until `condition` holds or `deadline` passes.
bool SpinUntil(const std::function<bool()>& condition, Clock::duration deadline);

std::size_t ResidentBytes();
// The system's load averages (1, 5, 15 minutes) as /proc/loadavg gives them:
// other work on the machine makes every figure slower.
std::string LoadAverages();
double ProcessCpuSeconds();

// A line of progress on standard error, so that the table stays clean.
void Progress(const std::string& line);

}  // namespace pelm::bench
