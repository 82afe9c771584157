#pragma once
// The demo's event log: lines from the callbacks (reader threads) and the
// script (main thread), kept for the dashboard and echoed in plain mode.

#include <cstddef>
#include <deque>
#include <mutex>
#include <ostream>
#include <string>
#include <vector>

namespace pelmctl {

class EventLog {
 public:
  // `echo`: where to print each line as it comes, or null to keep them only.
  explicit EventLog(std::ostream* echo) : echo_(echo) {}
  void Add(const std::string& line);
  // The newest `count` lines, oldest first.
  std::vector<std::string> Latest(std::size_t count) const;

 private:
  static constexpr std::size_t kLinesKept = 64;
  mutable std::mutex mutex_;
  std::deque<std::string> lines_;
  std::ostream* echo_;
};

}  // namespace pelmctl
