#include "tools/pelmctl/event_log.h"

#include "tools/pelmctl/event_printer.h"

namespace pelmctl {

void EventLog::Add(const std::string& line) {
  const std::string stamped = Timestamp() + "  " + line;
  const std::lock_guard lock(mutex_);
  if (echo_) *echo_ << stamped << '\n' << std::flush;
  lines_.push_back(stamped);
  if (lines_.size() > kLinesKept) lines_.pop_front();
}

std::vector<std::string> EventLog::Latest(std::size_t count) const {
  const std::lock_guard lock(mutex_);
  const std::size_t first = lines_.size() > count ? lines_.size() - count : 0;
  return {lines_.begin() + static_cast<std::ptrdiff_t>(first), lines_.end()};
}

}  // namespace pelmctl
