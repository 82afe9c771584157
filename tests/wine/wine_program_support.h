#pragma once
// What the Windows test program needs beside GoogleTest: its deadlines, waits
// in milliseconds as Windows counts them, a watchdog for calls that may never
// return, and the line the runner reads.

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "testbed/panel_server/panel_client.h"
#include "testbed/wait_until.h"

namespace pelm::wine {

using testbed::PanelServerClient;
using testbed::ServerTransfer;
using Report = std::vector<uint8_t>;

// Generous: Wine under software emulation, on a machine shared with builds.
constexpr int kSlowDeadlineMs = 60000;
// For a report the device should receive: it takes well under a second when
// it comes at all.
constexpr int kTransferDeadlineMs = 15000;
// What the panel server's panels declare unless told otherwise.
constexpr std::size_t kDefaultReportLength = 8;
constexpr uint8_t kInputReportId = 1;

// The program cannot run its tests: the line the runner looks for says why.
inline int Fail(const std::string& why) {
  std::printf("PELM-WINE-RESULT setup failed: %s\n", why.c_str());
  return 1;
}

inline bool WaitUntil(const std::function<bool()>& condition, int deadlineMs = kSlowDeadlineMs) {
  return testbed::WaitUntil(condition, std::chrono::milliseconds(deadlineMs));
}

// Ends the process with a clear message if the scope it guards is still
// running after `deadlineMs`: for calls whose defect is never to return.
class Watchdog {
 public:
  Watchdog(const char* what, int deadlineMs)
      : done_(CreateEventA(nullptr, TRUE, FALSE, nullptr)), what_(what), deadlineMs_(deadlineMs),
        thread_(CreateThread(nullptr, 0, Watch, this, 0, nullptr)) {}
  ~Watchdog() {
    SetEvent(done_);
    WaitForSingleObject(thread_, INFINITE);
    CloseHandle(thread_);
    CloseHandle(done_);
  }
  Watchdog(const Watchdog&) = delete;
  Watchdog& operator=(const Watchdog&) = delete;

 private:
  static DWORD WINAPI Watch(void* self) {
    const Watchdog& watchdog = *static_cast<const Watchdog*>(self);
    if (WaitForSingleObject(watchdog.done_, static_cast<DWORD>(watchdog.deadlineMs_)) == WAIT_TIMEOUT) {
      std::printf("PELM-WINE-RESULT %s did not return within %d ms\n", watchdog.what_, watchdog.deadlineMs_);
      std::fflush(stdout);
      ExitProcess(1);
    }
    return 0;
  }

  const HANDLE done_;
  const char* const what_;
  const int deadlineMs_;
  const HANDLE thread_;
};

// Transfers as the panel server's protocol writes them, for messages.
inline std::string Describe(const std::vector<ServerTransfer>& transfers) {
  std::string text;
  for (const ServerTransfer& transfer : transfers) {
    text += text.empty() ? "" : " ";
    text += transfer.kind;
    text += ':';
    for (uint8_t byte : transfer.bytes) {
      char digits[3];
      std::snprintf(digits, sizeof digits, "%02x", byte);
      text += digits;
    }
    if (transfer.refused) text += '!';
  }
  return text.empty() ? "nothing" : text;
}

}  // namespace pelm::wine
