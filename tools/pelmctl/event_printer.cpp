#include "tools/pelmctl/event_printer.h"

#include <chrono>
#include <cstdio>
#include <ctime>

namespace pelmctl {

void EventPrinter::Print(const std::string& line) {
  const std::lock_guard lock(mutex_);
  out_ << Timestamp() << "  " << line << '\n' << std::flush;
}

std::string Timestamp() {
  using namespace std::chrono;
  constexpr int kMillisecondsPerSecond = 1000;
  const auto now = system_clock::now();
  const std::time_t seconds = system_clock::to_time_t(now);
  const auto millis = duration_cast<milliseconds>(now.time_since_epoch()).count() % kMillisecondsPerSecond;
  std::tm local{};
  localtime_r(&seconds, &local);
  char text[32];
  std::snprintf(text, sizeof text, "%02d:%02d:%02d.%03d", local.tm_hour, local.tm_min, local.tm_sec,
                static_cast<int>(millis));
  return text;
}

}  // namespace pelmctl
