#pragma once
// The base class of the class-based models. It owns everything that talks to
// the device (path, identification, reader and writer threads, output report
// queue); a derived class adds its state, reads its start-up reports in Open
// and parses input in OnInputReport.
//
// Unlike a function-based record, the object does no I/O when constructed: the
// owner places it in its slot, then calls Open. Its queue holds up to 100
// reports of either kind, and its writer always sends on its own handle,
// retrying a failed report at the head of the queue without limit.

#include <cstdint>

#include "channel/hid_channel.h"

namespace pelm {

class cPelmHidDevice : public cHidChannel {
 public:
  ~cPelmHidDevice() override;

  // Opens and identifies the device and starts the threads. Returns the main
  // handle, null when the device could not be opened. Derived classes call
  // this first, then read their feature reports through the handle; reports
  // they queue go out at once, the writer being already up.
  virtual platform::HidHandle Open();
  // Stops the threads and releases the identification.
  virtual void Close();
  // Keeps the virtual operations in their places: Open, Close, this one,
  // OnInputReport. It does nothing and nothing calls it.
  virtual uint32_t Reserved(uint32_t value);
  // Called on the reader thread with each report and the number of bytes read.
  virtual uint32_t OnInputReport(const uint8_t* report, uint32_t bytesRead);

  const uint32_t vendorId;
  const uint32_t productId;

 protected:
  // `minInputReportLength`: the bytes the derived class's OnInputReport reads.
  cPelmHidDevice(const char* path, int32_t typeCode, uint32_t minInputReportLength);

 private:
  void DeliverInput(const uint8_t* report, uint32_t bytesRead) final;
};

}  // namespace pelm
