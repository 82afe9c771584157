#pragma once
// The little the Windows test program needs of a test framework: checks that
// report and carry on, named groups of them, polling waits with a deadline, a
// watchdog for calls that may never return, and a summary the runner reads.

#include <windows.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <functional>
#include <sstream>
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

inline int checksFailed = 0;
inline int groupsFailed = 0;
inline int groupsRun = 0;
inline const char* currentGroup = "";

inline void ReportFailure(const char* file, int line, const std::string& what) {
  ++checksFailed;
  std::printf("%s:%d: failure in %s: %s\n", file, line, currentGroup, what.c_str());
}

#define CHECK_MSG(condition, message)                                          \
  do {                                                                         \
    if (!(condition)) {                                                        \
      std::ostringstream checkText;                                            \
      checkText << #condition << " (" << message << ")";                       \
      ::pelm::wine::ReportFailure(__FILE__, __LINE__, checkText.str());        \
    }                                                                          \
  } while (0)
#define CHECK(condition) CHECK_MSG(condition, "")

// Runs a group of checks; a group fails on a failed check or an exception
// (the panel server's client throws when a request fails).
inline void RunGroup(const char* name, const std::function<void()>& group) {
  currentGroup = name;
  ++groupsRun;
  const int failedBefore = checksFailed;
  const DWORD started = GetTickCount();
  std::printf("[ RUN      ] %s\n", name);
  try {
    group();
  } catch (const std::exception& error) {
    ReportFailure(__FILE__, __LINE__, std::string("exception: ") + error.what());
  }
  const bool passed = checksFailed == failedBefore;
  if (!passed) ++groupsFailed;
  std::printf("[ %s ] %s (%lu ms)\n", passed ? "      OK" : "  FAILED", name,
              static_cast<unsigned long>(GetTickCount() - started));
}
#define RUN(group, ...) ::pelm::wine::RunGroup(#group, [&] { group(__VA_ARGS__); })

// The line the runner looks for, and the program's status.
inline int Summary() {
  std::printf("PELM-WINE-RESULT %d of %d groups passed\n", groupsRun - groupsFailed, groupsRun);
  return groupsFailed == 0 ? 0 : 1;
}

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
