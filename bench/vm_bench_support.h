#pragma once
// What the benchmarks inside the test VM share: the clock and the percentile
// of a set of samples.

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace pelm::vm_bench {

using Clock = std::chrono::steady_clock;

inline int64_t NowNs() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(Clock::now().time_since_epoch()).count();
}

// The value at `fraction` (0 to 1) of the sorted samples; 0 for none.
inline double Percentile(std::vector<double> samples, double fraction) {
  if (samples.empty()) return 0;
  std::sort(samples.begin(), samples.end());
  return samples[static_cast<std::size_t>(fraction * static_cast<double>(samples.size() - 1))];
}

}  // namespace pelm::vm_bench
