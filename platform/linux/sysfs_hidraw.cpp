#include "platform/linux/sysfs_hidraw.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <charconv>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>

namespace pelm::linux_hid {
namespace fs = std::filesystem;
namespace {

constexpr std::string_view kHidrawPrefix = "hidraw";
// HID_ID is "bus:vendor:product", each in hexadecimal (4, 8 and 8 digits).
constexpr std::size_t kHidIdFields = 3;
constexpr uint32_t kBusUsb = 0x0003;
// Between the physical path and the serial number, off USB.
constexpr char kSerialSeparator = '/';

std::optional<std::string> ReadFile(const fs::path& file) {
  std::ifstream in(file);
  if (!in) return std::nullopt;
  std::ostringstream text;
  text << in.rdbuf();
  return text.str();
}

std::optional<uint32_t> ParseHex(std::string_view text) {
  while (!text.empty() && std::isspace(static_cast<unsigned char>(text.back()))) text.remove_suffix(1);
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value, 16);
  if (error != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return value;
}

std::string Upper(std::string text) {
  for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return text;
}

std::optional<std::array<uint32_t, kHidIdFields>> ParseHidId(const std::string& hidId) {
  std::array<uint32_t, kHidIdFields> fields{};
  std::size_t start = 0;
  for (std::size_t i = 0; i < kHidIdFields; ++i) {
    const std::size_t colon = i + 1 < kHidIdFields ? hidId.find(':', start) : hidId.size();
    if (colon == std::string::npos) return std::nullopt;
    const std::optional<uint32_t> value = ParseHex(std::string_view(hidId).substr(start, colon - start));
    if (!value) return std::nullopt;
    fields[i] = *value;
    start = colon + 1;
  }
  return fields;
}

// The bcdDevice of the nearest USB device above the HID device.
uint16_t VersionAbove(const fs::path& hidDevice, const fs::path& root) {
  std::error_code error;
  for (fs::path dir = hidDevice.parent_path(); !dir.empty() && dir != root && dir != dir.root_path();
       dir = dir.parent_path()) {
    if (fs::exists(dir / "bcdDevice", error)) {
      const std::optional<std::string> text = ReadFile(dir / "bcdDevice");
      const std::optional<uint32_t> version = text ? ParseHex(*text) : std::nullopt;
      return version ? static_cast<uint16_t>(*version) : 0;
    }
  }
  return 0;
}

}  // namespace

std::map<std::string, std::string> ParseUeventFile(std::string_view text) {
  std::map<std::string, std::string> values;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    const std::string_view line = text.substr(0, end);
    const std::size_t equals = line.find('=');
    if (equals != std::string_view::npos) values[std::string(line.substr(0, equals))] = line.substr(equals + 1);
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return values;
}

std::optional<std::string> DevicePathFor(const std::map<std::string, std::string>& hidUevent,
                                         const std::string& sysfsName) {
  const auto id = hidUevent.find("HID_ID");
  if (id == hidUevent.end()) return std::nullopt;
  const auto fields = ParseHidId(id->second);
  if (!fields) return std::nullopt;
  const auto phys = hidUevent.find("HID_PHYS");
  std::string identity = phys != hidUevent.end() && !phys->second.empty() ? phys->second : sysfsName;
  const auto uniq = hidUevent.find("HID_UNIQ");
  if ((*fields)[0] != kBusUsb && uniq != hidUevent.end() && !uniq->second.empty()) {
    identity += kSerialSeparator + uniq->second;
  }
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "HIDRAW:%04X:%04X:", (*fields)[1] & 0xFFFF, (*fields)[2] & 0xFFFF);
  return Upper(prefix + identity);
}

std::optional<HidrawNode> DescribeNode(const std::string& sysfsRoot, const std::string& node) {
  std::error_code error;
  const fs::path root = fs::path(sysfsRoot);
  const fs::path classEntry = root / "class" / "hidraw" / node;
  const fs::path nodeDir = fs::canonical(classEntry, error);
  if (error) return std::nullopt;
  const fs::path hidDevice = fs::canonical(classEntry / "device", error);
  if (error) return std::nullopt;
  const std::optional<std::string> uevent = ReadFile(hidDevice / "uevent");
  if (!uevent) return std::nullopt;
  const std::map<std::string, std::string> values = ParseUeventFile(*uevent);
  const std::optional<std::string> path = DevicePathFor(values, hidDevice.filename().string());
  if (!path) return std::nullopt;

  HidrawNode described;
  described.node = node;
  described.hidDevice = hidDevice.filename().string();
  // The uevent DEVPATH: the node's directory below the sysfs root, with a leading slash.
  described.devpath = (fs::path("/") / nodeDir.lexically_relative(fs::canonical(root, error))).string();
  const auto fields = ParseHidId(values.at("HID_ID"));
  described.vendorId = static_cast<uint16_t>((*fields)[1]);
  described.productId = static_cast<uint16_t>((*fields)[2]);
  described.versionNumber = VersionAbove(hidDevice, fs::canonical(root, error));
  if (const auto uniq = values.find("HID_UNIQ"); uniq != values.end()) described.uniq = uniq->second;
  described.path = *path;
  return described;
}

std::vector<HidrawNode> ScanHidrawNodes(const std::string& sysfsRoot) {
  std::vector<std::pair<unsigned, std::string>> nodes;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(fs::path(sysfsRoot) / "class" / "hidraw", error)) {
    const std::string name = entry.path().filename().string();
    if (name.rfind(kHidrawPrefix, 0) != 0) continue;
    unsigned number = 0;
    const char* digits = name.data() + kHidrawPrefix.size();
    if (std::from_chars(digits, name.data() + name.size(), number).ec != std::errc()) continue;
    nodes.emplace_back(number, name);
  }
  std::sort(nodes.begin(), nodes.end());
  std::vector<HidrawNode> described;
  for (const auto& [number, name] : nodes) {
    if (std::optional<HidrawNode> node = DescribeNode(sysfsRoot, name)) described.push_back(std::move(*node));
  }
  return described;
}

bool SamePathIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
           return std::toupper(static_cast<unsigned char>(x)) == std::toupper(static_cast<unsigned char>(y));
         });
}

}  // namespace pelm::linux_hid
