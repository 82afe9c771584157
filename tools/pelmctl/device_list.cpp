#include "tools/pelmctl/device_list.h"

#include <cstdio>
#include <cstring>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "tools/pelmctl/families.h"
#include "tools/pelmctl/operations.h"

namespace pelmctl {
namespace {

// The group the udev rule gives the panels' nodes to (set by the build, as
// the rule is).
constexpr char kPanelGroup[] = PELM_UDEV_GROUP;

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

std::vector<UnopenedPanel> CollectUnopenedPanels() {
  uint32_t count = 0;
  std::vector<PelmDevExt_PresentPanel> present;
  // The count can grow between two calls (a panel plugged in meanwhile).
  do {
    present.resize(count);
    if (PelmDevExt_ListPresentPanels(present.data(), count, &count) != PELM_SUCCESS) return {};
  } while (count > present.size());
  present.resize(count);
  std::vector<UnopenedPanel> unopened;
  for (const PelmDevExt_PresentPanel& panel : present) {
    if (panel.openInSlot != 0) continue;
    const Family* family = FamilyByModelType(panel.modelType);
    if (family == nullptr) continue;
    unopened.push_back({std::string(family->name), std::string(family->title), panel.modelType, panel.deviceIndex,
                        panel.openStatus, panel.osError,
                        std::string(panel.devicePath, strnlen(panel.devicePath, sizeof panel.devicePath)),
                        std::string(panel.node, strnlen(panel.node, sizeof panel.node))});
  }
  return unopened;
}

std::string DescribeUnopened(const UnopenedPanel& panel) {
  switch (panel.openStatus) {
    case PELMEXT_OPEN_PERMISSION_DENIED:
      return std::string("present, permission denied: add yourself to group ") + kPanelGroup +
             " (sudo usermod -aG " + kPanelGroup +
             " $USER, then log in again) or install the rule (sudo cmake --install build/release && sudo udevadm "
             "control --reload && sudo udevadm trigger --subsystem-match=hidraw)";
    case PELMEXT_OPEN_GONE:
      return "present, but gone while it was looked at: plug it in again";
    case PELMEXT_OPEN_OK:
      return panel.index < 0 ? "present, not opened: every slot of its model is taken"
                             : "present, not opened: it came back after the library looked; run again";
    default:
      return std::string("present, cannot be opened: ") + std::strerror(panel.osError);
  }
}

std::string FormatDeviceTable(const std::vector<ListedDevice>& devices, const std::vector<UnopenedPanel>& unopened) {
  if (devices.empty() && unopened.empty()) {
    return "No panels found. Check that they are plugged in and that you may open their hidraw nodes.\n";
  }
  std::string text;
  char line[512];
  if (!devices.empty()) {
    std::snprintf(line, sizeof line, "%-12s %-5s %-9s %-7s %-16s %s\n", "FAMILY", "INDEX", "STATE", "VERSION",
                  "SERIAL", "PATH");
    text += line;
  }
  for (const ListedDevice& device : devices) {
    std::snprintf(line, sizeof line, "%-12s %-5d %-9s 0x%04X  %-16s %s\n", device.family.c_str(), device.index,
                  device.connected ? "connected" : "removed", device.versionNumber,
                  device.serialNumber.empty() ? "-" : device.serialNumber.c_str(), device.path.c_str());
    text += line;
  }
  if (!unopened.empty()) text += devices.empty() ? "Panels present but not open:\n" : "\nPanels present but not open:\n";
  for (const UnopenedPanel& panel : unopened) {
    text += panel.family + "  " + (panel.node.empty() ? panel.path : panel.node) + "  " + DescribeUnopened(panel) + "\n";
  }
  return text;
}

std::string FormatDeviceJson(const std::vector<ListedDevice>& devices, const std::vector<UnopenedPanel>& unopened) {
  std::vector<std::string> entries;
  for (const ListedDevice& device : devices) {
    entries.push_back("{\"family\": " + JsonString(device.family) + ", \"model\": " + JsonString(device.title) +
                      ", \"modelType\": " + std::to_string(device.modelType) +
                      ", \"index\": " + std::to_string(device.index) +
                      ", \"connected\": " + (device.connected ? "true" : "false") +
                      ", \"path\": " + JsonString(device.path) +
                      ", \"version\": " + std::to_string(device.versionNumber) +
                      ", \"serial\": " + JsonString(device.serialNumber) + "}");
  }
  for (const UnopenedPanel& panel : unopened) {
    entries.push_back("{\"family\": " + JsonString(panel.family) + ", \"model\": " + JsonString(panel.title) +
                      ", \"modelType\": " + std::to_string(panel.modelType) +
                      ", \"index\": " + std::to_string(panel.index) + ", \"connected\": false" +
                      ", \"path\": " + JsonString(panel.path) + ", \"node\": " + JsonString(panel.node) +
                      ", \"openStatus\": " + std::to_string(panel.openStatus) +
                      ", \"osError\": " + std::to_string(panel.osError) +
                      ", \"problem\": " + JsonString(DescribeUnopened(panel)) + "}");
  }
  std::string text = "[";
  for (std::size_t i = 0; i < entries.size(); ++i) text += (i == 0 ? "\n  " : ",\n  ") + entries[i];
  return text + (entries.empty() ? "]\n" : "\n]\n");
}

}  // namespace pelmctl
