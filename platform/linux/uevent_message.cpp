#include "platform/linux/uevent_message.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstring>

namespace pelm::linux_hid {
namespace {

constexpr std::string_view kUdevPrefix{"libudev\0", 8};
// udev's header: prefix, magic, header size, then the offset and length of the
// property list (all 32-bit, in the host's byte order).
constexpr std::size_t kUdevPropertiesOffsetAt = 16;
constexpr std::size_t kUdevPropertiesLengthAt = 20;
constexpr std::size_t kUdevHeaderMinimum = 24;

constexpr std::string_view kDevDirectory = "/dev/";
constexpr std::string_view kHidrawPrefix = "hidraw";

uint32_t Read32(const char* at) {
  uint32_t value;
  std::memcpy(&value, at, sizeof value);
  return value;
}

}  // namespace

std::optional<Uevent> ParseUeventMessage(const char* message, std::size_t length) {
  std::string_view properties;
  const std::string_view whole(message, length);
  if (whole.substr(0, kUdevPrefix.size()) == kUdevPrefix) {
    if (length < kUdevHeaderMinimum) return std::nullopt;
    const uint32_t offset = Read32(message + kUdevPropertiesOffsetAt);
    const uint32_t size = Read32(message + kUdevPropertiesLengthAt);
    if (offset > length || size > length - offset) return std::nullopt;
    properties = whole.substr(offset, size);
  } else {
    // The kernel's form starts with "action@devpath" and a NUL.
    const std::size_t headerEnd = whole.find('\0');
    if (headerEnd == std::string_view::npos || whole.substr(0, headerEnd).find('@') == std::string_view::npos) {
      return std::nullopt;
    }
    properties = whole.substr(headerEnd + 1);
  }

  std::map<std::string_view, std::string_view> values;
  while (!properties.empty()) {
    const std::size_t end = std::min(properties.find('\0'), properties.size());
    const std::string_view entry = properties.substr(0, end);
    const std::size_t equals = entry.find('=');
    if (equals != std::string_view::npos) values[entry.substr(0, equals)] = entry.substr(equals + 1);
    properties.remove_prefix(std::min(end + 1, properties.size()));
  }
  const auto action = values.find("ACTION");
  const auto subsystem = values.find("SUBSYSTEM");
  if (action == values.end() || subsystem == values.end()) return std::nullopt;
  Uevent event{std::string(action->second), std::string(subsystem->second), {}, {}};
  if (const auto devpath = values.find("DEVPATH"); devpath != values.end()) event.devpath = devpath->second;
  if (const auto devname = values.find("DEVNAME"); devname != values.end()) event.devname = devname->second;
  return event;
}

std::optional<std::string> HidrawNodeName(std::string_view devname) {
  if (devname.starts_with(kDevDirectory)) devname.remove_prefix(kDevDirectory.size());
  if (!devname.starts_with(kHidrawPrefix)) return std::nullopt;
  const std::string_view number = devname.substr(kHidrawPrefix.size());
  if (number.empty() || !std::all_of(number.begin(), number.end(), [](char c) {
        return std::isdigit(static_cast<unsigned char>(c)) != 0;
      })) {
    return std::nullopt;
  }
  return std::string(devname);
}

}  // namespace pelm::linux_hid
