#include "tools/pelmctl/dashboard.h"

#include <cstdio>
#include <span>
#include <vector>

#include "models/segment_drawing.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/lamp_panel.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"
#include "tools/pelmctl/switch_panel_state.h"

namespace pelmctl {
namespace {

using namespace pelm::sim;

constexpr std::size_t kEventLines = 8;
constexpr int kLampBits = 8;
constexpr int kLeverBarWidth = 16;
constexpr int kLeverFullScale = 255;
constexpr int kColorComponentFullScale = 100;  // the warning panel's component range
constexpr int kTerminalColorFullScale = 255;
constexpr const char* kDisplayGap = "  ";

// Lines of drawings set side by side.
class Drawing {
 public:
  explicit Drawing(std::size_t height) : lines_(height) {}
  void AddSevenSegment(std::span<const uint8_t> segments) {
    for (const uint8_t glyph : segments) Add(pelm::DrawSevenSegment(glyph));
    Gap();
  }
  void AddSixteenSegment(std::span<const uint16_t> glyphs) {
    for (const uint16_t glyph : glyphs) Add(pelm::DrawSixteenSegment(glyph));
    Gap();
  }
  std::string Text(const std::string& indent) const {
    std::string text;
    for (const std::string& line : lines_) text += indent + line + "\n";
    return text;
  }

