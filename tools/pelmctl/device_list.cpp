#include "tools/pelmctl/device_list.h"

#include <cstdio>
#include <cstring>

#include "core/pelm_dev.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/operations.h"

namespace pelmctl {
namespace {

// The library refuses slot indices beyond a model's table with PELM_ERR_INDEX,
// which is how the walk finds each table's end without knowing its size.
constexpr int32_t kSlotSearchLimit = 256;

std::string JsonString(const std::string& text) {
  std::string quoted = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') {
      quoted += '\\';
      quoted += c;
    } else if (static_cast<unsigned char>(c) < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      quoted += escape;
    } else {
      quoted += c;
    }
  }
  return quoted + "\"";
}

// A removed device keeps its slot; its control-state getter says whether it is
// connected, without a transfer.
bool IsConnected(const Family& family, int32_t index) {
  for (const Operation& operation : AllOperations()) {
    const bool readsControls = operation.name == "control-vals" || operation.name == "switch-vals" ||
                               operation.name == "dial-vals" || operation.name == "keycodes";
    if (operation.family == family.name && operation.direction == Direction::Get && readsControls) {
      return Invoke(operation, index, {}).status != PELM_ERR_NODEVICE;
    }
  }
  return false;
}

}  // namespace

std::vector<ListedDevice> CollectDevices() {
  std::vector<ListedDevice> devices;
  for (const Family& family : AllFamilies()) {
    for (int32_t index = 0; index < kSlotSearchLimit; ++index) {
      PelmDevInfo2 info{};
      info.structSize = sizeof info;
      const int32_t status = PelmDev_GetDeviceInfo2(family.modelType, index, &info);
      if (status == PELM_ERR_INDEX) break;
      if (status != PELM_SUCCESS) continue;
      devices.push_back({std::string(family.name), std::string(family.title), family.modelType, index,
                         IsConnected(family, index), std::string(info.devicePath, strnlen(info.devicePath, sizeof info.devicePath)),
                         info.versionNumber,
                         std::string(info.serialNumber, strnlen(info.serialNumber, sizeof info.serialNumber))});
    }
  }
  return devices;
}

std::string FormatDeviceTable(const std::vector<ListedDevice>& devices) {
  if (devices.empty()) return "No panels found. Check that they are plugged in and that you may open their hidraw nodes.\n";
  std::string text;
  char line[512];
  std::snprintf(line, sizeof line, "%-12s %-5s %-9s %-7s %-16s %s\n", "FAMILY", "INDEX", "STATE", "VERSION", "SERIAL",
                "PATH");
  text += line;
  for (const ListedDevice& device : devices) {
    std::snprintf(line, sizeof line, "%-12s %-5d %-9s 0x%04X  %-16s %s\n", device.family.c_str(), device.index,
                  device.connected ? "connected" : "removed", device.versionNumber,
                  device.serialNumber.empty() ? "-" : device.serialNumber.c_str(), device.path.c_str());
    text += line;
  }
  return text;
}

std::string FormatDeviceJson(const std::vector<ListedDevice>& devices) {
  std::string text = "[";
  for (std::size_t i = 0; i < devices.size(); ++i) {
    const ListedDevice& device = devices[i];
    text += i == 0 ? "\n" : ",\n";
    text += "  {\"family\": " + JsonString(device.family) + ", \"model\": " + JsonString(device.title) +
            ", \"modelType\": " + std::to_string(device.modelType) + ", \"index\": " + std::to_string(device.index) +
            ", \"connected\": " + (device.connected ? "true" : "false") + ", \"path\": " + JsonString(device.path) +
            ", \"version\": " + std::to_string(device.versionNumber) +
            ", \"serial\": " + JsonString(device.serialNumber) + "}";
  }
  return text + (devices.empty() ? "]\n" : "\n]\n");
}

}  // namespace pelmctl
