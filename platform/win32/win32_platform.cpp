// The platform interface over the Windows HID stack: SetupDi enumeration,
// HidD_* and overlapped file I/O, the hidden notification window and a named
// kernel mutex.

// clang-format off
#include <windows.h>
#include <dbt.h>
#include <setupapi.h>
// mingw's HID headers lack C linkage of their own.
extern "C" {
#include <hidsdi.h>
#include <hidpi.h>
}
// clang-format on

#include <cstring>
#include <string>

#include "platform/platform.h"

namespace pelm::win32 {
namespace {

// SetupDi checks these size fields against the process's own layout: 28 and 5
// in a 32-bit process, 32 and 8 in a 64-bit one.
constexpr DWORD kInterfaceDataSize = sizeof(SP_DEVICE_INTERFACE_DATA);
constexpr DWORD kInterfaceDetailSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
constexpr char kNotifyWindowClass[] = "PelmHIDDev Notify Window";
constexpr char kNotifyWindowName[] = "DevNotify";
// The notification handler works on a copy of the broadcast path this long.
constexpr std::size_t kPathBufferSize = 260;
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

class Win32HidDevice : public platform::HidDevice {
 public:
  Win32HidDevice(HANDLE handle, bool overlapped)
      : handle_(handle), overlapped_(overlapped), ioEvent_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {}
  ~Win32HidDevice() override {
    CloseHandle(handle_);
    if (ioEvent_ != nullptr) CloseHandle(ioEvent_);
  }

  bool GetAttributes(platform::HidAttributes& attributes) override {
    HIDD_ATTRIBUTES hid{};
    hid.Size = sizeof hid;
    if (!HidD_GetAttributes(handle_, &hid)) return false;
    attributes = {hid.VendorID, hid.ProductID, hid.VersionNumber};
    return true;
  }

  bool GetCaps(platform::HidCaps& caps) override {
    PHIDP_PREPARSED_DATA preparsed = nullptr;
    if (!HidD_GetPreparsedData(handle_, &preparsed)) return false;
    HIDP_CAPS hid{};
    const bool ok = HidP_GetCaps(preparsed, &hid) == HIDP_STATUS_SUCCESS;
    HidD_FreePreparsedData(preparsed);
    if (ok) caps = {hid.InputReportByteLength, hid.OutputReportByteLength, hid.FeatureReportByteLength};
    return ok;
  }

  bool GetFeature(uint8_t* report, uint32_t length) override {
    return HidD_GetFeature(handle_, report, length) != FALSE;
  }
  bool SetFeature(const uint8_t* report, uint32_t length) override {
    return HidD_SetFeature(handle_, const_cast<uint8_t*>(report), length) != FALSE;
  }

  bool WriteOutput(const uint8_t* report, uint32_t length) override {
    DWORD written = 0;
    if (!overlapped_) return WriteFile(handle_, report, length, &written, nullptr) != FALSE;
    OVERLAPPED request{};
    request.hEvent = ioEvent_;
    ResetEvent(ioEvent_);
    if (WriteFile(handle_, report, length, &written, &request)) return true;
    return GetLastError() == ERROR_IO_PENDING && GetOverlappedResult(handle_, &request, &written, TRUE);
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
    request.hEvent = ioEvent_;
    ResetEvent(ioEvent_);
    DWORD got = 0;
    if (ReadFile(handle_, buffer, length, &got, &request)) {
      bytesRead = got;
      return platform::ReadStatus::Completed;
    }
    if (GetLastError() != ERROR_IO_PENDING) return platform::ReadStatus::Failed;
    const HANDLE waits[2] = {ioEvent_, static_cast<EventCancel&>(cancel).Event()};
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

 private:
  const HANDLE handle_;
  const bool overlapped_;
  const HANDLE ioEvent_;
};

class SetupDiInterfaceList : public platform::InterfaceList {
 public:
  SetupDiInterfaceList(HDEVINFO set, GUID guid) : set_(set), guid_(guid) {}
  ~SetupDiInterfaceList() override { SetupDiDestroyDeviceInfoList(set_); }

  platform::InterfaceStep At(uint32_t index, std::string& path) override {
    SP_DEVICE_INTERFACE_DATA data{};
    data.cbSize = kInterfaceDataSize;
    if (!SetupDiEnumDeviceInterfaces(set_, nullptr, &guid_, index, &data)) {
      return GetLastError() == ERROR_NO_MORE_ITEMS ? platform::InterfaceStep::NoMoreItems
                                                   : platform::InterfaceStep::Failed;
    }
    DWORD required = 0;
    SetupDiGetDeviceInterfaceDetailA(set_, &data, nullptr, 0, &required, nullptr);
    auto* detail = static_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(std::malloc(required));
    if (detail == nullptr) return platform::InterfaceStep::Skipped;
    detail->cbSize = kInterfaceDetailSize;
    const bool ok = SetupDiGetDeviceInterfaceDetailA(set_, &data, detail, required, nullptr, nullptr);
    if (ok) path = detail->DevicePath;
    std::free(detail);
    return ok ? platform::InterfaceStep::Found : platform::InterfaceStep::Skipped;
  }

 private:
  const HDEVINFO set_;
  GUID guid_;
};

// The hidden window that receives WM_DEVICECHANGE on the thread that created it
// (the one that called PelmDev_Init), whenever that thread pumps messages.
class NotifyWindow : public platform::DeviceNotifier {
 public:
  static platform::DeviceEventHandler handler;

