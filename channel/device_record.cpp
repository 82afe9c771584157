#include "channel/device_record.h"

namespace pelm {

cPelmDeviceRecord::cPelmDeviceRecord(const char* path, const RecordParams& params)
    : cHidChannel(path, params.channel),
      openReportId_(params.openReportId),
      openReportLength_(params.openReportLength),
      readsSerialNumber_(params.readsSerialNumber) {}

void cPelmDeviceRecord::Open() {
  if (OpenAndIdentify()) {
    ReadOpenTimeReport();
    if (readsSerialNumber_) ReadSerialNumber();
  }
  ApplyStateDefaults();
  StartThreads();
}

void cPelmDeviceRecord::Close() {
  StopThreads();
  ReleaseIdentification();
}

void cPelmDeviceRecord::ReadOpenTimeReport() {
  if (openReportLength_ == 0) return;
  ReportBytes report = AllocateReport(openReportLength_);
  if (!report) return;
  report[0] = openReportId_;
  platform::HidHandle device = MainHandle();
  if (device && device->GetFeature(report.get(), openReportLength_)) OnOpenTimeReport(report.get());
}

void cPelmDeviceRecord::DeliverInput(const uint8_t* report, uint32_t) { OnInputReport(report); }

}  // namespace pelm
