#include "platform/sim/web/cockpit_snapshot.h"

#include <map>
#include <span>

#include "core/model_table.h"
#include "core/pelm_dev.h"
#include "models/alpha_panels.h"
#include "models/autopilot_panels.h"
#include "models/engine_ctl.h"
#include "models/engine_start.h"
#include "models/gear2_panel.h"
#include "models/gear_panel.h"
#include "models/io_board.h"
#include "models/keypad.h"
#include "models/knob_panel.h"
#include "models/map_ctl.h"
#include "models/radio_panel.h"
#include "models/segment_encoding.h"
#include "models/squawk_panel.h"
#include "models/switch_panels.h"
#include "models/throttle.h"
#include "models/warning_panel.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/lamp_panel.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::sim::web {
namespace {

constexpr int kSevenSegmentKind = 7;
constexpr int kSixteenSegmentKind = 16;
constexpr int kLampsPerByte = 8;
// The second autopilot's indicator report carries a 32-bit lamp word.
constexpr int kAutopilot2Lamps = 8 * (cPelmAutopilot2::kIndicatorReportLength - 1);
// The button and toggle panels keep the last feature report they were sent
// under each ID; these two hold their lamps and their backlight.
constexpr uint8_t kSwitchPanelIndicatorReport = cPelmSwitchPanel::kIndicatorReport;
constexpr uint8_t kSwitchPanelBrightnessReport = 3;

template <class Values>
std::string NumberList(const Values& values) {
  std::string text = "[";
  for (const auto value : values) {
    if (text.size() > 1) text += ',';
    text += std::to_string(value);
  }
  text += ']';
  return text;
}

// A JSON object written field by field.
class Json {
 public:
  Json& Field(const char* name) {
    text_ += first_ ? "\"" : ",\"";
    text_ += name;
    text_ += "\":";
    first_ = false;
    return *this;
  }
  Json& Number(long long value) {
    text_ += std::to_string(value);
    return *this;
  }
  Json& Bool(bool value) {
    text_ += value ? "true" : "false";
    return *this;
  }
  Json& String(const std::string& value) {
    text_ += '"';
    for (const char c : value) {
      if (c == '"' || c == '\\') text_ += '\\';
      text_ += c;
    }
    text_ += '"';
    return *this;
  }
  template <class Values>
  Json& Numbers(const Values& values) {
    text_ += NumberList(values);
    return *this;
  }
  Json& Raw(const std::string& json) {
    text_ += json;
    return *this;
  }
  std::string Object() const {
    std::string object = "{";
    object += text_;
    object += '}';
    return object;
  }

 private:
  std::string text_;
  bool first_ = true;
};

std::string Array(const std::vector<std::string>& items) {
  std::string text = "[";
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += ',';
    text += items[i];
  }
  text += ']';
  return text;
}

template <class Glyphs>
std::string Display(const std::string& name, int kind, const Glyphs& glyphs) {
  return Json().Field("name").String(name).Field("kind").Number(kind).Field("glyphs").Numbers(glyphs).Object();
}

// The bit of each segment in a position's byte (or 16-bit glyph), for the page.
std::string SegmentBits() {
  Json seven;
  seven.Field("a").Number(kSegmentA).Field("b").Number(kSegmentB).Field("c").Number(kSegmentC);
  seven.Field("d").Number(kSegmentD).Field("e").Number(kSegmentE).Field("f").Number(kSegmentF);
  seven.Field("g").Number(kSegmentG).Field("dp").Number(kSegmentPoint);
  Json sixteen;
  sixteen.Field("a").Number(kAlphaSegmentA).Field("b").Number(kAlphaSegmentB).Field("c").Number(kAlphaSegmentC);
  sixteen.Field("d").Number(kAlphaSegmentD).Field("e").Number(kAlphaSegmentE).Field("f").Number(kAlphaSegmentF);
  sixteen.Field("g1").Number(kAlphaMiddleLeft).Field("g2").Number(kAlphaMiddleRight);
  sixteen.Field("h").Number(kAlphaDiagonalUpperLeft).Field("i").Number(kAlphaVerticalUpper);
  sixteen.Field("j").Number(kAlphaDiagonalUpperRight).Field("k").Number(kAlphaDiagonalLowerLeft);
  sixteen.Field("l").Number(kAlphaVerticalLower).Field("m").Number(kAlphaDiagonalLowerRight);
  sixteen.Field("dp").Number(kAlphaPoint);
  return Json().Field("7").Raw(seven.Object()).Field("16").Raw(sixteen.Object()).Object();
}

