// Hot-plug on Windows: a hidden window that receives WM_DEVICECHANGE on the
// thread that created it (the one that called PelmDev_Init), whenever that
// thread pumps messages.

// clang-format off
#include <windows.h>
#include <dbt.h>
// clang-format on

#include <cstdint>
#include <memory>
#include <mutex>
#include <span>

#include "platform/platform.h"
#include "platform/win32/device_broadcast.h"
#include "platform/win32/win32_hid.h"

namespace pelm::win32 {
namespace {

constexpr char kNotifyWindowClass[] = "PelmHIDDev Notify Window";
constexpr char kNotifyWindowName[] = "DevNotify";
// The notification handler works on a copy of the broadcast path this long.
constexpr std::size_t kPathBufferSize = 260;

// The handler of the live window. The window procedure runs on the window's
// thread while Terminate may run on another, so the procedure takes its own
// reference under the lock and calls it outside.
std::mutex handlerMutex;
std::shared_ptr<const platform::DeviceEventHandler> liveHandler;

std::shared_ptr<const platform::DeviceEventHandler> LiveHandler() {
  std::lock_guard hold(handlerMutex);
  return liveHandler;
}

LRESULT CALLBACK NotifyProcedure(HWND window, UINT message, WPARAM wParam, LPARAM lParam) {
  if (message != WM_DEVICECHANGE) return DefWindowProcA(window, message, wParam, lParam);
  if (wParam != DBT_DEVICEARRIVAL && wParam != DBT_DEVICEREMOVECOMPLETE) return TRUE;
  const auto* header = reinterpret_cast<const DEV_BROADCAST_HDR*>(lParam);
  if (header == nullptr) return TRUE;
  char path[kPathBufferSize];
  const std::span broadcast(reinterpret_cast<const uint8_t*>(header), header->dbch_size);
  if (!ReadDeviceInterfacePath(broadcast, path)) return TRUE;
  if (const auto handler = LiveHandler()) {
    (*handler)(wParam == DBT_DEVICEARRIVAL ? platform::DeviceEvent::Arrival : platform::DeviceEvent::Removal, path);
  }
  return TRUE;
}

// Registers the window class. A class left registered by an earlier notifier
// (its window, owned by another thread, may still wait to be destroyed) is
// registered afresh once that window is gone, and used as it stands while the
// window lingers, provided its procedure is this library's.
bool RegisterNotifyClass(HINSTANCE module) {
  WNDCLASSEXA windowClass{};
  windowClass.cbSize = sizeof windowClass;
  windowClass.lpfnWndProc = NotifyProcedure;
  windowClass.hInstance = module;
  windowClass.hIcon = LoadIconA(nullptr, IDI_APPLICATION);
  windowClass.hIconSm = LoadIconA(nullptr, IDI_APPLICATION);
  windowClass.hCursor = LoadCursorA(nullptr, IDC_ARROW);
  windowClass.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
  windowClass.lpszClassName = kNotifyWindowClass;
  if (RegisterClassExA(&windowClass) != 0) return true;
  if (GetLastError() != ERROR_CLASS_ALREADY_EXISTS) return false;
  if (UnregisterClassA(kNotifyWindowClass, module)) return RegisterClassExA(&windowClass) != 0;
  WNDCLASSEXA existing{};
  existing.cbSize = sizeof existing;
  return GetClassInfoExA(module, kNotifyWindowClass, &existing) && existing.lpfnWndProc == NotifyProcedure;
}

class NotifyWindow : public platform::DeviceNotifier {
 public:
  NotifyWindow(HINSTANCE instance, bool classRegistered, HWND window, HDEVNOTIFY notification,
               std::shared_ptr<const platform::DeviceEventHandler> handler)
      : instance_(instance),
        classRegistered_(classRegistered),
        window_(window),
        notification_(notification),
        handler_(std::move(handler)) {}

  ~NotifyWindow() override {
    if (notification_ != nullptr) UnregisterDeviceNotification(notification_);
    {
      std::lock_guard hold(handlerMutex);
      if (liveHandler == handler_) liveHandler.reset();
    }
    if (window_ != nullptr) {
      if (GetWindowThreadProcessId(window_, nullptr) == GetCurrentThreadId()) {
        DestroyWindow(window_);
      } else {
        RetireFromAnotherThread();
      }
    }
    // Fails while a retired window lingers; the next registration copes.
    if (classRegistered_) UnregisterClassA(kNotifyWindowClass, instance_);
  }

  int EventDescriptor() const override { return -1; }
  unsigned DispatchPending() override { return 0; }

 private:
  // Only its own thread can destroy a window. From here on the window runs
  // DefWindowProcA, no code of this library's, so nothing breaks if the library
  // is unloaded before that thread pumps again; the WM_CLOSE posted to it makes
  // DefWindowProcA destroy it then (or the system does when the thread ends).
  void RetireFromAnotherThread() {
    SetWindowLongPtrA(window_, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(DefWindowProcA));
    PostMessageA(window_, WM_CLOSE, 0, 0);
  }

  const HINSTANCE instance_;
  const bool classRegistered_;
  const HWND window_;
  const HDEVNOTIFY notification_;
  const std::shared_ptr<const platform::DeviceEventHandler> handler_;
};

}  // namespace
}  // namespace pelm::win32

namespace pelm::platform {

std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler) {
  const auto module = static_cast<HINSTANCE>(instance);
  const bool classRegistered = win32::RegisterNotifyClass(module);
  HWND window = nullptr;
  HDEVNOTIFY notification = nullptr;
  if (classRegistered) {
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
  auto shared = std::make_shared<const DeviceEventHandler>(std::move(handler));
  {
    std::lock_guard hold(win32::handlerMutex);
    win32::liveHandler = shared;
  }
  // Whatever was created is torn down with the notifier, even when a later
  // step failed and no notification will come.
  return std::make_unique<win32::NotifyWindow>(module, classRegistered, window, notification, std::move(shared));
}

}  // namespace pelm::platform
