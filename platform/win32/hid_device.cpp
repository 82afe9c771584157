// Device handles over the Windows HID stack: overlapped file I/O and HID class
// requests, each transfer bounded in time.

#include "platform/win32/win32_hid.h"
// clang-format off
#include <winioctl.h>
#include <hidclass.h>
// clang-format on

#include <cstring>
#include <memory>
#include <new>

#include "platform/platform.h"

namespace pelm::win32 {
namespace {

// A transfer that has not completed after this long is cancelled and fails: a
// panel that stops taking reports costs its writer a failed send (which the
// writer's rules retry or drop), never its thread, and with it removal and
// Terminate.
constexpr DWORD kTransferTimeoutMs = 1000;
// HidD_GetSerialNumberString is given this many bytes.
constexpr ULONG kSerialBufferBytes = 65;

class EventCancel : public platform::ReadCancel {
 public:
  EventCancel() : event_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
  ~EventCancel() override {
    if (event_ != nullptr) CloseHandle(event_);
  }
  void Signal() override { SetEvent(event_); }
  bool WaitFor(std::chrono::milliseconds timeout) override {
    return WaitForSingleObject(event_, static_cast<DWORD>(timeout.count())) == WAIT_OBJECT_0;
  }
  HANDLE Event() const { return event_; }

 private:
  const HANDLE event_;
};

// One overlapped transfer with an event of its own: the reader, a getter on a
// host thread and a direct writer use one handle at the same time.
class BoundedTransfer {
 public:
  BoundedTransfer() { request_.hEvent = CreateEventA(nullptr, TRUE, FALSE, nullptr); }
  ~BoundedTransfer() {
    if (request_.hEvent != nullptr) CloseHandle(request_.hEvent);
  }
  BoundedTransfer(const BoundedTransfer&) = delete;
  BoundedTransfer& operator=(const BoundedTransfer&) = delete;

  bool Ready() const { return request_.hEvent != nullptr; }
  OVERLAPPED* Request() { return &request_; }

  // Collects the outcome of the call that `started` the transfer. One still
  // pending after the time-out is cancelled, and waited for, since the request
  // (and the caller's buffer) must outlive it.
  bool Finish(HANDLE handle, BOOL started) {
    if (started) return true;
    if (GetLastError() != ERROR_IO_PENDING) return false;
    if (WaitForSingleObject(request_.hEvent, kTransferTimeoutMs) != WAIT_OBJECT_0) CancelIoEx(handle, &request_);
    DWORD transferred = 0;
    return GetOverlappedResult(handle, &request_, &transferred, TRUE) != FALSE;
  }

 private:
  OVERLAPPED request_{};
};

// Windows' HID class driver, and Wine's, refuse a feature or output report
// buffer shorter than the device's longest report of that type
// (ERROR_INVALID_PARAMETER), where hidraw takes a short one; a longer buffer is
// fine. A report the library built shorter than that goes out followed by
// zeros, its own bytes unchanged, and a feature read is made at the device's
// length with only the bytes asked for handed back.
class ReportAtDeviceLength {
 public:
  ReportAtDeviceLength(uint8_t* report, uint32_t length, uint32_t deviceLength)
      : report_(report), length_(length), data_(report), dataLength_(length) {
    if (length >= deviceLength) return;
    padded_.reset(new (std::nothrow) uint8_t[deviceLength]());
    data_ = padded_.get();
    if (data_ == nullptr) return;
    std::memcpy(data_, report, length);
    dataLength_ = deviceLength;
  }

  bool Ready() const { return data_ != nullptr; }
  uint8_t* Data() const { return data_; }
  DWORD Length() const { return dataLength_; }
  // After a read: the caller's buffer gets the bytes it asked for.
  void HandBack() const {
    if (data_ != report_) std::memcpy(report_, data_, length_);
  }

 private:
  uint8_t* const report_;
  const uint32_t length_;
  std::unique_ptr<uint8_t[]> padded_;
  uint8_t* data_;
  DWORD dataLength_;
};

// Takes a report the HID driver holds now, without waiting: a read that does
// not complete at once is cancelled, and its outcome is what counts, since it
// may have completed before the cancel reached it.
platform::ReadStatus ReadPendingOverlapped(HANDLE handle, HANDLE event, uint8_t* buffer, uint32_t length,
                                           uint32_t& bytesRead) {
  OVERLAPPED request{};
  request.hEvent = event;
  ResetEvent(event);
  DWORD got = 0;
  if (!ReadFile(handle, buffer, length, &got, &request)) {
    if (GetLastError() != ERROR_IO_PENDING) return platform::ReadStatus::Failed;
    CancelIoEx(handle, &request);
    if (!GetOverlappedResult(handle, &request, &got, TRUE)) {
      return GetLastError() == ERROR_OPERATION_ABORTED ? platform::ReadStatus::NothingPending
                                                       : platform::ReadStatus::Failed;
    }
  }
  bytesRead = got;
  return platform::ReadStatus::Completed;
}

class Win32HidDevice : public platform::HidDevice {
 public:
  // `handle` was opened overlapped.
  explicit Win32HidDevice(HANDLE handle)
      : handle_(handle), capsKnown_(ReadCaps(handle, caps_)), readEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
  ~Win32HidDevice() override {
    CloseHandle(handle_);
    if (readEvent_ != nullptr) CloseHandle(readEvent_);
  }

