// PELMDEV.dll as a Windows host loads it, under Wine, on kernel HID devices:
// the panels are uhid devices made by the panel server in the VM, Wine's HID
// bus hands them to the DLL through hidclass, and everything here goes through
// the DLL's exports. One run covers every check, in order, with one Init for
// most of them, because each start of Wine under emulation costs half a minute.
//
// GoogleTest runs the tests in the order they are written here; the program
// ends with a summary line for the runner and exits 0 only when all pass.

// clang-format off
#include <windows.h>
#include <setupapi.h>
// clang-format on
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "core/pelm_dev.h"
#include "tests/models_under_test.h"
#include "platform/win32/win32_hid.h"
#include "testbed/panel_server/panel_client.h"
#include "tests/wine/wine_program_support.h"

namespace pelm::wine {
namespace {

using test::kModels;
using test::ModelUnderTest;

// Every model sits on the port of its position in kModels, counted from 1.
int PortOf(int32_t typeCode) { return static_cast<int>(&test::Model(typeCode) - kModels) + 1; }

// Two panels declare reports four times as long as usual: the DLL must pad to
// whatever length a device declares, not to one it assumes.
constexpr std::size_t kLongReportLength = 32;
std::size_t DeviceReportLength(int32_t typeCode) {
  const bool declaresLong = typeCode == PELM_MODEL_RADIO || typeCode == PELM_MODEL_KEYPAD;
  return declaresLong ? kLongReportLength : kDefaultReportLength;
}

// Wine installs each new HID device, slowly under emulation; Init then opens
// them all (half a minute to three under load).
constexpr int kDeviceArrivalDeadlineMs = 600000;
constexpr int kInitDeadlineMs = 300000;

constexpr uint16_t kForeignVendorId = 0x1234;
constexpr int kForeignPort = 99;
// Ports of the panels that arrive while the DLL runs.
constexpr int kArrivingPort = 40;
constexpr int kArrivingAfterReinitPort = 41;
const uint16_t kButtonsProductId = test::Model(PELM_MODEL_BUTTONS).productId;
const uint16_t kRadioProductId = test::Model(PELM_MODEL_RADIO).productId;

std::string Hex4(uint16_t value) {
  char text[8];
  std::snprintf(text, sizeof text, "%04X", value);
  return text;
}

// How Windows names a device's IDs in its paths.
std::string UsbIds(uint16_t vendorId, uint16_t productId) {
  return "VID_" + Hex4(vendorId) + "&PID_" + Hex4(productId);
}

std::string SerialFor(int port) { return "WINE-SN-" + std::to_string(port); }

std::string PlugOptions(int port, std::size_t reportLength = kDefaultReportLength) {
  return "serial=" + SerialFor(port) + " length=" + std::to_string(reportLength);
}

// Hot-plug and input callbacks, in both calling forms, recorded for the checks.
struct Event {
  int32_t modelType;
  int32_t deviceIndex;
  int32_t kind;
  bool operator==(const Event&) const = default;
};
std::mutex recordMutex;
std::vector<Event> connectEvents;
// One bit per model type code an input callback of that form named.
std::atomic<uint32_t> cdeclInputModels;
std::atomic<uint32_t> stdcallInputModels;
bool Named(const std::atomic<uint32_t>& models, int32_t modelType) { return (models.load() >> modelType & 1u) != 0; }

// How a failed comparison shows an event.
void PrintTo(const Event& event, std::ostream* out) {
  *out << "(model " << event.modelType << " index " << event.deviceIndex << ' '
       << (event.kind == PELM_EVENT_ARRIVAL ? "arrival" : "removal") << ')';
}

template <class T>
std::vector<T> Snapshot(const std::vector<T>& recorded) {
  std::lock_guard hold(recordMutex);
  return recorded;
}
void ClearRecords() {
  std::lock_guard hold(recordMutex);
  connectEvents.clear();
  cdeclInputModels = 0;
  stdcallInputModels = 0;
}

void PELM_STDCALL OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  std::lock_guard hold(recordMutex);
  connectEvents.push_back({modelType, deviceIndex, event});
}
void PELM_CDECL OnInputCdecl(int32_t modelType, int32_t, void*) { cdeclInputModels |= 1u << modelType; }
void PELM_STDCALL OnInputStdcall(int32_t modelType, int32_t, void*) { stdcallInputModels |= 1u << modelType; }

// Hot-plug reaches the DLL as window messages to the thread that called Init.
bool PumpUntil(const std::function<bool()>& condition) {
  return WaitUntil([&condition] {
    MSG message;
    while (PeekMessageA(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageA(&message);
    return condition();
  });
}

// Device paths of the HID interfaces present to Windows now, upper-cased.
std::vector<std::string> PresentInterfacePaths() {
  std::vector<std::string> paths;
  GUID hidGuid;
  HidD_GetHidGuid(&hidGuid);
  HDEVINFO set = SetupDiGetClassDevsA(&hidGuid, nullptr, nullptr, DIGCF_PRESENT | DIGCF_DEVICEINTERFACE);
  if (set == INVALID_HANDLE_VALUE) return paths;
  SP_DEVICE_INTERFACE_DATA data{};
  data.cbSize = sizeof data;
  for (DWORD index = 0; SetupDiEnumDeviceInterfaces(set, nullptr, &hidGuid, index, &data); ++index) {
    DWORD required = 0;
    SetupDiGetDeviceInterfaceDetailA(set, &data, nullptr, 0, &required, nullptr);
    std::vector<char> buffer(std::max<DWORD>(required, sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A)));
    auto* detail = reinterpret_cast<SP_DEVICE_INTERFACE_DETAIL_DATA_A*>(buffer.data());
    detail->cbSize = sizeof(SP_DEVICE_INTERFACE_DETAIL_DATA_A);
    const auto size = static_cast<DWORD>(buffer.size());
    if (!SetupDiGetDeviceInterfaceDetailA(set, &data, detail, size, nullptr, nullptr)) continue;
    std::string path = detail->DevicePath;
    std::transform(path.begin(), path.end(), path.begin(), [](unsigned char c) { return std::toupper(c); });
    paths.push_back(std::move(path));
  }
  SetupDiDestroyDeviceInfoList(set);
  return paths;
}

// "VID_xxxx&PID_yyyy" of every device the program plugs before Init: the
// panels and the foreign device.
std::vector<std::string> PluggedDeviceIds() {
  std::vector<std::string> ids;
  for (const ModelUnderTest& model : kModels) ids.push_back(UsbIds(PELM_VENDOR_ID, model.productId));
  ids.push_back(UsbIds(kForeignVendorId, kRadioProductId));
  return ids;
}

// Those of `ids` that no present interface carries yet. Wine's HID bus adds the
// kernel's devices one by one, and has HID devices of its own besides: only
// the plugged ones themselves say that all have arrived.
std::vector<std::string> NotYetPresent(const std::vector<std::string>& ids) {
  const std::vector<std::string> paths = PresentInterfacePaths();
  std::vector<std::string> missing;
  for (const std::string& id : ids) {
    const bool present = std::any_of(paths.begin(), paths.end(),
                                     [&id](const std::string& path) { return path.find(id) != std::string::npos; });
    if (!present) missing.push_back(id);
  }
  return missing;
}

// Under Wine a window that registers for device notifications before the
// PlugPlay service runs never receives them.
bool WaitForPlugPlay() {
  SC_HANDLE manager = OpenSCManagerA(nullptr, nullptr, SC_MANAGER_CONNECT);
  if (!manager) return false;
  SC_HANDLE service = OpenServiceA(manager, "PlugPlay", SERVICE_QUERY_STATUS | SERVICE_START);
  bool running = false;
  if (service) {
    running = WaitUntil(
        [service] {
          SERVICE_STATUS status{};
          if (!QueryServiceStatus(service, &status)) return false;
          if (status.dwCurrentState == SERVICE_STOPPED) StartServiceA(service, 0, nullptr);
          return status.dwCurrentState == SERVICE_RUNNING;
        },
        kSlowDeadlineMs);
    CloseServiceHandle(service);
  }
  CloseServiceHandle(manager);
  return running;
}

// The panel server's client, for the tests; made by main.
PanelServerClient* server;

// --- the tests, in the order they run ---------------------------------------

TEST(WindowsDll, EnumerationFindsEveryModelWithItsSerialAndSkipsAForeignDevice) {
  for (const ModelUnderTest& model : kModels) {
    SCOPED_TRACE("model " + std::to_string(model.typeCode));
    EXPECT_EQ(model.count(), 1u);
    PelmDevInfo2 info{};
    info.structSize = sizeof info;
    EXPECT_EQ(PelmDev_GetDeviceInfo2(model.typeCode, 0, &info), PELM_SUCCESS);
    const std::string path = info.devicePath;
    EXPECT_NE(path.find(UsbIds(PELM_VENDOR_ID, model.productId)), std::string::npos) << path;
    EXPECT_EQ(path.find_first_of("abcdefghijklmnopqrstuvwxyz"), std::string::npos) << "not upper-case: " << path;
    EXPECT_EQ(info.serialNumber, model.readsSerial ? SerialFor(PortOf(model.typeCode)) : std::string());
  }
  // Wine's HID bus holds every hidraw node open itself, so which devices the
  // DLL opened shows only in what it counts.
  EXPECT_EQ(PelmRadio_GetNumDevices(), 1u) << "the foreign device with the radio's product ID counted as a radio";
}

struct SetterCase {
  const char* name;
  int32_t typeCode;
  int32_t (*call)();
  char kind;  // 'F' feature, 'O' output report
  Report expected;
};

// A setter of each kind of transfer the DLL makes, and the report the device
// receives: these bytes first, then zeros to the length the device declares.
// The radio and the keypad declare long reports.
const SetterCase kSetterCases[] = {
    {"feature report (alpha text)", PELM_MODEL_ALPHA, [] { return PelmAlpha_SetAlpha(0, "ab"); }, 'F',
     {3, 0x22, 0x37, 0x0A, 0x8F}},
    {"feature report from a stdcall setter", PELM_MODEL_TOGGLES,
     [] { return PelmToggles_SetBrightness_stdcall(0, 0x1F); }, 'F', {3, 0x0F}},
    {"feature report padded long", PELM_MODEL_RADIO, [] { return PelmRadio_SetLDisplayText(0, "123.45"); }, 'F',
     {3, 0x06, 0x5B, 0xCF, 0x66, 0x6D}},
    {"output report", PELM_MODEL_WARNING, [] { return PelmWarning_SetIndColor(0, 4, 10, 20, 0x11E); }, 'O',
     {2, 4, 10, 20, 30}},
    {"output report padded long", PELM_MODEL_KEYPAD, [] { return PelmKeypad_SetIndicators(0, 0x142); }, 'O',
     {2, 0x42}},
};

// The report as the device declares it: `bytes`, then zeros to its length.
bool IsPadded(const Report& received, const Report& bytes, std::size_t deviceLength) {
  return received.size() == deviceLength && std::equal(bytes.begin(), bytes.end(), received.begin()) &&
         std::all_of(received.begin() + static_cast<std::ptrdiff_t>(bytes.size()), received.end(),
                     [](uint8_t byte) { return byte == 0; });
}

TEST(WindowsDll, EveryKindOfSendReachesTheDevicePaddedToItsLength) {
  for (const SetterCase& setter : kSetterCases) {
    SCOPED_TRACE(setter.name);
    const int port = PortOf(setter.typeCode);
    server->Received(port);
    EXPECT_EQ(setter.call(), PELM_SUCCESS);
    const std::vector<ServerTransfer> received = server->WaitReceived(port, 1, kTransferDeadlineMs);
    const bool arrived = !received.empty() && received[0].kind == setter.kind && !received[0].refused &&
                         IsPadded(received[0].bytes, setter.expected, DeviceReportLength(setter.typeCode));
    EXPECT_TRUE(arrived) << "the device received " << Describe(received);
  }
}

// A feature read at the usual length through a stdcall getter, and one at a
// length the device declares long.
struct FeatureReadCase {
  int32_t typeCode;
  int32_t (*set)(uint32_t level);
  int32_t (*get)(uint16_t* level);
};
const FeatureReadCase kFeatureReadCases[] = {
    {PELM_MODEL_BUTTONS, [](uint32_t level) { return PelmButtons_SetBrightness(0, level); },
     [](uint16_t* level) { return PelmButtons_GetBrightness_stdcall(0, level); }},
    {PELM_MODEL_RADIO, [](uint32_t level) { return PelmRadio_SetBrightness(0, level); },
     [](uint16_t* level) { return PelmRadio_GetBrightness(0, level); }},
};

TEST(WindowsDll, FeatureGettersReadTheDeviceAndReportItsFailure) {
  constexpr uint16_t kLevel = 9;
  for (const FeatureReadCase& model : kFeatureReadCases) {
    SCOPED_TRACE("model " + std::to_string(model.typeCode));
    const int port = PortOf(model.typeCode);
    server->Received(port);
    EXPECT_EQ(model.set(kLevel), PELM_SUCCESS);
    EXPECT_FALSE(server->WaitReceived(port, 1, kTransferDeadlineMs).empty()) << "the level never arrived";
    uint16_t level = 0;
    EXPECT_EQ(model.get(&level), PELM_SUCCESS);
    EXPECT_EQ(level, kLevel);
    server->FailFeatureReads(port, true);
    EXPECT_EQ(model.get(&level), PELM_ERR_IO) << "a refused read did not fail";
    server->FailFeatureReads(port, false);
  }
}

// An input report of the length the device declares, byte 0 its ID.
Report InputReport(int32_t typeCode, std::initializer_list<uint8_t> payload) {
  Report report(DeviceReportLength(typeCode), 0);
  report[0] = kInputReportId;
  std::copy(payload.begin(), payload.end(), report.begin() + 1);
  return report;
}

TEST(WindowsDll, InputReachesCallbacksInBothFormsAndTheGetters) {
  ClearRecords();
  EXPECT_EQ(PelmDev_RegisterInputCallback(OnInputCdecl), 1u);
  for (const ModelUnderTest& model : kModels) {
    server->Input(PortOf(model.typeCode), InputReport(model.typeCode, {0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}));
    EXPECT_TRUE(WaitUntil([&model] { return Named(cdeclInputModels, model.typeCode); }))
        << "no input callback for model " << model.typeCode;
  }
  EXPECT_EQ(PelmDev_UnregisterInputCallback(), 1u);
  EXPECT_EQ(PelmDev_RegisterInputCallback_stdcall(OnInputStdcall), 1u);
  server->Input(PortOf(PELM_MODEL_RADIO), InputReport(PELM_MODEL_RADIO, {0xFF, 0x02, 0x05}));
  EXPECT_TRUE(WaitUntil([] { return Named(stdcallInputModels, PELM_MODEL_RADIO); }));
  EXPECT_TRUE(WaitUntil([] {
    int16_t dial1 = 0, dial2 = 0;
    uint8_t switches = 0;
    return PelmRadio_GetControlVals(0, &dial1, &dial2, &switches) == PELM_SUCCESS && dial1 == -1 && dial2 == 2 &&
           switches == 0x05;
  }));
  EXPECT_EQ(PelmDev_UnregisterInputCallback_stdcall(), 1u);
}

// A send the device refuses is retried, and three refusals in a row drop it.
// The radio's lamps go out with `first` while the device refuses `refusals`
// sends, then with `second`; `seen` is what the device then saw, "1!" for a
// refused report of lamps 1 and "2" for a taken one of lamps 2.
TEST(WindowsDll, RefusedSendsAreRetriedAndGivenUpAfterThree) {
  constexpr std::size_t kTransfers = 4;
  const struct {
    int refusals;
    uint8_t first, second;
    std::string seen;
  } kRefusals[] = {{3, 1, 2, "1! 1! 1! 2"}, {2, 3, 4, "3! 3! 3 4"}};
  const int port = PortOf(PELM_MODEL_RADIO);
  for (const auto& refusal : kRefusals) {
    server->Received(port);
    server->FailSends(port, refusal.refusals);
    EXPECT_EQ(PelmRadio_SetIndicators(0, refusal.first), PELM_SUCCESS);
    std::vector<ServerTransfer> seen = server->WaitReceived(port, refusal.refusals, kTransferDeadlineMs);
    EXPECT_EQ(PelmRadio_SetIndicators(0, refusal.second), PELM_SUCCESS);
    const std::vector<ServerTransfer> rest = server->WaitReceived(port, kTransfers - seen.size(), kTransferDeadlineMs);
    seen.insert(seen.end(), rest.begin(), rest.end());
    std::string outcomes;
    for (const ServerTransfer& transfer : seen) {
      if (!outcomes.empty()) outcomes += ' ';
      outcomes += std::to_string(transfer.bytes.size() > 1 ? transfer.bytes[1] : 0);
      if (transfer.refused) outcomes += '!';
    }
    EXPECT_EQ(outcomes, refusal.seen) << refusal.refusals << " refusals";
  }
}

TEST(WindowsDll, HotPlugThroughTheHiddenWindowKeepsAReturningPanelsSlot) {
  ClearRecords();
  EXPECT_EQ(PelmDev_RegisterConnectCallback_stdcall(OnConnect), 1u);
  const int buttonsPort = PortOf(PELM_MODEL_BUTTONS);
  server->Unplug(buttonsPort);
  EXPECT_TRUE(PumpUntil([] { return Snapshot(connectEvents).size() >= 1; })) << "no removal reached the host";
  server->Replug(buttonsPort);
  EXPECT_TRUE(PumpUntil([] { return Snapshot(connectEvents).size() >= 2; })) << "no arrival reached the host";
  server->Plug(kButtonsProductId, kArrivingPort, PlugOptions(kArrivingPort));
  EXPECT_TRUE(PumpUntil([] { return Snapshot(connectEvents).size() >= 3; })) << "the new panel's arrival was lost";
  const std::vector<Event> expected{{PELM_MODEL_BUTTONS, 0, PELM_EVENT_REMOVAL},
                                    {PELM_MODEL_BUTTONS, 0, PELM_EVENT_ARRIVAL},
                                    {PELM_MODEL_BUTTONS, 1, PELM_EVENT_ARRIVAL}};
  EXPECT_EQ(Snapshot(connectEvents), expected);
  EXPECT_EQ(PelmButtons_GetNumDevices(), 2u);
  // The returning panel is driven again.
  server->Received(buttonsPort);
  EXPECT_EQ(PelmButtons_SetIndicators(0, 0x33), PELM_SUCCESS);
  const std::vector<ServerTransfer> received = server->WaitReceived(buttonsPort, 1, kTransferDeadlineMs);
  EXPECT_TRUE(!received.empty() && IsPadded(received[0].bytes, {2, 0x33}, kDefaultReportLength))
      << "the returning panel received " << Describe(received);
}

DWORD WINAPI TerminateOnThisThread(void*) {
  PelmDev_Terminate();
  return 0;
}

// Terminate from a thread other than Init's, bounded, and a second Init on this
// thread follows hot-plug again (the first window retired).
TEST(WindowsDll, TerminateFromAnotherThreadIsPromptAndLeavesHotPlugWorking) {
  HANDLE thread = CreateThread(nullptr, 0, TerminateOnThisThread, nullptr, 0, nullptr);
  ASSERT_NE(thread, nullptr);
  // The window's owner must be free to take the request to retire it.
  EXPECT_TRUE(PumpUntil([thread] { return WaitForSingleObject(thread, 0) == WAIT_OBJECT_0; })) << "Terminate hangs";
  CloseHandle(thread);

  ClearRecords();
  PelmDev_Init(GetModuleHandleA(nullptr));
  EXPECT_EQ(PelmDev_RegisterConnectCallback_stdcall(OnConnect), 1u);
  server->Plug(kButtonsProductId, kArrivingAfterReinitPort, PlugOptions(kArrivingAfterReinitPort));
  EXPECT_TRUE(PumpUntil([] { return !Snapshot(connectEvents).empty(); }))
      << "after Terminate on another thread, a new Init hears no arrival";
  PelmDev_Terminate();
}

// Plugs every panel and the foreign device, waits until Windows shows them
// all, and initialises the DLL on this thread, which pumps its messages.
int PlugEveryPanelAndInit() {
  const DWORD started = GetTickCount();
  if (!WaitForPlugPlay()) return Fail("the PlugPlay service does not run: no hot-plug would reach a window");
  std::printf("PlugPlay runs after %lu ms\n", static_cast<unsigned long>(GetTickCount() - started));
  for (const ModelUnderTest& model : kModels) {
    const int port = PortOf(model.typeCode);
    server->Plug(model.productId, port, PlugOptions(port, DeviceReportLength(model.typeCode)));
  }
  server->Plug(kRadioProductId, kForeignPort, PlugOptions(kForeignPort) + " vendor=" + Hex4(kForeignVendorId));
  const std::vector<std::string> plugged = PluggedDeviceIds();
  std::vector<std::string> missing;
  std::size_t shown = 0;
  if (!WaitUntil(
          [&] {
            missing = NotYetPresent(plugged);
            const std::size_t present = plugged.size() - missing.size();
            if (present != shown)
              std::printf("%zu of %zu devices present after %lu ms\n", shown = present, plugged.size(),
                          static_cast<unsigned long>(GetTickCount() - started));
            return missing.empty();
          },
          kDeviceArrivalDeadlineMs)) {
    std::string names;
    for (const std::string& id : missing) names += " " + id;
    return Fail("Wine's HID bus does not show" + names + ": is systemd-udevd running in the VM?");
  }
  {
    // An enumeration that never ends must not hang the run.
    const Watchdog watchdog("PelmDev_Init", kInitDeadlineMs);
    PelmDev_Init_stdcall(GetModuleHandleA(nullptr));
  }
  std::printf("Init done after %lu ms\n", static_cast<unsigned long>(GetTickCount() - started));
  return 0;
}

}  // namespace
}  // namespace pelm::wine

int main(int argc, char** argv) {
  using namespace pelm::wine;
  testing::InitGoogleTest(&argc, argv);
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  const std::string address = PanelServerClient::AddressFromEnvironment();
  if (address.empty()) return Fail("PELM_PANEL_SERVER (127.0.0.1:PORT of the panel server) is not set");
  try {
    PanelServerClient client(address);
    server = &client;
    if (PlugEveryPanelAndInit() != 0) return 1;
    const int status = RUN_ALL_TESTS();
    // The line the runner looks for.
    const testing::UnitTest& run = *testing::UnitTest::GetInstance();
    std::printf("PELM-WINE-RESULT %d of %d tests passed\n", run.successful_test_count(), run.test_to_run_count());
    return status;
  } catch (const std::exception& error) {
    return Fail(error.what());
  }
}
