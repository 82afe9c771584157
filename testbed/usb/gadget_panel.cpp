#include "testbed/usb/gadget_panel.h"

#include <fcntl.h>
#include <linux/hid.h>
#include <linux/usb/ch9.h>
#include <linux/usb/functionfs.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <endian.h>
#include <filesystem>
#include <mutex>
#include <set>
#include <stdexcept>
#include <system_error>

#include "testbed/panel_report_descriptor.h"

namespace pelm::vm {
namespace {

constexpr char kGadgetRoot[] = "/sys/kernel/config/usb_gadget";
constexpr char kControllerClass[] = "/sys/class/udc";
constexpr char kControllerPrefix[] = "dummy_udc.";
constexpr char kHostControllerPrefix[] = "dummy_hcd.";
constexpr char kFunctionFsType[] = "functionfs";
constexpr char kLanguage[] = "0x409";  // US English, the only string table
constexpr char kConfiguration[] = "c.1";
constexpr char kUsbVersion[] = "0x0200";
constexpr char kMaxPowerMilliamps[] = "100";
constexpr char kManufacturer[] = "PELMDEV test bench";
constexpr char kProduct[] = "PELMDEV test panel";

// The HID class's own requests and report types (wValue's high byte).
constexpr uint8_t kGetReport = 0x01;
constexpr uint8_t kSetReport = 0x09;
constexpr uint8_t kSetIdle = 0x0A;
constexpr uint8_t kSetProtocol = 0x0B;
constexpr uint8_t kOutputReportType = 2;
constexpr uint8_t kFeatureReportType = 3;
constexpr uint8_t kHidDescriptorType = 0x21;
constexpr uint8_t kReportDescriptorType = 0x22;
constexpr uint16_t kHidVersion = 0x0111;

constexpr uint8_t kInterruptInAddress = 1 | USB_DIR_IN;
constexpr uint8_t kFullSpeedInterval = 1;  // frames of 1 ms
constexpr uint8_t kHighSpeedInterval = 4;  // 2^(4-1) microframes: 1 ms

struct __attribute__((packed)) HidClassDescriptor {
  uint8_t bLength;
  uint8_t bDescriptorType;
  uint16_t bcdHID;
  uint8_t bCountryCode;
  uint8_t bNumDescriptors;
  uint8_t bReportDescriptorType;
  uint16_t wReportDescriptorLength;
};

struct __attribute__((packed)) InterfaceDescriptors {
  usb_interface_descriptor interface;
  HidClassDescriptor hid;
  usb_endpoint_descriptor_no_audio interruptIn;
};

struct __attribute__((packed)) FunctionDescriptors {
  usb_functionfs_descs_head_v2 header;
  uint32_t fullSpeedCount;
  uint32_t highSpeedCount;
  InterfaceDescriptors fullSpeed;
  InterfaceDescriptors highSpeed;
};

InterfaceDescriptors InterfaceAt(uint8_t interval, uint16_t reportDescriptorLength) {
  InterfaceDescriptors descriptors{};
  descriptors.interface = {USB_DT_INTERFACE_SIZE, USB_DT_INTERFACE, 0, 0, 1, USB_CLASS_HID, 0, 0, 0};
  descriptors.hid = {sizeof(HidClassDescriptor), kHidDescriptorType, htole16(kHidVersion), 0, 1,
                     kReportDescriptorType, htole16(reportDescriptorLength)};
  descriptors.interruptIn = {USB_DT_ENDPOINT_SIZE, USB_DT_ENDPOINT, kInterruptInAddress, USB_ENDPOINT_XFER_INT,
                             htole16(kDefaultReportLength), interval};
  return descriptors;
}

FunctionDescriptors PanelFunctionDescriptors(uint16_t reportDescriptorLength) {
  FunctionDescriptors descriptors{};
  descriptors.header.magic = htole32(FUNCTIONFS_DESCRIPTORS_MAGIC_V2);
  descriptors.header.length = htole32(sizeof descriptors);
  descriptors.header.flags = htole32(FUNCTIONFS_HAS_FS_DESC | FUNCTIONFS_HAS_HS_DESC);
  descriptors.fullSpeedCount = htole32(3);
  descriptors.highSpeedCount = htole32(3);
  descriptors.fullSpeed = InterfaceAt(kFullSpeedInterval, reportDescriptorLength);
  descriptors.highSpeed = InterfaceAt(kHighSpeedInterval, reportDescriptorLength);
  return descriptors;
}

[[noreturn]] void Fail(const std::string& what) {
  throw std::runtime_error(what + ": " + std::strerror(errno));
}

void WriteText(const std::string& path, const std::string& text) {
  const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) Fail("cannot open " + path);
  const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  const int error = errno;
  close(fd);
  errno = error;
  if (!written) Fail("cannot write '" + text + "' to " + path);
}

void MakeDirectory(const std::string& path) {
  if (mkdir(path.c_str(), 0755) != 0 && errno != EEXIST) Fail("cannot create " + path);
}

std::string Hex(uint16_t value) {
  char text[8];
  std::snprintf(text, sizeof text, "0x%04x", value);
  return text;
}

// The emulated controllers (dummy_hcd's `num`), each lent to one gadget at a time.
class ControllerPool {
 public:
  int Take() {
    std::lock_guard hold(mutex_);
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(kControllerClass, error)) {
      const std::string name = entry.path().filename().string();
      if (name.rfind(kControllerPrefix, 0) != 0) continue;
      const int index = std::stoi(name.substr(std::strlen(kControllerPrefix)));
      if (taken_.insert(index).second) return index;
    }
    errno = error ? error.value() : EBUSY;
    Fail("no free emulated USB controller in " + std::string(kControllerClass) + " (load dummy_hcd with num=N)");
  }
  void Give(int index) {
    std::lock_guard hold(mutex_);
    taken_.erase(index);
  }

