#pragma once
// The narrow interface between the library and the operating system.
//
// The core, the channel and the models talk to HID devices only through what is
// declared here; exactly one backend (platform/linux, platform/win32 or
// platform/sim) is linked in and defines it. Byte 0 of every report buffer that
// crosses this interface is the HID report ID, on every backend: a backend whose
// OS leaves the ID out for devices without report IDs adds it on reads and
// removes it on writes.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace pelm::platform {

// Vendor, product and version of a HID device.
struct HidAttributes {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
  uint16_t versionNumber = 0;
};

// Report lengths as Windows gives them: the longest report of each type plus one
// byte for the report ID; 0 when the device has no report of that type.
struct HidCaps {
  uint16_t inputReportByteLength = 0;
  uint16_t outputReportByteLength = 0;
  uint16_t featureReportByteLength = 0;
};

// Overlapped handles serve the reader, the getters and the direct writer;
// synchronous ones are the writers' own handles. Windows opens both kinds
// overlapped, so that every transfer can be bounded in time.
enum class OpenMode { Overlapped, Synchronous };

enum class ReadStatus {
  Completed,
  Failed,
  Cancelled,
  NothingPending,  // ReadPendingInput only: the device holds no unread report
};

// A one-way signal that ends a reader's wait. Once signalled, every read started
// with it, and every wait on it, returns at once.
class ReadCancel {
 public:
  virtual ~ReadCancel() = default;
  virtual void Signal() = 0;
  // Waits until signalled or until the time has passed; true when signalled.
  virtual bool WaitFor(std::chrono::milliseconds timeout) = 0;
};

// One open handle of a HID interface. The handle closes when the object is
// destroyed; every operation fails once the device is gone.
class HidDevice {
 public:
  virtual ~HidDevice() = default;
  virtual bool GetAttributes(HidAttributes& attributes) = 0;
  virtual bool GetCaps(HidCaps& caps) = 0;
  virtual bool GetFeature(uint8_t* report, uint32_t length) = 0;
  virtual bool SetFeature(const uint8_t* report, uint32_t length) = 0;
  virtual bool WriteOutput(const uint8_t* report, uint32_t length) = 0;
  // The serial number string as the device reports it (UTF-16).
  virtual bool GetSerialNumber(std::u16string& serial) = 0;
  // Blocks until an input report arrives (bytesRead tells its length), the read
  // fails, or `cancel` is signalled.
  virtual ReadStatus ReadInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead,
                               ReadCancel& cancel) = 0;
  // Takes the oldest input report the device holds now, without waiting:
  // Completed, NothingPending, or Failed when the device is gone. A reader that
  // rests between reads catches up with it.
  virtual ReadStatus ReadPendingInput(uint8_t* buffer, uint32_t length, uint32_t& bytesRead) = 0;
};

// Shared so that a getter on a host thread keeps the handle it uses alive while
// the hot-plug handler replaces it.
using HidHandle = std::shared_ptr<HidDevice>;

// Null when the path cannot be opened.
HidHandle OpenDevice(const char* path, OpenMode mode);

// The vendor and product IDs of the interface at `path`, where the OS tells
// them without opening the device (Linux keeps them in sysfs); nullopt where
// only an open handle tells them, or when `path` is not present.
struct InterfaceIds {
  uint16_t vendorId = 0;
  uint16_t productId = 0;
};
std::optional<InterfaceIds> IdsWithoutOpening(const char* path);

// Null when the OS gives no signal (no event or descriptor left).
std::shared_ptr<ReadCancel> CreateReadCancel();

// One pass over the HID interfaces present now, by index.
enum class InterfaceStep {
  Found,        // `path` holds the interface path
  NoMoreItems,  // the index is past the last interface
  Failed,       // asking for this index failed; asking again may work
  Skipped,      // this interface cannot be described; go on with the next
};

class InterfaceList {
 public:
  virtual ~InterfaceList() = default;
  virtual InterfaceStep At(uint32_t index, std::string& path) = 0;
};

// Null when the list cannot be obtained.
std::unique_ptr<InterfaceList> ListHidInterfaces();

// A HID interface present now, whether or not this process may open it.
struct PresentInterface {
  std::string path;
  std::string node;  // the OS's own name for it ("/dev/hidraw3"); empty where there is none
  uint16_t vendorId = 0;
  uint16_t productId = 0;
};
// Every present interface, from what the OS tells without opening them.
std::vector<PresentInterface> ListPresentInterfaces();

enum class OpenFailure { None, PermissionDenied, NotPresent, Other };
struct OpenAttempt {
  OpenFailure failure = OpenFailure::None;
  int osError = 0;  // the OS's error number when the open failed
};
// Opens `path` and closes it again: whether this process may open it now.
OpenAttempt TryOpen(const char* path);

// Device arrival and removal, as the OS reports them.
enum class DeviceEvent { Arrival, Removal };
using DeviceEventHandler = std::function<void(DeviceEvent event, const char* path)>;

class DeviceNotifier {
 public:
  virtual ~DeviceNotifier() = default;
  // A descriptor that is readable while events wait for DispatchPending; -1 where
  // the OS delivers them as window messages to the thread that started the
  // notifier.
  virtual int EventDescriptor() const = 0;
  // Hands every waiting event to the handler on the calling thread; never
  // blocks. Returns the number of events handled.
  virtual unsigned DispatchPending() = 0;
};

// `instance` is the host's module instance handle (Windows registers its hidden
// window class with it). Null when notification cannot be set up.
std::unique_ptr<DeviceNotifier> StartDeviceNotifier(void* instance, DeviceEventHandler handler);

// A mutex shared by every process that opens the same name.
class NamedMutex {
 public:
  virtual ~NamedMutex() = default;
  virtual bool LockFor(std::chrono::milliseconds timeout) = 0;
  virtual void Unlock() = 0;
};

std::unique_ptr<NamedMutex> CreateNamedMutex(const char* name);

// Copies `length` bytes to host memory if all of it is writable; false (and
// nothing written) for a null or unwritable destination.
bool WriteToHostMemory(void* destination, const void* source, std::size_t length);

}  // namespace pelm::platform
