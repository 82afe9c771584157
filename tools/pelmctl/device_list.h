#pragma once
// What `pelmctl list` shows: every slot that holds a device, of every family.

#include <cstdint>
#include <string>
#include <vector>

namespace pelmctl {

struct ListedDevice {
  std::string family;
  std::string title;
  int32_t modelType;
  int32_t index;
  bool connected;
  std::string path;
  uint16_t versionNumber;
  std::string serialNumber;
};

// Walks every family's slots through the device information query; needs an
// initialised library.
std::vector<ListedDevice> CollectDevices();

std::string FormatDeviceTable(const std::vector<ListedDevice>& devices);
std::string FormatDeviceJson(const std::vector<ListedDevice>& devices);

}  // namespace pelmctl
