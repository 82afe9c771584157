#pragma once
// What `pelmctl list` shows: every slot that holds a device, of every family,
// and every panel present that is not open, with what keeps it closed.

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

// A panel that is present but not open in a slot.
struct UnopenedPanel {
  std::string family;
  std::string title;
  int32_t modelType;
  int32_t index;       // its slot, -1 without one
  int32_t openStatus;  // PELMEXT_OPEN_*
  int32_t osError;
  std::string path;
  std::string node;
};

// Walks every family's slots through the device information query; needs an
// initialised library.
std::vector<ListedDevice> CollectDevices();
// Asks the library which present panels are not open.
std::vector<UnopenedPanel> CollectUnopenedPanels();

// What keeps a panel closed, and what to do about it.
std::string DescribeUnopened(const UnopenedPanel& panel);

std::string FormatDeviceTable(const std::vector<ListedDevice>& devices, const std::vector<UnopenedPanel>& unopened);
std::string FormatDeviceJson(const std::vector<ListedDevice>& devices, const std::vector<UnopenedPanel>& unopened);

}  // namespace pelmctl
