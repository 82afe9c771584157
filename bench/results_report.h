#pragma once
// The results as a table for people and as JSON for tools.

#include <ostream>
#include <string>
#include <vector>

#include "bench/bench_support.h"

namespace pelm::bench {

void PrintTable(std::ostream& out, const std::vector<Figure>& figures, const std::vector<std::string>& notes);
void WriteJson(std::ostream& out, const std::vector<Figure>& figures, const std::vector<std::string>& notes);

}  // namespace pelm::bench