  NotifyWindow(HINSTANCE instance, ATOM atom, HWND window, HDEVNOTIFY notification)
      : instance_(instance), atom_(atom), window_(window), notification_(notification) {}
  ~NotifyWindow() override {
    if (notification_ != nullptr) UnregisterDeviceNotification(notification_);
    if (window_ != nullptr) DestroyWindow(window_);
    if (atom_ != 0) UnregisterClassA(reinterpret_cast<LPCSTR>(static_cast<ULONG_PTR>(atom_)), instance_);
    handler = nullptr;
  }
  int EventDescriptor() const override { return -1; }
  unsigned DispatchPending() override { return 0; }

  static LRESULT CALLBACK Procedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
    if (message != WM_DEVICECHANGE) return DefWindowProcA(window, message, wParam, lParam);
    if (wParam != DBT_DEVICEARRIVAL && wParam != DBT_DEVICEREMOVECOMPLETE) return TRUE;
    const auto* header = reinterpret_cast<const DEV_BROADCAST_HDR*>(lParam);
    if (header == nullptr || header->dbch_devicetype != DBT_DEVTYP_DEVICEINTERFACE || !handler) return TRUE;
    const auto* broadcast = reinterpret_cast<const DEV_BROADCAST_DEVICEINTERFACE_A*>(lParam);
    // A path that does not fit the working copy is no device the library holds.
    if (strnlen(broadcast->dbcc_name, kPathBufferSize) == kPathBufferSize) return TRUE;
    char path[kPathBufferSize];
    std::strcpy(path, broadcast->dbcc_name);
    handler(wParam == DBT_DEVICEARRIVAL ? platform::DeviceEvent::Arrival : platform::DeviceEvent::Removal, path);
    return TRUE;
  }

 private:
  const HINSTANCE instance_;
  const ATOM atom_;
  const HWND window_;
  const HDEVNOTIFY notification_;
};

platform::DeviceEventHandler NotifyWindow::handler;

class KernelMutex : public platform::NamedMutex {
 public:
  explicit KernelMutex(HANDLE mutex) : mutex_(mutex) {}
  ~KernelMutex() override { CloseHandle(mutex_); }
  bool LockFor(std::chrono::milliseconds timeout) override {
    const DWORD result = WaitForSingleObject(mutex_, static_cast<DWORD>(timeout.count()));
    // An abandoned mutex (its owner ended inside a callback) is ours now.
    return result == WAIT_OBJECT_0 || result == WAIT_ABANDONED;
  }
  void Unlock() override { ReleaseMutex(mutex_); }

 private:
  const HANDLE mutex_;
};

}  // namespace
}  // namespace pelm::win32

namespace pelm::platform {

HidHandle OpenDevice(const char* path, OpenMode mode) {
  const bool overlapped = mode == OpenMode::Overlapped;
  const HANDLE handle = CreateFileA(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                                    OPEN_EXISTING, overlapped ? FILE_FLAG_OVERLAPPED : 0, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return nullptr;
  return std::make_shared<win32::Win32HidDevice>(handle, overlapped);
}

std::shared_ptr<ReadCancel> CreateReadCancel() { return std::make_shared<win32::EventCancel>(); }

std::unique_ptr<InterfaceList> ListHidInterfaces() {
  GUID guid;
  HidD_GetHidGuid(&guid);
  const HDEVINFO set = SetupDiGetClassDevsA(&guid, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return nullptr;
  return std::make_unique<win32::SetupDiInterfaceList>(set, guid);
}

std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler) {
  const auto module = static_cast<HINSTANCE>(instance);
  WNDCLASSEXA windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = win32::NotifyWindow::Procedure;
  windowClass.hInstance = module;
  windowClass.hIcon = LoadIconA(nullptr, IDI_APPLICATION);
  windowClass.hIconSm = LoadIconA(nullptr, IDI_APPLICATION);
  windowClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
  windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
  windowClass.lpszClassName = win32::kNotifyWindowClass;
  const ATOM atom = RegisterClassExA(&windowClass);
  HWND window = nullptr;
  HDEVNOTIFY notification = nullptr;
  if (atom != 0) {
    window = CreateWindowExA(0, win32::kNotifyWindowClass, win32::kNotifyWindowName, WS_OVERLAPPEDWINDOW,
                             CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, CW_USEDEFAULT, nullptr, nullptr, module,
                             nullptr);
  }
  if (window != nullptr) {
    DEV_BROADCAST_DEVICEINTERFACE_A filter{};
    filter.dbcc_size = sizeof filter;
    filter.dbcc_devicetype = DBT_DEVTYP_DEVICEINTERFACE;
    HidD_GetHidGuid(&filter.dbcc_classguid);
    notification = RegisterDeviceNotificationA(window, &filter, DEVICE_NOTIFY_WINDOW_HANDLE);
  }
  // Whatever was created is torn down with the notifier, even when a later
  // step failed and no notification will come.
  win32::NotifyWindow::handler = std::move(handler);
  return std::make_unique<win32::NotifyWindow>(module, atom, window, notification);
}

std::unique_ptr<NamedMutex> CreateNamedMutex(const char* name) {
  const HANDLE mutex = CreateMutexA(nullptr, FALSE, name);
  if (mutex == nullptr) return nullptr;
  return std::make_unique<win32::KernelMutex>(mutex);
}

bool WriteToHostMemory(void* destination, const void* source, std::size_t length) {
  if (destination == nullptr || IsBadWritePtr(destination, length)) return false;
  std::memcpy(destination, source, length);
  return true;
}

}  // namespace pelm::platform
