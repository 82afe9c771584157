#include "soak/final_reports.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <string>
#include <utility>

#include "core/pelm_dev.h"
#include "models/segment_encoding.h"
#include "models/switch_panels.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/lamp_panel.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::soak {
namespace {

using sim::Report;
using Shown = std::function<Report(sim::SimDevice&)>;
using ValueSetter = std::function<int32_t(int32_t index, uint32_t value)>;
using TextSetter = std::function<int32_t(int32_t index, const char* text)>;
using SegmentSetter = std::function<int32_t(int32_t index, const uint8_t* segments)>;

// The report of `reportId` followed by the bytes from `first` to `last`, built
// at its full size: GCC 12 at -O3 takes an insert into a one-byte vector for an
// out-of-bounds copy and fails the release build.
template <class Iterator>
Report WithReportId(uint8_t reportId, Iterator first, Iterator last) {
  Report report(1 + static_cast<std::size_t>(std::distance(first, last)));
  report[0] = reportId;
  std::copy(first, last, report.begin() + 1);
  return report;
}

// ---- The values of each round ----------------------------------------------

// Indicator bytes and words: every bit flips between the rounds.
constexpr uint8_t kIndicatorBytes[kFinalRounds] = {0x5A, 0xA5};
constexpr uint32_t kIndicatorWords[kFinalRounds] = {0x12345678, 0xEDCBA987};
// Brightness levels wider than the four bits a report carries: the setters
// must send the low four alone.
constexpr uint32_t kBrightnessLevels[kFinalRounds] = {0x35, 0x4C};
constexpr uint8_t kBrightnessBits = 0x0F;
// The gear panel's setter always lights lamps 0 and 1.
constexpr uint8_t kGearLampsAlwaysLit = 0x03;

// Bytes that differ from position to position and, at every position, between
// the two rounds (by a constant that is no multiple of 256).
constexpr uint8_t kPatternStart[kFinalRounds] = {0x21, 0x42};
constexpr uint8_t kPatternStep = 0x0D;
uint8_t PatternByte(int round, std::size_t position) {
  return static_cast<uint8_t>(kPatternStart[round] + position * kPatternStep);
}

// The first round draws text on the seven-segment displays, the second sets
// segment bytes. The text is digits with a point after the first, which lights
// the first digit's point on every panel.
constexpr const char* kDisplayDigits = "314159265";
constexpr const char* kNumericDigits = "141592";
constexpr uint8_t kDigitGlyphs[] = {
    kSegmentA | kSegmentB | kSegmentC | kSegmentD | kSegmentE | kSegmentF,
    kSegmentB | kSegmentC,
    kSegmentA | kSegmentB | kSegmentD | kSegmentE | kSegmentG,
    kSegmentA | kSegmentB | kSegmentC | kSegmentD | kSegmentG,
    kSegmentB | kSegmentC | kSegmentF | kSegmentG,
    kSegmentA | kSegmentC | kSegmentD | kSegmentF | kSegmentG,
    kSegmentA | kSegmentC | kSegmentD | kSegmentE | kSegmentF | kSegmentG,
    kSegmentA | kSegmentB | kSegmentC,
    kSegmentA | kSegmentB | kSegmentC | kSegmentD | kSegmentE | kSegmentF | kSegmentG,
    kSegmentA | kSegmentB | kSegmentC | kSegmentF | kSegmentG,
};
uint8_t GlyphOf(char digit) { return kDigitGlyphs[digit - '0']; }
constexpr int kTextRound = 0;

// The digits a display of `positions` shows in the text round, with the point.
std::string DisplayText(std::size_t positions) {
  std::string text(positions + 1, '.');
  text[0] = kDisplayDigits[0];
  std::copy_n(kDisplayDigits + 1, positions - 1, text.begin() + 2);
  return text;
}

// Segment bytes of the round, position 0 first.
std::vector<uint8_t> DisplaySegments(int round, std::size_t positions) {
  std::vector<uint8_t> segments(positions);
  if (round == kTextRound) {
    for (std::size_t i = 0; i < positions; ++i) segments[i] = GlyphOf(kDisplayDigits[i]);
    segments[0] |= kSegmentPoint;
  } else {
    for (std::size_t i = 0; i < positions; ++i) segments[i] = PatternByte(round, i);
  }
  return segments;
}

// ---- What a panel shows ------------------------------------------------------

// The last feature report a remembering panel received under this ID, whole.
Shown LastFeatureOf(uint8_t reportId) {
  return [reportId](sim::SimDevice& device) {
    return device.PanelAs<sim::GenericPanel>().LastFeature(reportId).value_or(Report{});
  };
}

// A lamp panel keeps the value byte alone.
Shown LampPanelIndicators() {
  return [](sim::SimDevice& device) {
    return Report{sim::LampPanel::kIndicatorReport, device.PanelAs<sim::LampPanel>().Indicators()};
  };
}
Shown LampPanelBrightness() {
  return [](sim::SimDevice& device) {
    return Report{sim::LampPanel::kBrightnessReport, device.PanelAs<sim::LampPanel>().Brightness()};
  };
}

// ---- One entry per kind of report --------------------------------------------

FinalReport Brightness(uint8_t reportId, ValueSetter setter, Shown shown) {
  return {"brightness", reportId,
          [setter](int32_t index, int round) { return setter(index, kBrightnessLevels[round]); },
          [reportId](int round) {
            return Report{reportId, static_cast<uint8_t>(kBrightnessLevels[round] & kBrightnessBits)};
          },
          std::move(shown)};
}

FinalReport IndicatorByte(uint8_t reportId, ValueSetter setter, Shown shown, uint8_t alwaysLit = 0) {
  return {"indicators", reportId,
          [setter](int32_t index, int round) { return setter(index, kIndicatorBytes[round]); },
          [reportId, alwaysLit](int round) {
            return Report{reportId, static_cast<uint8_t>(kIndicatorBytes[round] | alwaysLit)};
          },
          std::move(shown)};
}

FinalReport SevenSegmentDisplay(const std::string& what, uint8_t reportId, std::size_t positions, TextSetter setText,
                                SegmentSetter setSegments) {
  return {what, reportId,
          [setText, setSegments, positions](int32_t index, int round) {
            if (round == kTextRound) return setText(index, DisplayText(positions).c_str());
            return setSegments(index, DisplaySegments(round, positions).data());
          },
          [reportId, positions](int round) {
            const std::vector<uint8_t> segments = DisplaySegments(round, positions);
            return WithReportId(reportId, segments.begin(), segments.end());
          },
          LastFeatureOf(reportId)};
}

// ---- The models ----------------------------------------------------------------

// The switch panels have no panel of their own on the simulated bus (a generic
// device remembers what they are sent): their report IDs are the model's.
std::vector<FinalReport> SwitchPanelReports(ValueSetter setIndicators, ValueSetter setBrightness) {
  return {IndicatorByte(cPelmSwitchPanel::kIndicatorReport, std::move(setIndicators),
                        LastFeatureOf(cPelmSwitchPanel::kIndicatorReport)),
          Brightness(cPelmSwitchPanel::kBrightnessReport, std::move(setBrightness),
                     LastFeatureOf(cPelmSwitchPanel::kBrightnessReport))};
}

std::vector<FinalReport> LampPanelReports(ValueSetter setIndicators, ValueSetter setBrightness,
                                          uint8_t alwaysLit = 0) {
  return {IndicatorByte(sim::LampPanel::kIndicatorReport, std::move(setIndicators), LampPanelIndicators(), alwaysLit),
          Brightness(sim::LampPanel::kBrightnessReport, std::move(setBrightness), LampPanelBrightness())};
}

// Sixteen-segment glyphs go out low byte first; the numeric display's report
// holds position 0 last.
std::vector<FinalReport> AlphaPanelReports(std::size_t numericPositions,
                                           std::function<int32_t(int32_t, const uint16_t*)> setAlphaSegments,
                                           TextSetter setNumeric, SegmentSetter setNumericSegments,
                                           ValueSetter setBrightness) {
  using Panel = sim::AlphaPanelSim;
  auto glyphs = [](int round) {
    std::array<uint16_t, Panel::kAlphaPositions> codes;
    for (std::size_t i = 0; i < codes.size(); ++i) {
      codes[i] = static_cast<uint16_t>(PatternByte(round, 2 * i) | PatternByte(round, 2 * i + 1) << 8);
    }
    return codes;
  };
  auto numericSegments = [numericPositions](int round) {
    std::vector<uint8_t> segments(numericPositions);
    for (std::size_t i = 0; i < numericPositions; ++i) {
      segments[i] = round == kTextRound ? GlyphOf(kNumericDigits[i]) : PatternByte(round, i);
    }
    return segments;
  };
  FinalReport alpha{"alphanumeric display", Panel::kAlphaReport,
                    [setAlphaSegments, glyphs](int32_t index, int round) {
                      return setAlphaSegments(index, glyphs(round).data());
                    },
                    [glyphs](int round) {
                      std::vector<uint8_t> bytes;
                      for (uint16_t code : glyphs(round)) {
                        bytes.push_back(static_cast<uint8_t>(code));
                        bytes.push_back(static_cast<uint8_t>(code >> 8));
                      }
                      return WithReportId(Panel::kAlphaReport, bytes.begin(), bytes.end());
                    },
                    LastFeatureOf(Panel::kAlphaReport)};
  FinalReport numeric{"numeric display", Panel::kNumericReport,
                      [setNumeric, setNumericSegments, numericSegments, numericPositions](int32_t index, int round) {
                        if (round == kTextRound) {
                          return setNumeric(index, std::string(kNumericDigits, numericPositions).c_str());
                        }
                        return setNumericSegments(index, numericSegments(round).data());
                      },
                      [numericSegments](int round) {
                        const std::vector<uint8_t> segments = numericSegments(round);
                        return WithReportId(Panel::kNumericReport, segments.rbegin(), segments.rend());
                      },
                      LastFeatureOf(Panel::kNumericReport)};
  return {std::move(alpha), std::move(numeric),
          Brightness(Panel::kBrightnessReport, std::move(setBrightness), LastFeatureOf(Panel::kBrightnessReport))};
}

template <std::size_t N>
void AddDisplays(std::vector<FinalReport>& reports, const std::array<sim::DisplayReport, N>& displays,
                 const std::array<TextSetter, N>& setText, const std::array<SegmentSetter, N>& setSegments) {
  for (std::size_t i = 0; i < N; ++i) {
    reports.push_back(SevenSegmentDisplay(std::string("display ") + displays[i].name, displays[i].reportId,
                                          displays[i].positions, setText[i], setSegments[i]));
  }
}

std::vector<FinalReport> RadioReports() {
  using Panel = sim::RadioPanelSim;
  return {SevenSegmentDisplay("left display", Panel::kLeftDisplayReport, Panel::kDisplayPositions,
                              &PelmRadio_SetLDisplayText, &PelmRadio_SetLDisplaySegments),
          SevenSegmentDisplay("right display", Panel::kRightDisplayReport, Panel::kDisplayPositions,
                              &PelmRadio_SetRDisplayText, &PelmRadio_SetRDisplaySegments),
          Brightness(Panel::kBrightnessReport, &PelmRadio_SetBrightness, LastFeatureOf(Panel::kBrightnessReport)),
          IndicatorByte(Panel::kIndicatorReport, &PelmRadio_SetIndicators, LastFeatureOf(Panel::kIndicatorReport))};
}

std::vector<FinalReport> SquawkReports() {
  using Panel = sim::SquawkPanelSim;
  constexpr std::size_t kDigitPositions = 1;
  return {SevenSegmentDisplay("digit", Panel::kDigitReport, kDigitPositions, &PelmSquawk_SetDigit,
                              &PelmSquawk_SetDigitSegments),
          Brightness(Panel::kBrightnessReport, &PelmSquawk_SetBrightness, LastFeatureOf(Panel::kBrightnessReport))};
}

std::vector<FinalReport> AutopilotReports() {
  using Panel = sim::AutopilotPanelSim;
  std::vector<FinalReport> reports;
  AddDisplays<5>(reports, Panel::kDisplays,
                 {&PelmAutopilot_SetADisplayText, &PelmAutopilot_SetBDisplayText, &PelmAutopilot_SetCDisplayText,
                  &PelmAutopilot_SetDDisplayText, &PelmAutopilot_SetEDisplayText},
                 {&PelmAutopilot_SetADisplaySegments, &PelmAutopilot_SetBDisplaySegments,
                  &PelmAutopilot_SetCDisplaySegments, &PelmAutopilot_SetDDisplaySegments,
                  &PelmAutopilot_SetEDisplaySegments});
  reports.push_back(
      Brightness(Panel::kBrightnessReport, &PelmAutopilot_SetBrightness, LastFeatureOf(Panel::kBrightnessReport)));
  reports.push_back(
      IndicatorByte(Panel::kIndicatorReport, &PelmAutopilot_SetIndicators, LastFeatureOf(Panel::kIndicatorReport)));
  return reports;
}

std::vector<FinalReport> Autopilot2Reports() {
  using Panel = sim::Autopilot2PanelSim;
  std::vector<FinalReport> reports;
  AddDisplays<6>(reports, Panel::kDisplays,
                 {&PelmAutopilot2_SetADisplayText, &PelmAutopilot2_SetBDisplayText, &PelmAutopilot2_SetCDisplayText,
                  &PelmAutopilot2_SetDDisplayText, &PelmAutopilot2_SetEDisplayText, &PelmAutopilot2_SetFDisplayText},
                 {&PelmAutopilot2_SetADisplaySegments, &PelmAutopilot2_SetBDisplaySegments,
                  &PelmAutopilot2_SetCDisplaySegments, &PelmAutopilot2_SetDDisplaySegments,
                  &PelmAutopilot2_SetEDisplaySegments, &PelmAutopilot2_SetFDisplaySegments});
  reports.push_back(
      Brightness(Panel::kBrightnessReport, &PelmAutopilot2_SetBrightness, LastFeatureOf(Panel::kBrightnessReport)));
  // The indicator word goes out most significant byte first.
  reports.push_back({"indicators", Panel::kIndicatorReport,
                     [](int32_t index, int round) {
                       return PelmAutopilot2_SetIndicators(index, kIndicatorWords[round]);
                     },
                     [](int round) {
                       const uint32_t word = kIndicatorWords[round];
                       return Report{Panel::kIndicatorReport, static_cast<uint8_t>(word >> 24),
                                     static_cast<uint8_t>(word >> 16), static_cast<uint8_t>(word >> 8),
                                     static_cast<uint8_t>(word)};
                     },
                     LastFeatureOf(Panel::kIndicatorReport)});
  return reports;
}

// One report per indicator, each under the same report ID: the panel keeps the
// components by indicator number.
std::vector<FinalReport> WarningReports() {
  using Panel = sim::WarningPanel;
  constexpr std::size_t kComponents = std::tuple_size_v<Panel::Components>;
  std::vector<FinalReport> reports;
  for (int indicator = 1; indicator <= Panel::kIndicatorCount; ++indicator) {
    auto component = [indicator](int round, std::size_t i) {
      return PatternByte(round, (indicator - 1) * kComponents + i);
    };
    reports.push_back({"indicator " + std::to_string(indicator) + " colour", Panel::kIndicatorColorReport,
                       [indicator, component](int32_t index, int round) {
                         return PelmWarning_SetIndColor(index, indicator, component(round, 0), component(round, 1),
                                                        component(round, 2));
                       },
                       [indicator, component](int round) {
                         return Report{Panel::kIndicatorColorReport, static_cast<uint8_t>(indicator),
                                       component(round, 0), component(round, 1), component(round, 2)};
                       },
                       [indicator](sim::SimDevice& device) {
                         const Panel::Components shown = device.PanelAs<Panel>().IndicatorColor(indicator);
                         return Report{Panel::kIndicatorColorReport, static_cast<uint8_t>(indicator), shown[0],
                                       shown[1], shown[2]};
                       }});
  }
  return reports;
}

// The board keeps the four output bytes of its (longer) output report.
std::vector<FinalReport> IoBoardReports() {
  using Panel = sim::IoBoardPanel;
  auto output = [](int round, std::size_t i) { return PatternByte(round, i); };
  return {{"outputs", Panel::kOutputReport,
           [output](int32_t index, int round) {
             return PelmIoBoard_SetIndicators(index, output(round, 0), output(round, 1), output(round, 2),
                                              output(round, 3));
           },
           [output](int round) {
             return Report{Panel::kOutputReport, output(round, 0), output(round, 1), output(round, 2),
                           output(round, 3)};
           },
           [](sim::SimDevice& device) {
             const Panel::Outputs shown = device.PanelAs<Panel>().LastOutputs();
             return WithReportId(Panel::kOutputReport, shown.begin(), shown.end());
           }}};
}

}  // namespace

