#pragma once
// Ctrl-C and SIGTERM raise a flag that long-running commands watch, so they
// can terminate the library cleanly instead of dying in the middle.

#include <atomic>

namespace pelmctl {

const std::atomic<bool>& InstallStopSignals();

}  // namespace pelmctl
