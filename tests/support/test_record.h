#pragma once
// A function-based record with a made-up model, for exercising the channel.

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "channel/device_record.h"

namespace pelm::test {

inline constexpr uint16_t kTestProductId = 0x0F00;
inline constexpr uint8_t kTestOpenReportId = 9;
inline constexpr uint32_t kTestOpenReportLength = 4;

class TestRecord : public cPelmDeviceRecord {
 public:
  TestRecord(const char* path, const RecordParams& params) : cPelmDeviceRecord(path, params) {}
  // Closed as its owner closes it, before it goes.
  ~TestRecord() override { Close(); }

  std::vector<std::vector<uint8_t>> Inputs() {
    std::lock_guard hold(mutex_);
    return inputs_;
  }
  std::vector<uint8_t> OpenTimeReport() {
    std::lock_guard hold(mutex_);
    return openTimeReport_;
  }
  int defaultsApplied = 0;

 protected:
  void OnOpenTimeReport(const uint8_t* report) override {
    std::lock_guard hold(mutex_);
    openTimeReport_.assign(report, report + kTestOpenReportLength);
  }
  void ApplyStateDefaults() override { ++defaultsApplied; }
  void OnInputReport(const uint8_t* report) override {
    std::lock_guard hold(mutex_);
    inputs_.emplace_back(report, report + kInputBytesRead);
  }

 public:
  // The bytes of each report the hook looks at.
  static constexpr uint32_t kInputBytesRead = 8;

 private:
  std::mutex mutex_;
  std::vector<std::vector<uint8_t>> inputs_;
  std::vector<uint8_t> openTimeReport_;
};

inline RecordParams TestParams(WriterVariant writer, bool readsSerial = false) {
  RecordParams params;
  params.channel.writer = writer;
  params.channel.minInputReportLength = TestRecord::kInputBytesRead;
  params.openReportId = kTestOpenReportId;
  params.openReportLength = kTestOpenReportLength;
  params.readsSerialNumber = readsSerial;
  return params;
}

// Opens a record the way the library's "create" operation does.
using RecordPtr = std::unique_ptr<TestRecord>;
inline RecordPtr OpenTestRecord(const std::string& path, const RecordParams& params) {
  auto record = std::make_unique<TestRecord>(path.c_str(), params);
  record->Open();
  return record;
}

}  // namespace pelm::test
