#include "testbed/panel_server/panel_rack.h"

#include <sys/stat.h>

#include <charconv>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "platform/sim/panel.h"
#include "testbed/panel_server/hex_text.h"
#include "testbed/uhid/uhid_cockpit.h"

namespace pelm::testbed {
namespace {

constexpr int kLowestPort = 1, kHighestPort = 999;
constexpr uint16_t kUsbBus = 0x0003;
constexpr char kHidrawClass[] = "/sys/class/hidraw";
// A waiting request answers after this long whatever it was told, so a
// mistyped timeout cannot hold a connection for ever.
constexpr long kLongestWaitMs = 600'000;

// A request the server cannot carry out; its text is the reply's.
struct RequestError : std::runtime_error {
  using std::runtime_error::runtime_error;
};

std::vector<std::string> Words(const std::string& line) {
  std::vector<std::string> words;
  std::istringstream stream(line);
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

long Number(const std::string& text, const char* what, long lowest, long highest, int base = 10) {
  long value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, base);
  if (error != std::errc() || end != text.data() + text.size() || value < lowest || value > highest) {
    throw RequestError(std::string("bad ") + what + " '" + text + "' (expected " + (base == 16 ? "hex " : "") +
                       std::to_string(lowest) + ".." + std::to_string(highest) + ")");
  }
  return value;
}

void ExpectArguments(const std::vector<std::string>& words, std::size_t least, std::size_t most, const char* usage) {
  const std::size_t arguments = words.size() - 1;
  if (arguments < least || arguments > most) throw RequestError(std::string("usage: ") + usage);
}

int Port(const std::string& text) { return static_cast<int>(Number(text, "port", kLowestPort, kHighestPort)); }

std::string TransfersReply(const std::vector<vm::Transfer>& transfers) {
  std::string reply = "ok";
  for (const vm::Transfer& transfer : transfers) {
    reply += transfer.kind == vm::TransferKind::Feature ? " F:" : " O:";
    reply += ToHex(transfer.bytes);
    if (!transfer.accepted) reply += '!';
  }
  return reply;
}

std::string ReadFile(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// The hidraw nodes whose HID device has this identity (as the kernel writes
// it in the device's uevent).
std::vector<std::string> NodesOf(const vm::PanelIdentity& identity) {
  char hidId[32];
  std::snprintf(hidId, sizeof hidId, "HID_ID=%04X:%08X:%08X\n", kUsbBus, identity.vendorId, identity.productId);
  const std::string wanted[] = {hidId, "HID_PHYS=" + identity.phys + "\n", "HID_UNIQ=" + identity.serial + "\n"};
  std::vector<std::string> nodes;
  std::error_code error;
  for (auto entry = std::filesystem::directory_iterator(kHidrawClass, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const std::string uevent = ReadFile(entry->path() / "device" / "uevent");
    bool matches = true;
    for (const std::string& line : wanted) matches = matches && uevent.find(line) != std::string::npos;
    if (matches) nodes.push_back("/dev/" + entry->path().filename().string());
  }
  return nodes;
}

std::string NodesReply(const std::vector<std::string>& nodes) {
  std::string reply = "ok";
  for (const std::string& node : nodes) reply += " " + node;
  return reply;
}

}  // namespace

std::shared_ptr<vm::UhidPanel> PanelRack::PanelOn(int port) {
  std::lock_guard hold(mutex_);
  const auto found = panels_.find(port);
  if (found == panels_.end()) throw RequestError("no panel on port " + std::to_string(port) + ": plug one first");
  return found->second;
}

bool PanelRack::QuitRequested() const {
  std::lock_guard hold(mutex_);
  return quit_;
}

std::string PanelRack::Handle(const std::string& line) try {
  const std::vector<std::string> words = Words(line);
  if (words.empty()) throw RequestError("empty request");
  const std::string& verb = words[0];

  if (verb == "plug") {
    ExpectArguments(words, 2, 6, "plug PRODUCT_HEX PORT [vendor=HEX] [length=N] [serial=TEXT] [phys=TEXT]");
    const int port = Port(words[2]);
    vm::PanelIdentity identity{PELM_VENDOR_ID, static_cast<uint16_t>(Number(words[1], "product ID", 0, 0xFFFF, 16)),
                               vm::PhysFor(port), vm::SerialFor(port)};
    for (std::size_t i = 3; i < words.size(); ++i) {
      const std::string& option = words[i];
      const std::size_t equals = option.find('=');
      const std::string name = option.substr(0, equals), value = equals == std::string::npos ? "" : option.substr(equals + 1);
      if (equals == std::string::npos) throw RequestError("bad option '" + option + "' (expected NAME=VALUE)");
      if (name == "vendor") {
        identity.vendorId = static_cast<uint16_t>(Number(value, "vendor ID", 0, 0xFFFF, 16));
      } else if (name == "length") {
        identity.reportLength = static_cast<uint16_t>(Number(value, "report length", 2, vm::UhidPanel::kLongestReport));
      } else if (name == "serial") {
        identity.serial = value;
      } else if (name == "phys") {
        identity.phys = value;
      } else {
        throw RequestError("unknown option '" + name + "' (vendor, length, serial or phys)");
      }
    }
    std::lock_guard hold(mutex_);
    if (plugged_[port]) throw RequestError("port " + std::to_string(port) + " holds a plugged panel: unplug it first");
    const uint16_t behaviourId = identity.vendorId == PELM_VENDOR_ID ? identity.productId : 0;
    panels_[port] = std::make_shared<vm::UhidPanel>(identity, sim::MakePanel(behaviourId));
    plugged_[port] = true;
    return "ok";
  }
  if (verb == "unplug" || verb == "replug") {
    ExpectArguments(words, 1, 1, "unplug|replug PORT");
    const int port = Port(words[1]);
    const std::shared_ptr<vm::UhidPanel> panel = PanelOn(port);
    std::lock_guard hold(mutex_);
    const bool plug = verb == "replug";
    if (plugged_[port] == plug) {
      throw RequestError("the panel on port " + std::to_string(port) + (plug ? " is plugged" : " is unplugged already"));
    }
    if (plug) {
      panel->Replug();
    } else {
      panel->Unplug();
    }
    plugged_[port] = plug;
    return "ok";
  }
  if (verb == "input") {
    if (words.size() < 3) throw RequestError("usage: input PORT HEX [HEX...]");
    const std::shared_ptr<vm::UhidPanel> panel = PanelOn(Port(words[1]));
    for (std::size_t i = 2; i < words.size(); ++i) {
      const std::optional<std::vector<uint8_t>> report = FromHex(words[i]);
      if (!report || report->empty()) throw RequestError("bad report '" + words[i] + "' (two hex digits a byte)");
      if (!panel->InjectInput(*report)) {
        throw RequestError("the kernel refused input report " + std::to_string(i - 1) + " (is the panel plugged?)");
      }
    }
    return "ok";
  }
  if (verb == "received") {
    ExpectArguments(words, 1, 1, "received PORT");
    return TransfersReply(PanelOn(Port(words[1]))->TakeReceived());
  }
  if (verb == "wait-received") {
    ExpectArguments(words, 3, 3, "wait-received PORT COUNT TIMEOUT_MS");
    const std::shared_ptr<vm::UhidPanel> panel = PanelOn(Port(words[1]));
    const auto count = static_cast<std::size_t>(Number(words[2], "count", 0, INT32_MAX));
    const long timeout = Number(words[3], "timeout", 0, kLongestWaitMs);
    panel->WaitForReceived([count](const std::vector<vm::Transfer>& got) { return got.size() >= count; },
                           std::chrono::milliseconds(timeout));
    return TransfersReply(panel->TakeReceived());
  }
  if (verb == "fail-sends") {
    ExpectArguments(words, 2, 2, "fail-sends PORT N");
    PanelOn(Port(words[1]))->FailNextSends(static_cast<int>(Number(words[2], "count", 0, INT32_MAX)));
    return "ok";
  }
  if (verb == "fail-feature-reads") {
    ExpectArguments(words, 2, 2, "fail-feature-reads PORT 0|1");
    PanelOn(Port(words[1]))->FailFeatureReads(Number(words[2], "switch", 0, 1) == 1);
    return "ok";
  }
  if (verb == "open") {
    ExpectArguments(words, 1, 1, "open PORT");
    return PanelOn(Port(words[1]))->IsOpen() ? "ok 1" : "ok 0";
  }
  if (verb == "feature") {
    ExpectArguments(words, 2, 2, "feature PORT ID");
    const auto id = static_cast<uint8_t>(Number(words[2], "report ID", 0, UINT8_MAX));
    const vm::Report answer = PanelOn(Port(words[1]))->FeatureAnswer(id);
    if (answer.empty()) throw RequestError("the panel refuses a feature read of report " + words[2]);
    return "ok " + ToHex(answer);
  }
  if (verb == "node") {
    ExpectArguments(words, 1, 1, "node PORT");
    return NodesReply(NodesOf(PanelOn(Port(words[1]))->Identity()));
  }
  if (verb == "mode") {
    ExpectArguments(words, 2, 2, "mode PORT OCTAL");
    const auto mode = static_cast<mode_t>(Number(words[2], "mode", 0, 0777, 8));
    const std::vector<std::string> nodes = NodesOf(PanelOn(Port(words[1]))->Identity());
    if (nodes.empty()) throw RequestError("the panel on port " + words[1] + " has no hidraw node yet");
    for (const std::string& node : nodes) {
      if (chmod(node.c_str(), mode) != 0) throw RequestError("cannot change the mode of " + node);
    }
    return NodesReply(nodes);
  }
  if (verb == "reset" || verb == "quit") {
    ExpectArguments(words, 0, 0, "reset|quit");
    std::lock_guard hold(mutex_);
    panels_.clear();
    plugged_.clear();
    quit_ = verb == "quit";
    return "ok";
  }
  throw RequestError("unknown request '" + verb + "' (see PROTOCOL.md)");
} catch (const std::exception& error) {
  return std::string("error ") + error.what();
}

}  // namespace pelm::testbed
