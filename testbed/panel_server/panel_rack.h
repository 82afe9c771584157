#pragma once
// The panels the panel server holds, by port, and the requests of its line
// protocol (PROTOCOL.md beside this file) that act on them.

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "testbed/uhid/uhid_panel.h"

namespace pelm::testbed {

class PanelRack {
 public:
  // Answers one request line (without its newline) with one reply line.
  // Safe to call from several connections at once; a waiting request holds
  // no lock the others need.
  std::string Handle(const std::string& line);
  // Whether a `quit` was answered.
  bool QuitRequested() const;

 private:
  std::shared_ptr<vm::UhidPanel> PanelOn(int port);

  mutable std::mutex mutex_;
  std::map<int, std::shared_ptr<vm::UhidPanel>> panels_;
  std::map<int, bool> plugged_;
  bool quit_ = false;
};

}  // namespace pelm::testbed
