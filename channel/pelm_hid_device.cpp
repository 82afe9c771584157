#include "channel/pelm_hid_device.h"

#include "core/model_table.h"

namespace pelm {
namespace {

ChannelConfig ClassBasedConfig(uint32_t minInputReportLength) {
  ChannelConfig config;
  config.writer = WriterVariant::ClassBased;
  config.queueLimit = kClassBasedQueueLimit;
  config.minInputReportLength = minInputReportLength;
  return config;
}

}  // namespace

cPelmHidDevice::cPelmHidDevice(const char* path, int32_t typeCode, uint32_t minInputReportLength)
    : cHidChannel(path, ClassBasedConfig(minInputReportLength)),
      vendorId(kVendorId),
      productId(ModelByTypeCode(typeCode)->productId) {}

cPelmHidDevice::~cPelmHidDevice() = default;

platform::HidHandle cPelmHidDevice::Open() {
  OpenAndIdentify();
  StartThreads();
  return MainHandle();
}

void cPelmHidDevice::Close() {
  StopThreads();
  ReleaseIdentification();
}

uint32_t cPelmHidDevice::Reserved(uint32_t) { return 0; }

uint32_t cPelmHidDevice::OnInputReport(const uint8_t*, uint32_t) { return 0; }

void cPelmHidDevice::DeliverInput(const uint8_t* report, uint32_t bytesRead) { OnInputReport(report, bytesRead); }

}  // namespace pelm
