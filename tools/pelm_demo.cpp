// A small host over the simulated bus: plugs two panels, opens them through the
// device channel, sends reports and prints what the simulated devices received.

#include <cstdio>
#include <string>

#include "channel/device_record.h"
#include "platform/sim/sim_bus.h"

namespace {

constexpr uint16_t kDemoProductId = 0x0050;

class DemoRecord : public pelm::cPelmDeviceRecord {
 public:
  explicit DemoRecord(const char* path) : cPelmDeviceRecord(path, Params()) {}

 protected:
  void OnInputReport(const uint8_t* report) override {
    std::printf("  input from %s: dial %d\n", DevicePath().c_str(), static_cast<int8_t>(report[1]));
  }

 private:
  static pelm::RecordParams Params() {
    pelm::RecordParams params;
    params.channel.writer = pelm::WriterVariant::Retrying;
    params.channel.minInputReportLength = 2;
    return params;
  }
};

std::string Hex(const pelm::sim::Report& bytes) {
  std::string text;
  char byte[4];
  for (uint8_t b : bytes) {
    std::snprintf(byte, sizeof byte, "%02X ", b);
    text += byte;
  }
  return text;
}

}  // namespace

int main() {
  auto& bus = pelm::sim::Bus::Instance();
  pelm::sim::DeviceSpec spec;
  spec.vendorId = PELM_VENDOR_ID;
  spec.productId = kDemoProductId;
  spec.caps = {4, 0, 7};
  spec.path = "\\\\?\\hid#vid_fff0&pid_0050#demo&1";
  auto first = bus.Plug(spec);
  spec.path = "\\\\?\\hid#vid_fff0&pid_0050#demo&2";
  auto second = bus.Plug(spec);

  DemoRecord* records[] = {pelm::CreateRecord<DemoRecord>(first->Spec().path.c_str()),
                           pelm::CreateRecord<DemoRecord>(second->Spec().path.c_str())};
  std::printf("Opened %s and %s\n", records[0]->DevicePath().c_str(), records[1]->DevicePath().c_str());

  first->InjectInput({0, 3});
  second->InjectInput({0, 0xFE});
  for (uint8_t level = 0; level < 3; ++level) {
    for (DemoRecord* record : records) {
      record->BuildAndQueue(2, pelm::ReportKind::Feature, [level](uint8_t* report) {
        report[0] = 6;
        report[1] = level;
      });
    }
  }
  for (DemoRecord* record : records) {
    record->Close();
    delete record;
  }
  for (const auto& device : {first, second}) {
    std::printf("%s received:\n", device->Spec().path.c_str());
    for (const auto& entry : device->LogOf(pelm::sim::LogOp::SetFeature)) {
      std::printf("  feature %s\n", Hex(entry.bytes).c_str());
    }
  }
  return 0;
}