void AddLamps(Json& panel, uint32_t bits, int count, uint8_t backlight) {
  panel.Field("lamps").Raw(Json().Field("bits").Number(bits).Field("count").Number(count).Object());
  panel.Field("backlight").Number(backlight);
}

uint8_t LastPayloadByte(GenericPanel& panel, uint8_t reportId) {
  const std::optional<Report> report = panel.LastFeature(reportId);
  return report && report->size() > 1 ? (*report)[1] : 0;
}

// Both autopilots: their lamps and backlight as fields of `panel`; their displays.
template <class AutopilotSim>
std::vector<std::string> AddAutopilot(Json& panel, const AutopilotSim& autopilot, int lampCount) {
  std::vector<std::string> displays;
  for (const DisplayReport& display : AutopilotSim::kDisplays) {
    displays.push_back(Display(std::string(1, display.name), kSevenSegmentKind, autopilot.Display(display.name)));
  }
  AddLamps(panel, autopilot.Indicators(), lampCount, autopilot.Brightness());
  return displays;
}

// What the panel of model `modelType` shows, as fields of `panel`.
void AddShown(Json& panel, int32_t modelType, SimDevice& device) {
  std::vector<std::string> displays;
  switch (modelType) {
    case PELM_MODEL_RADIO: {
      auto& radio = device.PanelAs<RadioPanelSim>();
      displays = {Display("left", kSevenSegmentKind, radio.LeftDisplay()),
                  Display("right", kSevenSegmentKind, radio.RightDisplay())};
      AddLamps(panel, radio.Indicators(), kLampsPerByte, radio.Brightness());
      break;
    }
    case PELM_MODEL_ALPHA:
    case PELM_MODEL_ALPHA2: {
      auto& alpha = device.PanelAs<AlphaPanelSim>();
      displays = {Display("text", kSixteenSegmentKind, alpha.AlphaDisplay()),
                  Display("numeric", kSevenSegmentKind, alpha.NumericDisplay())};
      panel.Field("backlight").Number(alpha.Brightness());
      break;
    }
    case PELM_MODEL_SQUAWK: {
      auto& squawk = device.PanelAs<SquawkPanelSim>();
      displays = {Display("code", kSevenSegmentKind, std::array<uint8_t, 1>{squawk.Digit()})};
      panel.Field("backlight").Number(squawk.Brightness());
      break;
    }
    case PELM_MODEL_AUTOPILOT:
      displays = AddAutopilot(panel, device.PanelAs<AutopilotPanelSim>(), kLampsPerByte);
      break;
    case PELM_MODEL_AUTOPILOT2:
      displays = AddAutopilot(panel, device.PanelAs<Autopilot2PanelSim>(), kAutopilot2Lamps);
      break;
    case PELM_MODEL_BUTTONS:
    case PELM_MODEL_TOGGLES: {
      auto& switches = device.PanelAs<GenericPanel>();
      AddLamps(panel, LastPayloadByte(switches, kSwitchPanelIndicatorReport), kLampsPerByte,
               LastPayloadByte(switches, kSwitchPanelBrightnessReport));
      break;
    }
    case PELM_MODEL_KNOBS:
    case PELM_MODEL_GEAR:
    case PELM_MODEL_GEAR2:
    case PELM_MODEL_KEYPAD: {
      auto& lamps = device.PanelAs<LampPanel>();
      AddLamps(panel, lamps.Indicators(), kLampsPerByte, lamps.Brightness());
      break;
    }
    case PELM_MODEL_WARNING: {
      std::vector<std::string> colors;
      for (int indicator = 1; indicator <= WarningPanel::kIndicatorCount; ++indicator) {
        colors.push_back(NumberList(device.PanelAs<WarningPanel>().IndicatorColor(indicator)));
      }
      panel.Field("colors").Raw(Array(colors));
      break;
    }
    case PELM_MODEL_THROTTLE:
      panel.Field("levers").Number(ThrottlePanel::kLeverCount);
      break;
    case PELM_MODEL_IOBOARD:
      panel.Field("outputs").Numbers(device.PanelAs<IoBoardPanel>().LastOutputs());
      break;
    default:
      break;  // controls only
  }
  panel.Field("displays").Raw(Array(displays));
}

}  // namespace

