#pragma once
// Lines from the library's callbacks: the input callbacks run on reader
// threads and the connect callback on the main thread, so every line goes out
// whole under one lock, with the time it happened.

#include <mutex>
#include <ostream>
#include <string>

namespace pelmctl {

class EventPrinter {
 public:
  explicit EventPrinter(std::ostream& out) : out_(out) {}
  void Print(const std::string& line);

 private:
  std::mutex mutex_;
  std::ostream& out_;
};

// "10:42:07.123", local time.
std::string Timestamp();

}  // namespace pelmctl
