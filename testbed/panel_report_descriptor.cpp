#include "testbed/panel_report_descriptor.h"

#include <cstdint>
#include <initializer_list>

namespace pelm::vm {
namespace {

constexpr uint8_t kVendorUsagePage[] = {0x06, 0x00, 0xFF};  // Usage Page (vendor 0xFF00)
constexpr uint8_t kUsageOne[] = {0x09, 0x01};
constexpr uint8_t kApplicationCollection[] = {0xA1, 0x01};
constexpr uint8_t kByteFields[] = {0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08};  // 0..255, 8 bits each
constexpr uint8_t kReportIdItem = 0x85;
constexpr uint8_t kReportCountItem = 0x95, kReportCountItemTwoBytes = 0x96;
constexpr uint8_t kInputItem = 0x81, kOutputItem = 0x91, kFeatureItem = 0xB1;
constexpr uint8_t kDataVariableAbsolute = 0x02;
constexpr uint8_t kEndCollection = 0xC0;

}  // namespace

std::vector<uint8_t> PanelReportDescriptor(uint16_t reportLength) {
  std::vector<uint8_t> descriptor;
  auto add = [&descriptor](std::initializer_list<uint8_t> bytes) {
    for (uint8_t byte : bytes) descriptor.push_back(byte);
  };
  auto addAll = [&descriptor](const auto& bytes) {
    for (uint8_t byte : bytes) descriptor.push_back(byte);
  };
  addAll(kVendorUsagePage);
  addAll(kUsageOne);
  addAll(kApplicationCollection);
  addAll(kByteFields);
  const uint16_t payload = reportLength - 1;
  for (uint8_t id = 1; id <= kHighestReportId; ++id) {
    add({kReportIdItem, id});
    if (payload <= UINT8_MAX) {
      add({kReportCountItem, static_cast<uint8_t>(payload)});
    } else {
      add({kReportCountItemTwoBytes, static_cast<uint8_t>(payload & 0xFF), static_cast<uint8_t>(payload >> 8)});
    }
    for (uint8_t main : {kInputItem, kOutputItem, kFeatureItem}) {
      addAll(kUsageOne);
      add({main, kDataVariableAbsolute});
    }
  }
  add({kEndCollection});
  return descriptor;
}

}  // namespace pelm::vm
