// The platform interface over Windows, apart from device handles
// (hid_device.cpp) and hot-plug (notify_window.cpp): SetupDi enumeration, a
// named kernel mutex and host memory.

#include "platform/win32/win32_hid.h"
// clang-format off
#include <setupapi.h>
// clang-format on

#include <cstdlib>
#include <cstring>
#include <string>

#include "platform/platform.h"

namespace pelm::win32 {
namespace {

// SetupDi checks these size fields against the process's own layout: 28 and 5
// in a 32-bit process, 32 and 8 in a 64-bit one.
constexpr DWORD kInterfaceDataSize = sizeof(SP_DEVICE_INTERFACE_DATA);
constexpr DWORD kInterfaceDetailSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);

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
    if (required < kInterfaceDetailSize) return platform::InterfaceStep::Skipped;
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

std::unique_ptr<InterfaceList> ListHidInterfaces() {
  GUID guid;
  HidD_GetHidGuid(&guid);
  const HDEVINFO set = SetupDiGetClassDevsA(&guid, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return nullptr;
  return std::make_unique<win32::SetupDiInterfaceList>(set, guid);
}

// Recognising a device on Windows means opening it and asking its attributes,
// model by model.
std::optional<InterfaceIds> IdsWithoutOpening(const char*) { return std::nullopt; }

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