  bool GetAttributes(platform::HidAttributes& attributes) override {
    HIDD_ATTRIBUTES hid{};
    hid.Size = sizeof hid;
    if (!HidD_GetAttributes(handle_, &hid)) return false;
    attributes = {hid.VendorID, hid.ProductID, hid.VersionNumber};
    return true;
  }

  bool GetCaps(platform::HidCaps& caps) override {
    if (capsKnown_) caps = caps_;
    return capsKnown_;
  }

  // IOCTL_HID_GET_FEATURE and IOCTL_HID_SET_FEATURE are what HidD_GetFeature and
  // HidD_SetFeature send, here with a request that can time out.
  bool GetFeature(uint8_t* report, uint32_t length) override {
    const ReportAtDeviceLength full(report, length, caps_.featureReportByteLength);
    if (!full.Ready() || !Control(IOCTL_HID_GET_FEATURE, nullptr, 0, full.Data(), full.Length())) return false;
    full.HandBack();
    return true;
  }

  bool SetFeature(const uint8_t* report, uint32_t length) override {
    const ReportAtDeviceLength full(const_cast<uint8_t*>(report), length, caps_.featureReportByteLength);
    return full.Ready() && Control(IOCTL_HID_SET_FEATURE, full.Data(), full.Length(), nullptr, 0);
  }

  bool WriteOutput(const uint8_t* report, uint32_t length) override {
    const ReportAtDeviceLength full(const_cast<uint8_t*>(report), length, caps_.outputReportByteLength);
    BoundedTransfer transfer;
    if (!full.Ready() || !transfer.Ready()) return false;
    return transfer.Finish(handle_, WriteFile(handle_, full.Data(), full.Length(), nullptr, transfer.Request()));
  }

  bool GetSerialNumber(std::u16string& serial) override {
    wchar_t units[kSerialBufferBytes / sizeof(wchar_t) + 1] = {};
    if (!HidD_GetSerialNumberString(handle_, units, kSerialBufferBytes)) return false;
    serial.clear();
    for (wchar_t unit : units) {
      if (unit == 0) break;
      serial.push_back(static_cast<char16_t>(unit));
    }
    return true;
  }

  platform::ReadStatus ReadInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead,
                                 platform::ReadCancel& cancel) override {
    OVERLAPPED request{};
    request.hEvent = readEvent_;
    ResetEvent(readEvent_);
    DWORD got = 0;
    if (ReadFile(handle_, buffer, length, &got, &request)) {
      bytesRead = got;
      return platform::ReadStatus::Completed;
    }
    if (GetLastError() != ERROR_IO_PENDING) return platform::ReadStatus::Failed;
    const HANDLE waits[2] = {readEvent_, static_cast<EventCancel&>(cancel).Event()};
    if (WaitForMultipleObjects(2, waits, FALSE, INFINITE) == WAIT_OBJECT_0 + 1) {
      // The request lives in this frame: it must be finished before returning.
      CancelIoEx(handle_, &request);
      GetOverlappedResult(handle_, &request, &got, TRUE);
      return platform::ReadStatus::Cancelled;
    }
    if (!GetOverlappedResult(handle_, &request, &got, TRUE)) return platform::ReadStatus::Failed;
    bytesRead = got;
    return platform::ReadStatus::Completed;
  }

  // Only the reader reads, so it shares the read event.
  platform::ReadStatus ReadPendingInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) override {
    return ReadPendingOverlapped(handle_, readEvent_, buffer, length, bytesRead);
  }

 private:
  // The report lengths are the handle's own: read once, when it opens.
  static bool ReadCaps(HANDLE handle, platform::HidCaps& caps) {
    PHIDP_PREPARSED_DATA preparsed = nullptr;
    if (!HidD_GetPreparsedData(handle, &preparsed)) return false;
    HIDP_CAPS hid{};
    const bool ok = HidP_GetCaps(preparsed, &hid) == HIDP_STATUS_SUCCESS;
    HidD_FreePreparsedData(preparsed);
    if (ok) caps = {hid.InputReportByteLength, hid.OutputReportByteLength, hid.FeatureReportByteLength};
    return ok;
  }

  bool Control(DWORD code, void* in, DWORD inLength, void* out, DWORD outLength) {
    BoundedTransfer transfer;
    if (!transfer.Ready()) return false;
    return transfer.Finish(handle_,
                           DeviceIoControl(handle_, code, in, inLength, out, outLength, nullptr, transfer.Request()));
  }

  const HANDLE handle_;
  platform::HidCaps caps_;
  const bool capsKnown_;
  const HANDLE readEvent_;
};

}  // namespace
}  // namespace pelm::win32

namespace pelm::platform {

// Every handle is overlapped, the writers' own ones too (the mode that asks for
// a blocking handle elsewhere): only an overlapped transfer can be bounded.
HidHandle OpenDevice(const char* path, OpenMode) {
  const HANDLE handle = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, FILE_FLAG_OVERLAPPED, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return nullptr;
  return std::make_shared<win32::Win32HidDevice>(handle);
}

std::shared_ptr<ReadCancel> CreateReadCancel() {
  auto cancel = std::make_shared<win32::EventCancel>();
  return cancel->Event() != nullptr ? cancel : nullptr;
}

}  // namespace pelm::platform