 private:
  std::mutex mutex_;
  std::set<int> taken_;
};

ControllerPool& Controllers() {
  static ControllerPool pool;
  return pool;
}

}  // namespace

GadgetPanel::GadgetPanel(UsbIdentity identity, std::unique_ptr<sim::Panel> behaviour)
    : identity_(std::move(identity)),
      behaviour_(std::move(behaviour)),
      controller_(Controllers().Take()),
      gadget_(std::string(kGadgetRoot) + "/pelm" + std::to_string(controller_)),
      mount_("/dev/ffs-pelm" + std::to_string(controller_)),
      stop_(eventfd(0, EFD_CLOEXEC)) {
  try {
    Build();
  } catch (...) {
    TearDown();
    throw;
  }
  server_ = std::thread([this] { Serve(); });
  Replug();
}

GadgetPanel::~GadgetPanel() {
  const uint64_t one = 1;
  (void)!write(stop_, &one, sizeof one);
  Unplug();  // ends a pending interrupt transfer and the host's use of the device
  server_.join();
  TearDown();
}

void GadgetPanel::Build() {
  const std::string instance = "pelm" + std::to_string(controller_);
  MakeDirectory(gadget_);
  WriteText(gadget_ + "/idVendor", Hex(identity_.vendorId));
  WriteText(gadget_ + "/idProduct", Hex(identity_.productId));
  WriteText(gadget_ + "/bcdDevice", Hex(identity_.bcdDevice));
  WriteText(gadget_ + "/bcdUSB", kUsbVersion);
  const std::string strings = gadget_ + "/strings/" + kLanguage;
  MakeDirectory(strings);
  WriteText(strings + "/manufacturer", kManufacturer);
  WriteText(strings + "/product", kProduct);
  if (!identity_.serial.empty()) WriteText(strings + "/serialnumber", identity_.serial);
  const std::string configuration = gadget_ + "/configs/" + kConfiguration;
  MakeDirectory(configuration);
  WriteText(configuration + "/MaxPower", kMaxPowerMilliamps);
  const std::string function = gadget_ + "/functions/ffs." + instance;
  MakeDirectory(function);
  const std::string link = configuration + "/ffs." + instance;
  if (symlink(function.c_str(), link.c_str()) != 0 && errno != EEXIST) Fail("cannot link " + link);

  MakeDirectory(mount_);
  if (mount(instance.c_str(), mount_.c_str(), kFunctionFsType, 0, nullptr) != 0) Fail("cannot mount " + mount_);
  ep0_ = open((mount_ + "/ep0").c_str(), O_RDWR | O_CLOEXEC);
  if (ep0_ < 0) Fail("cannot open " + mount_ + "/ep0");
  const std::vector<uint8_t> reportDescriptor = PanelReportDescriptor(kDefaultReportLength);
  const FunctionDescriptors descriptors = PanelFunctionDescriptors(static_cast<uint16_t>(reportDescriptor.size()));
  if (write(ep0_, &descriptors, sizeof descriptors) != sizeof descriptors) Fail("descriptors refused by " + mount_);
  usb_functionfs_strings_head noStrings{};
  noStrings.magic = htole32(FUNCTIONFS_STRINGS_MAGIC);
  noStrings.length = htole32(sizeof noStrings);
  if (write(ep0_, &noStrings, sizeof noStrings) != sizeof noStrings) Fail("strings refused by " + mount_);
  interruptIn_ = open((mount_ + "/ep1").c_str(), O_RDWR | O_CLOEXEC);
  if (interruptIn_ < 0) Fail("cannot open " + mount_ + "/ep1");
}

// Undoes whatever Build got to, in reverse order; missing pieces are skipped.
void GadgetPanel::TearDown() {
  const std::string instance = "pelm" + std::to_string(controller_);
  if (interruptIn_ >= 0) close(interruptIn_);
  if (ep0_ >= 0) close(ep0_);
  umount(mount_.c_str());
  rmdir(mount_.c_str());
  const std::string configuration = gadget_ + "/configs/" + kConfiguration;
  unlink((configuration + "/ffs." + instance).c_str());
  rmdir(configuration.c_str());
  rmdir((gadget_ + "/functions/ffs." + instance).c_str());
  rmdir((gadget_ + "/strings/" + kLanguage).c_str());
  rmdir(gadget_.c_str());
  if (stop_ >= 0) close(stop_);
  Controllers().Give(controller_);
}

