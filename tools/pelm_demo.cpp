// A host over the simulated bus, end to end through the public interface: a
// small cockpit of simulated panels, opened with PelmDev_Init. The host tunes
// the radio from its dials and shows the frequencies, labels the alphanumeric
// panel, lets lamps follow switches, colours the warning panel at two
// brightness levels, reads the throttle levers and survives an unplug and
// replug. What the simulated panels show is drawn from the bytes they
// received.

#include <atomic>
#include <chrono>
#include <cstring>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "core/pelm_dev.h"
#include "core/pelm_dev_ext.h"
#include "models/segment_drawing.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"
#include "platform/sim/sim_bus.h"

namespace {

using namespace pelm::sim;

constexpr uint16_t kButtonPanelId = 0x0020;
constexpr uint16_t kAlpha2Id = 0x0018;
void* const kHostInstance = reinterpret_cast<void*>(0x400000);

// The radio's frequencies, in kHz, tuned by its two dials (one detent: 25 kHz).
constexpr int kFirstFrequencyKhz = 118000;
constexpr int kDetentKhz = 25;
std::atomic<int> leftFrequency{kFirstFrequencyKhz};
std::atomic<int> rightFrequency{kFirstFrequencyKhz};
std::atomic<int> inputsSeen{0};
std::atomic<int> connectEvents{0};

DeviceSpec DemoPanel(uint16_t productId, int instance, pelm::platform::HidCaps caps = {8, 8, 8}) {
  char path[128];
  std::snprintf(path, sizeof path, "\\\\?\\hid#vid_%04x&pid_%04x#demo&%d", PELM_VENDOR_ID, productId, instance);
  DeviceSpec spec;
  spec.path = path;
  spec.vendorId = PELM_VENDOR_ID;
  spec.productId = productId;
  spec.caps = caps;
  spec.serialNumber = u"DEMO" + std::u16string(1, static_cast<char16_t>(u'0' + instance));
  return spec;
}

std::string FrequencyText(int khz) {
  char text[16];
  std::snprintf(text, sizeof text, "%3d.%03d", khz / 1000, khz % 1000);
  return text;
}

void PELM_CDECL OnConnect(int32_t modelType, int32_t deviceIndex, int32_t event) {
  ++connectEvents;
  std::printf("  connect callback: model %d, index %d, %s\n", modelType, deviceIndex,
              event == PELM_EVENT_ARRIVAL ? "arrived" : "removed");
}

void PELM_CDECL OnInput(int32_t modelType, int32_t deviceIndex, void* record) {
  ++inputsSeen;
  const auto* bytes = static_cast<const uint8_t*>(record);
  switch (modelType) {
    case PELM_MODEL_RADIO: {
      // The record starts with the two dials as signed 16-bit counts.
      int16_t dials[2];
      std::memcpy(dials, bytes, sizeof dials);
      leftFrequency += dials[0] * kDetentKhz;
      rightFrequency += dials[1] * kDetentKhz;
      PelmRadio_SetLDisplayText(deviceIndex, FrequencyText(leftFrequency).c_str());
      PelmRadio_SetRDisplayText(deviceIndex, FrequencyText(rightFrequency).c_str());
      break;
    }
    case PELM_MODEL_BUTTONS:
      std::printf("  button panel %d switches 0x%02X: lamps follow\n", deviceIndex, bytes[0]);
      PelmButtons_SetIndicators(deviceIndex, bytes[0]);
      break;
    default:
      break;
  }
}

bool WaitFor(const std::function<bool()>& condition) {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(5);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

template <std::size_t Lines, class Glyphs, class Draw>
void PrintDisplay(const char* label, const Glyphs& glyphs, Draw draw) {
  std::array<std::string, Lines> lines;
  for (auto glyph : glyphs) {
    const auto drawing = draw(glyph);
    for (std::size_t i = 0; i < Lines; ++i) lines[i] += drawing[i];
  }
  for (std::size_t i = 0; i < Lines; ++i) std::printf("  %-12s %s\n", i == 0 ? label : "", lines[i].c_str());
}

void ListDevices() {
  std::printf("Devices:\n");
  for (int32_t model = 1; model <= 19; ++model) {
    for (int32_t index = 0; index < 32; ++index) {
      PelmDevInfo2 info{};
      info.structSize = sizeof info;
      if (PelmDev_GetDeviceInfo2(model, index, &info) != PELM_SUCCESS || info.devicePath[0] == '\0') continue;
      std::printf("  model %2d index %d  version %04X  serial %-6s  %s\n", model, index, info.versionNumber,
                  info.serialNumber[0] != '\0' ? info.serialNumber : "-", info.devicePath);
    }
  }
}

}  // namespace

int main() {
  Bus& bus = Bus::Instance();
  auto radio = bus.Plug(DemoPanel(RadioPanelSim::kProductId, 1, {4, 0, 7}));
  auto alpha = bus.Plug(DemoPanel(kAlpha2Id, 1, {4, 0, 9}));
  auto left = bus.Plug(DemoPanel(kButtonPanelId, 1));
  auto right = bus.Plug(DemoPanel(kButtonPanelId, 2));
  auto warning = bus.Plug(DemoPanel(WarningPanel::kProductId, 1, {2, 5, 2}));
  auto throttle = bus.Plug(DemoPanel(ThrottlePanel::kProductId, 1));

  PelmDev_Init(kHostInstance);
  PelmDev_RegisterConnectCallback(OnConnect);
  PelmDev_RegisterInputCallback(OnInput);
  ListDevices();

  std::printf("Turning the radio's dials:\n");
  radio->InjectInput({0, 4, 0xFE, 0});   // left four detents up, right two down
  radio->InjectInput({0, 0x08, 0x01, 0});
  const bool radioTuned = WaitFor([&] {
    return radio->PanelAs<RadioPanelSim>().LeftDisplay() != std::array<uint8_t, 6>{} &&
           leftFrequency == kFirstFrequencyKhz + 12 * kDetentKhz && rightFrequency == kFirstFrequencyKhz - kDetentKhz;
  });
  WaitFor([&] { return radio->CountOf(LogOp::SetFeature) >= 4; });
  PrintDisplay<3>("radio left", radio->PanelAs<RadioPanelSim>().LeftDisplay(), pelm::DrawSevenSegment);
  PrintDisplay<3>("radio right", radio->PanelAs<RadioPanelSim>().RightDisplay(), pelm::DrawSevenSegment);

  std::printf("Labelling the alphanumeric panel:\n");
  PelmAlpha2_SetAlpha(0, "HDG");
  PelmAlpha2_SetNumeric(0, "270");
  const bool alphaShown = WaitFor([&] { return alpha->CountOf(LogOp::SetFeature) >= 2; });
  PrintDisplay<5>("alpha", alpha->PanelAs<AlphaPanelSim>().AlphaDisplay(), pelm::DrawSixteenSegment);
  PrintDisplay<3>("numeric", alpha->PanelAs<AlphaPanelSim>().NumericDisplay(), pelm::DrawSevenSegment);

  std::printf("Flipping switches:\n");
  left->InjectInput({0, 0x05});
  right->InjectInput({0, 0x80});
  const bool lampsFollowed = WaitFor([&] { return left->CountOf(LogOp::SetFeature) >= 1; });

  std::printf("Warning panel colours at full and half brightness:\n");
  const int colours[] = {2, 3, 6};  // red, green, and the third colour
  for (int n = 1; n <= 3; ++n) PelmWarning_SetIndColorValue(0, n, colours[n - 1]);
  WarningPanel& lamps = warning->PanelAs<WarningPanel>();
  auto printColours = [&](const char* label) {
    std::printf("  %-10s", label);
    for (int n = 1; n <= 3; ++n) {
      const auto c = lamps.IndicatorColor(n);
      std::printf("  [%3d %3d %3d]", c[0], c[1], c[2]);
    }
    std::printf("\n");
  };
  const bool coloured = WaitFor([&] { return lamps.IndicatorColor(3)[0] == 100; });
  printColours("level 15");
  PelmWarning_SetBrightness(0, 8);
  const bool dimmed = WaitFor([&] { return lamps.IndicatorColor(3)[0] == 53; });
  printColours("level 8");

  std::printf("Moving the throttle levers:\n");
  throttle->InjectInput({0, 10, 60, 120, 180, 240, 255, 0x01});
  uint8_t levers[6] = {};
  uint8_t contacts = 0;
  const bool leversRead = WaitFor([&] {
    PelmThrottle_GetControlVals(0, &levers[0], &levers[1], &levers[2], &levers[3], &levers[4], &levers[5], &contacts);
    return levers[5] == 255;
  });
  std::printf("  levers %d %d %d %d %d %d, contacts 0x%02X\n", levers[0], levers[1], levers[2], levers[3], levers[4],
              levers[5], contacts);

  std::printf("Unplugging and replugging the first button panel:\n");
  bus.Unplug(left->Spec().path);
  PelmDevExt_DispatchEvents();
  std::printf("  button panels connected: %u\n", PelmButtons_GetNumDevices());
  bus.Plug(left->Spec());
  PelmDevExt_DispatchEvents();
  std::printf("  button panels connected: %u\n", PelmButtons_GetNumDevices());

  PelmDev_Terminate();
  const bool ok = radioTuned && alphaShown && lampsFollowed && coloured && dimmed && leversRead && connectEvents == 2;
  std::printf("%s: %d inputs delivered, %d hot-plug events\n", ok ? "OK" : "FAILED", inputsSeen.load(),
              connectEvents.load());
  return ok ? 0 : 1;
}