std::vector<FinalReport> FinalReportsOf(int32_t typeCode) {
  switch (typeCode) {
    case PELM_MODEL_ALPHA:
      return AlphaPanelReports(sim::AlphaPanelSim::kAlphaNumericPositions, &PelmAlpha_SetAlphaSegments,
                               &PelmAlpha_SetNumeric, &PelmAlpha_SetNumericSegments, &PelmAlpha_SetBrightness);
    case PELM_MODEL_ALPHA2:
      return AlphaPanelReports(sim::AlphaPanelSim::kAlpha2NumericPositions, &PelmAlpha2_SetAlphaSegments,
                               &PelmAlpha2_SetNumeric, &PelmAlpha2_SetNumericSegments, &PelmAlpha2_SetBrightness);
    case PELM_MODEL_BUTTONS:
      return SwitchPanelReports(&PelmButtons_SetIndicators, &PelmButtons_SetBrightness);
    case PELM_MODEL_TOGGLES:
      return SwitchPanelReports(&PelmToggles_SetIndicators, &PelmToggles_SetBrightness);
    case PELM_MODEL_KNOBS:
      return LampPanelReports(&PelmKnobs_SetIndicators, &PelmKnobs_SetBrightness);
    case PELM_MODEL_GEAR:
      return LampPanelReports(&PelmGear_SetIndicators, &PelmGear_SetBrightness, kGearLampsAlwaysLit);
    case PELM_MODEL_GEAR2:
      return LampPanelReports(&PelmGear2_SetIndicators, &PelmGear2_SetBrightness);
    case PELM_MODEL_KEYPAD:
      return LampPanelReports(&PelmKeypad_SetIndicators, &PelmKeypad_SetBrightness);
    case PELM_MODEL_RADIO:
      return RadioReports();
    case PELM_MODEL_SQUAWK:
      return SquawkReports();
    case PELM_MODEL_AUTOPILOT:
      return AutopilotReports();
    case PELM_MODEL_AUTOPILOT2:
      return Autopilot2Reports();
    case PELM_MODEL_WARNING:
      return WarningReports();
    case PELM_MODEL_IOBOARD:
      return IoBoardReports();
    default:
      return {};
  }
}

}  // namespace pelm::soak
