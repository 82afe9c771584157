#include "tools/pelmctl/stop_signal.h"

#include <csignal>

namespace pelmctl {
namespace {

std::atomic<bool> gStopRequested{false};
static_assert(std::atomic<bool>::is_always_lock_free, "the signal handler needs a lock-free flag");

extern "C" void RequestStop(int) { gStopRequested = true; }

}  // namespace

const std::atomic<bool>& InstallStopSignals() {
  struct sigaction action {};
  action.sa_handler = RequestStop;
  sigemptyset(&action.sa_mask);
  sigaction(SIGINT, &action, nullptr);
  sigaction(SIGTERM, &action, nullptr);
  return gStopRequested;
}

}  // namespace pelmctl
