#pragma once
// The device record of a function-based model: the shared channel plus the
// model's own state, opened as soon as it is created. Each model derives one
// record type and gives it its parameters and hooks.

#include <cstdint>
#include <new>

#include "channel/hid_channel.h"

namespace pelm {

// What a function-based model tells the channel about itself.
struct RecordParams {
  ChannelConfig channel;
  // The feature report read once at open to seed the model's state; a length of
  // 0 means the model makes no such read.
  uint8_t openReportId = 0;
  uint32_t openReportLength = 0;
  bool readsSerialNumber = false;
};

class cPelmDeviceRecord : public cHidChannel {
 public:
  // Opens and identifies the device, makes the model's open-time feature read,
  // reads the serial number where the model keeps it, applies the model's state
  // defaults and starts the threads. A device that cannot be opened still
  // yields a running record; its operations fail.
  void Open();
  // Stops the threads and releases the identification.
  void Close();

 protected:
  cPelmDeviceRecord(const char* path, const RecordParams& params);

  // Called with the open-time feature report when the read succeeded.
  virtual void OnOpenTimeReport(const uint8_t* report) { static_cast<void>(report); }
  // Called at open whether or not the device could be opened.
  virtual void ApplyStateDefaults() {}
  // The model's input hook, on the reader thread, for every report read.
  virtual void OnInputReport(const uint8_t* report) = 0;

 private:
  void DeliverInput(const uint8_t* report, uint32_t bytesRead) final;
  void ReadOpenTimeReport();

  const uint8_t openReportId_;
  const uint32_t openReportLength_;
  const bool readsSerialNumber_;
};

// Creates and opens a record of model type Record (the "open" of the record).
// Null for a path too long to keep, or when memory is short.
template <class Record>
Record* CreateRecord(const char* path) {
  if (std::char_traits<char>::length(path) > kMaxDevicePathLength) return nullptr;
  auto* record = new (std::nothrow) Record(path);
  if (record != nullptr) record->Open();
  return record;
}

}  // namespace pelm