void GadgetPanel::Unplug() {
  // Writing to UDC fails when the gadget is not bound; that is the state wanted.
  const int fd = open((gadget_ + "/UDC").c_str(), O_WRONLY | O_CLOEXEC);
  if (fd < 0) return;
  (void)!write(fd, "\n", 1);
  close(fd);
}

void GadgetPanel::Replug() { WriteText(gadget_ + "/UDC", kControllerPrefix + std::to_string(controller_)); }

std::string GadgetPanel::PhysicalPath() const {
  return "usb-" + std::string(kHostControllerPrefix) + std::to_string(controller_) + "-1/input0";
}

bool GadgetPanel::InjectInput(const Report& report) {
  return write(interruptIn_, report.data(), report.size()) == static_cast<ssize_t>(report.size());
}

void GadgetPanel::Serve() {
  pollfd waits[] = {{ep0_, POLLIN, 0}, {stop_, POLLIN, 0}};
  for (;;) {
    if (poll(waits, 2, -1) < 0 && errno != EINTR) return;
    if (waits[1].revents != 0) return;
    if ((waits[0].revents & POLLIN) == 0) continue;
    usb_functionfs_event events[4];
    const ssize_t got = read(ep0_, events, sizeof events);
    if (got <= 0) continue;
    // Only the last event of a batch can be a request still waiting for its answer.
    const usb_functionfs_event& last = events[got / sizeof events[0] - 1];
    if (last.type == FUNCTIONFS_SETUP) AnswerSetup(&last.u.setup);
  }
}

void GadgetPanel::AnswerSetup(const void* request) {
  const auto& setup = *static_cast<const usb_ctrlrequest*>(request);
  const bool directionIn = (setup.bRequestType & USB_DIR_IN) != 0;
  const uint16_t value = le16toh(setup.wValue);
  const uint16_t length = le16toh(setup.wLength);
  const auto high = static_cast<uint8_t>(value >> 8), low = static_cast<uint8_t>(value & 0xFF);
  if (setup.bRequestType == (USB_DIR_IN | USB_RECIP_INTERFACE) && setup.bRequest == USB_REQ_GET_DESCRIPTOR &&
      high == kReportDescriptorType) {
    const std::vector<uint8_t> descriptor = PanelReportDescriptor(kDefaultReportLength);
    Reply(descriptor.data(), descriptor.size(), length);
    return;
  }
  if ((setup.bRequestType & USB_TYPE_MASK) != USB_TYPE_CLASS) return Stall(directionIn);
  switch (setup.bRequest) {
    case kGetReport:
      return AnswerGetReport(high, low, length);
    case kSetReport:
      return AnswerSetReport(high, low, length);
    case kSetIdle:
    case kSetProtocol:
      return Reply(nullptr, 0, 0);
    default:
      return Stall(directionIn);
  }
}

void GadgetPanel::AnswerGetReport(uint8_t reportType, uint8_t reportId, uint16_t length) {
  uint8_t report[kDefaultReportLength] = {reportId};
  std::size_t size = sizeof report;
  if (reportType == kFeatureReportType) {
    const FeatureReads how = featureReads_;
    if (how == FeatureReads::Refused || !behaviour_->AnswerFeature(report, sizeof report)) return Stall(true);
    if (how == FeatureReads::IdOnly) size = sizeof reportId;
  }
  Reply(report, size, length);
}

void GadgetPanel::AnswerSetReport(uint8_t reportType, uint8_t reportId, uint16_t length) {
  const TransferKind kind = reportType == kOutputReportType ? TransferKind::Output : TransferKind::Feature;
  if (transfers_.TakeRefusal()) {
    Stall(false);
    transfers_.Add(kind, &reportId, sizeof reportId, false);
    return;
  }
  std::vector<uint8_t> report(length);
  const ssize_t got = read(ep0_, report.data(), report.size());
  if (got < 0) return;
  report.resize(static_cast<std::size_t>(got));
  if (kind == TransferKind::Output) {
    behaviour_->ReceiveOutput(report.data(), static_cast<uint32_t>(report.size()));
  } else {
    behaviour_->ReceiveFeature(report.data(), static_cast<uint32_t>(report.size()));
  }
  transfers_.Add(kind, report.data(), report.size(), true);
}

// Answers an IN request with `data` (cut to the length asked for), or
// acknowledges an OUT request without data when `size` is 0.
void GadgetPanel::Reply(const uint8_t* data, std::size_t size, uint16_t length) {
  if (size == 0) {
    uint8_t none;
    (void)!read(ep0_, &none, 0);
    return;
  }
  (void)!write(ep0_, data, std::min<std::size_t>(size, length));
}

// FunctionFS stalls the pending request when ep0 is used against its direction.
void GadgetPanel::Stall(bool directionIn) {
  uint8_t byte = 0;
  if (directionIn) {
    (void)!read(ep0_, &byte, sizeof byte);
  } else {
    (void)!write(ep0_, &byte, sizeof byte);
  }
}

}  // namespace pelm::vm
