#pragma once
// The benchmarks, one per figure group. Each starts from an empty simulated
// bus and leaves the library terminated.

#include <vector>

#include "bench/bench_support.h"

namespace pelm::bench {

std::vector<Figure> MeasureMemoryPerPanel(const RunLength& length);
std::vector<Figure> MeasureInitAndTerminate(const RunLength& length);
std::vector<Figure> MeasureIdleCpu(const RunLength& length);
std::vector<Figure> MeasureInputLatency(const RunLength& length);
std::vector<Figure> MeasureSetterCost(const RunLength& length);
std::vector<Figure> MeasureWriterThroughput(const RunLength& length);
std::vector<Figure> MeasureWebViewLatency(const RunLength& length);

}  // namespace pelm::bench