std::size_t InputReportLength(uint16_t productId) {
  const ModelDescriptor* model = ModelByProductId(productId);
  if (model == nullptr) return 0;
  switch (model->typeCode) {
    case PELM_MODEL_ALPHA: return cPelmAlpha::kInputReportLength;
    case PELM_MODEL_ALPHA2: return cPelmAlpha2::kInputReportLength;
    case PELM_MODEL_BUTTONS:
    case PELM_MODEL_TOGGLES: return cPelmSwitchPanel::kInputReportLength;
    case PELM_MODEL_GEAR: return cPelmGear::kInputReportLength;
    case PELM_MODEL_GEAR2: return cPelmGear2::kControlStateLength;
    case PELM_MODEL_RADIO: return cPelmRadio::kInputReportLength;
    case PELM_MODEL_AUTOPILOT: return cPelmAutopilot::kInputReportLength;
    case PELM_MODEL_AUTOPILOT2: return cPelmAutopilot2::kInputReportLength;
    case PELM_MODEL_KNOBS: return cPelmKnobs::kInputReportLength;
    case PELM_MODEL_THROTTLE: return cPelmThrottle::kInputReportLength;
    case PELM_MODEL_SQUAWK: return cPelmSquawk::kInputReportLength;
    case PELM_MODEL_MAPCTL: return cPelmMapCtl::kInputReportLength;
    case PELM_MODEL_ENGINECTL: return cPelmEngineCtl::kInputReportLength;
    case PELM_MODEL_KEYPAD: return cPelmKeypad::kInputReportLength;
    case PELM_MODEL_ENGINESTART: return cPelmEngineStart::kInputReportLength;
    case PELM_MODEL_WARNING: return cPelmWarning::kInputReportLength;
    case PELM_MODEL_IOBOARD: return cPelmIoBoard::kInputReportLength;
    default: return 0;
  }
}

std::string CockpitSnapshot(const Bus& bus) {
  std::vector<std::string> panels;
  std::map<uint16_t, int> seenOfProduct;
  const std::vector<std::shared_ptr<SimDevice>> devices = bus.Devices();
  for (std::size_t id = 0; id < devices.size(); ++id) {
    SimDevice& device = *devices[id];
    const ModelDescriptor* model = ModelByProductId(device.Description().productId);
    if (model == nullptr) continue;
    const std::size_t inputLength = InputReportLength(model->productId);
    Report input = device.LastInput();
    input.resize(inputLength, 0);
    const std::string family = model->family;
    constexpr std::size_t kFamilyPrefix = 4;  // "Pelm"
    Json panel;
    panel.Field("id").Number(static_cast<long long>(id)).Field("model").Number(model->typeCode);
    panel.Field("name").String(family.substr(kFamilyPrefix)).Field("ordinal").Number(++seenOfProduct[model->productId]);
    panel.Field("plugged").Bool(device.Present()).Field("input").Numbers(input);
    AddShown(panel, model->typeCode, device);
    panels.push_back(panel.Object());
  }
  return Json().Field("segments").Raw(SegmentBits()).Field("panels").Raw(Array(panels)).Object();
}

}  // namespace pelm::sim::web