 private:
  template <std::size_t N>
  void Add(const std::array<std::string, N>& glyph) {
    for (std::size_t i = 0; i < lines_.size(); ++i) {
      lines_[i] += i < N ? glyph[i] : std::string(glyph[0].size(), ' ');
    }
  }
  void Gap() {
    for (std::string& line : lines_) line += kDisplayGap;
  }
  std::vector<std::string> lines_;
};

constexpr std::size_t kSevenSegmentHeight = 3;
constexpr std::size_t kSixteenSegmentHeight = 5;

std::string Lamps(uint32_t bits, int count) {
  std::string text;
  for (int bit = 0; bit < count; ++bit) text += (bits >> bit) & 1 ? "(*)" : "( )";
  return text;
}

std::string Title(const CockpitPanel& panel) {
  char text[64];
  std::snprintf(text, sizeof text, "%-11s #%d  ", panel.family.c_str(), panel.instance);
  return text;
}

std::string Swatch(const WarningPanel::Components& components) {
  char text[64];
  const auto scale = [](uint8_t component) { return component * kTerminalColorFullScale / kColorComponentFullScale; };
  std::snprintf(text, sizeof text, "\x1b[48;2;%d;%d;%dm   \x1b[0m ", scale(components[0]), scale(components[1]),
                scale(components[2]));
  return text;
}

std::string RenderPanel(const CockpitPanel& panel) {
  SimDevice& device = *panel.device;
  const std::string title = Title(panel) + (device.Present() ? "" : "[unplugged] ");
  char detail[128];
  if (panel.family == "radio") {
    auto& radio = device.PanelAs<RadioPanelSim>();
    Drawing drawing(kSevenSegmentHeight);
    drawing.AddSevenSegment(radio.LeftDisplay());
    drawing.AddSevenSegment(radio.RightDisplay());
    std::snprintf(detail, sizeof detail, "lamps %s  backlight %u\n", Lamps(radio.Indicators(), kLampBits).c_str(),
                  radio.Brightness());
    return title + detail + drawing.Text("    ");
  }
  if (panel.family == "autopilot" || panel.family == "autopilot2") {
    const bool second = panel.family == "autopilot2";
    Drawing drawing(kSevenSegmentHeight);
    const std::string names = second ? "ABCDEF" : "ABCDE";
    for (const char name : names) {
      drawing.AddSevenSegment(second ? device.PanelAs<Autopilot2PanelSim>().Display(name)
                                     : device.PanelAs<AutopilotPanelSim>().Display(name));
    }
    const uint32_t lamps = second ? device.PanelAs<Autopilot2PanelSim>().Indicators()
                                  : device.PanelAs<AutopilotPanelSim>().Indicators();
    std::snprintf(detail, sizeof detail, "lamps %s\n", Lamps(lamps, kLampBits).c_str());
    return title + detail + drawing.Text("    ");
  }
  if (panel.family == "alpha" || panel.family == "alpha2") {
    auto& alpha = device.PanelAs<AlphaPanelSim>();
    Drawing words(kSixteenSegmentHeight);
    words.AddSixteenSegment(alpha.AlphaDisplay());
    Drawing digits(kSevenSegmentHeight);
    digits.AddSevenSegment(alpha.NumericDisplay());
    std::snprintf(detail, sizeof detail, "backlight %u\n", alpha.Brightness());
    return title + detail + words.Text("    ") + digits.Text("    ");
  }
  if (panel.family == "squawk") {
    auto& squawk = device.PanelAs<SquawkPanelSim>();
    Drawing drawing(kSevenSegmentHeight);
    const uint8_t digit = squawk.Digit();
    drawing.AddSevenSegment(std::span<const uint8_t>(&digit, 1));
    return title + "\n" + drawing.Text("    ");
  }
  if (panel.family == "warning") {
    auto& warning = device.PanelAs<WarningPanel>();
    std::string swatches;
    for (int lamp = 1; lamp <= WarningPanel::kIndicatorCount; ++lamp) swatches += Swatch(warning.IndicatorColor(lamp));
    return title + swatches + "\n";
  }
  if (panel.family == "throttle") {
    const Report levers = device.PanelAs<ThrottlePanel>().InputReport();
    std::string bars;
    for (int lever = 1; lever <= ThrottlePanel::kLeverCount; ++lever) {
      const int filled = levers[static_cast<std::size_t>(lever)] * kLeverBarWidth / kLeverFullScale;
      bars += '[';
      bars.append(static_cast<std::size_t>(filled), '#');
      bars.append(static_cast<std::size_t>(kLeverBarWidth - filled), '.');
      bars += ']';
    }
    return title + bars + "\n";
  }
  if (panel.family == "ioboard") {
    const IoBoardPanel::Outputs outputs = device.PanelAs<IoBoardPanel>().LastOutputs();
    std::snprintf(detail, sizeof detail, "outputs %02X %02X %02X %02X\n", outputs[0], outputs[1], outputs[2],
                  outputs[3]);
    return title + detail;
  }
  if (panel.family == "buttons" || panel.family == "toggles") {
    std::snprintf(detail, sizeof detail, "lamps %s  backlight %u\n",
                  Lamps(SwitchPanelLamps(device), kLampBits).c_str(),
                  LastPayloadByte(device, kSwitchPanelBrightnessReport));
    return title + detail;
  }
  if (panel.family == "knobs" || panel.family == "gear" ||
      panel.family == "gear2" || panel.family == "keypad") {
    auto& lamps = device.PanelAs<LampPanel>();
    std::snprintf(detail, sizeof detail, "lamps %s  backlight %u\n", Lamps(lamps.Indicators(), kLampBits).c_str(),
                  lamps.Brightness());
    return title + detail;
  }
  return title + "controls only\n";
}

}  // namespace

std::string RenderDashboard(const SimCockpit& cockpit, const EventLog& log, const HostCounts& counts,
                            std::size_t reportsSent, double elapsedSeconds, double sessionSeconds) {
  std::string frame;
  char line[160];
  std::snprintf(line, sizeof line, "PELMDEV demo  %.1f / %.0f s   inputs %d  reports %zu  hot-plug %d  errors %d\n\n",
                elapsedSeconds, sessionSeconds, counts.inputs, reportsSent, counts.hotplugEvents, counts.errors);
  frame += line;
  for (const CockpitPanel& panel : cockpit.Panels()) frame += RenderPanel(panel);
  frame += "\nEvents:\n";
  for (const std::string& event : log.Latest(kEventLines)) frame += "  " + event + "\n";
  return frame;
}

}  // namespace pelmctl
