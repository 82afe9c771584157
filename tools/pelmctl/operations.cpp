#include "tools/pelmctl/operations.h"

#include <array>
#include <charconv>

#include "core/pelm_dev.h"
#include "tools/pelmctl/argument_parsing.h"

namespace pelmctl {
namespace {

using enum Direction;

// Positions of each display, as many segment bytes (or glyphs) as the panel has.
constexpr uint32_t kRadioDisplayPositions = 6;
constexpr uint32_t kAlphaPositions = 4;
constexpr uint32_t kAlphaNumericPositions = 5;
constexpr uint32_t kAlpha2NumericPositions = 6;
constexpr uint32_t kSquawkDigitPositions = 1;
constexpr std::array<uint32_t, 5> kAutopilotDisplayPositions = {3, 3, 3, 6, 6};
constexpr std::array<uint32_t, 6> kAutopilot2DisplayPositions = {3, 5, 5, 5, 5, 3};

// The keypad hands out up to four key codes through one pointer; a getter of
// separate outputs keeps the table's binding uniform.
constexpr uint32_t kKeypadKeyCodes = 4;
int32_t KeypadKeycodes(int32_t deviceIndex, uint8_t* key1, uint8_t* key2, uint8_t* key3, uint8_t* key4,
                       uint32_t* count) {
  std::array<uint8_t, kKeypadKeyCodes> keys{};
  const int32_t status = PelmKeypad_GetKeycodes(deviceIndex, keys.data(), count);
  *key1 = keys[0];
  *key2 = keys[1];
  *key3 = keys[2];
  *key4 = keys[3];
  return status;
}

template <auto Export>
Operation Op(std::string_view family, Direction direction, std::string_view name, uint32_t positions,
             std::vector<std::string_view> argumentNames, std::vector<std::string_view> outputNames) {
  return {family,       name,   direction, binding::Bound<Export>::Arguments(), std::move(argumentNames),
          std::move(outputNames), positions, binding::Bound<Export>::Call};
}

const std::vector<Operation>& Table() {
  static const std::vector<Operation> table = {
    Op<PelmButtons_SetIndicators>("buttons", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmButtons_SetBrightness>("buttons", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmButtons_GetIndicators>("buttons", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmButtons_GetBrightness>("buttons", Get, "brightness", 0, {}, {"level"}),
    Op<PelmButtons_GetSwitchVals>("buttons", Get, "switch-vals", 0, {}, {"switches"}),
    Op<PelmToggles_SetIndicators>("toggles", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmToggles_SetBrightness>("toggles", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmToggles_GetIndicators>("toggles", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmToggles_GetBrightness>("toggles", Get, "brightness", 0, {}, {"level"}),
    Op<PelmToggles_GetSwitchVals>("toggles", Get, "switch-vals", 0, {}, {"switches"}),
    Op<PelmKnobs_SetIndicators>("knobs", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmKnobs_SetBrightness>("knobs", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmKnobs_GetIndicators>("knobs", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmKnobs_GetBrightness>("knobs", Get, "brightness", 0, {}, {"level"}),
    Op<PelmKnobs_GetControlVals>("knobs", Get, "control-vals", 0, {}, {"knob1", "knob2", "knob3", "knob4", "switches"}),
    Op<PelmGear_SetIndicators>("gear", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmGear_SetBrightness>("gear", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmGear_GetIndicators>("gear", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmGear_GetBrightness>("gear", Get, "brightness", 0, {}, {"level"}),
    Op<PelmGear_GetControlVals>("gear", Get, "control-vals", 0, {}, {"value", "control"}),
    Op<PelmKeypad_SetIndicators>("keypad", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmKeypad_SetBrightness>("keypad", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmKeypad_GetIndicators>("keypad", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmKeypad_GetBrightness>("keypad", Get, "brightness", 0, {}, {"level"}),
    Op<KeypadKeycodes>("keypad", Get, "keycodes", 0, {}, {"key1", "key2", "key3", "key4", "count"}),
    Op<PelmGear2_SetIndicators>("gear2", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmGear2_SetBrightness>("gear2", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmGear2_GetIndicators>("gear2", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmGear2_GetBrightness>("gear2", Get, "brightness", 0, {}, {"level"}),
    Op<PelmGear2_GetControlVals>("gear2", Get, "control-vals", 0, {}, {"value1", "value2", "value3", "control"}),
    Op<PelmWarning_GetControlVals>("warning", Get, "control-vals", 0, {}, {"control"}),
    Op<PelmWarning_GetBrightness>("warning", Get, "brightness", 0, {}, {"level"}),
    Op<PelmWarning_SetBrightness>("warning", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmWarning_GetIndColor>("warning", Get, "ind-color", 0, {"INDICATOR"}, {"component1", "component2", "component3"}),
    Op<PelmWarning_SetIndColor>("warning", Set, "ind-color", 0, {"INDICATOR", "C1", "C2", "C3"}, {}),
    Op<PelmWarning_GetIndColorValue>("warning", Get, "ind-color-value", 0, {"INDICATOR"}, {"color"}),
    Op<PelmWarning_SetIndColorValue>("warning", Set, "ind-color-value", 0, {"INDICATOR", "COLOR"}, {}),
    Op<PelmIoBoard_GetSwitchVals>("ioboard", Get, "switch-vals", 0, {}, {"input1", "input2", "input3", "input4", "input5", "input6", "input7"}),
    Op<PelmIoBoard_SetIndicators>("ioboard", Set, "indicators", 0, {"OUT1", "OUT2", "OUT3", "OUT4"}, {}),
    Op<PelmIoBoard_GetIndicators>("ioboard", Get, "indicators", 0, {"UNUSED1", "UNUSED2", "UNUSED3", "UNUSED4"}, {}),
    Op<PelmIoBoard_GetBrightness>("ioboard", Get, "brightness", 0, {"UNUSED"}, {}),
    Op<PelmIoBoard_SetBrightness>("ioboard", Set, "brightness", 0, {"UNUSED"}, {}),
    Op<PelmEngineStart_GetControlVals>("enginestart", Get, "control-vals", 0, {}, {"selector1", "selector2", "selector3"}),
    Op<PelmRadio_GetBrightness>("radio", Get, "brightness", 0, {}, {"level"}),
    Op<PelmRadio_GetControlVals>("radio", Get, "control-vals", 0, {}, {"dial1", "dial2", "switches"}),
    Op<PelmRadio_GetIndicators>("radio", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmRadio_SetBrightness>("radio", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmRadio_SetIndicators>("radio", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmRadio_SetLDisplaySegments>("radio", Set, "ldisplay-segments", kRadioDisplayPositions, {"SEGMENTS"}, {}),
    Op<PelmRadio_SetLDisplayText>("radio", Set, "ldisplay-text", 0, {"TEXT"}, {}),
    Op<PelmRadio_SetRDisplaySegments>("radio", Set, "rdisplay-segments", kRadioDisplayPositions, {"SEGMENTS"}, {}),
    Op<PelmRadio_SetRDisplayText>("radio", Set, "rdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAlpha_GetDialVals>("alpha", Get, "dial-vals", 0, {}, {"dial1", "dial2"}),
    Op<PelmAlpha_SetAlpha>("alpha", Set, "alpha", 0, {"TEXT"}, {}),
    Op<PelmAlpha_SetAlphaSegments>("alpha", Set, "alpha-segments", kAlphaPositions, {"GLYPHS"}, {}),
    Op<PelmAlpha_SetBrightness>("alpha", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmAlpha_SetNumeric>("alpha", Set, "numeric", 0, {"TEXT"}, {}),
    Op<PelmAlpha_SetNumericSegments>("alpha", Set, "numeric-segments", kAlphaNumericPositions, {"SEGMENTS"}, {}),
    Op<PelmAlpha2_GetBrightness>("alpha2", Get, "brightness", 0, {}, {"level"}),
    Op<PelmAlpha2_GetControlVals>("alpha2", Get, "control-vals", 0, {}, {"dial1", "dial2", "switches"}),
    Op<PelmAlpha2_SetAlpha>("alpha2", Set, "alpha", 0, {"TEXT"}, {}),
    Op<PelmAlpha2_SetAlphaSegments>("alpha2", Set, "alpha-segments", kAlphaPositions, {"GLYPHS"}, {}),
    Op<PelmAlpha2_SetBrightness>("alpha2", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmAlpha2_SetNumeric>("alpha2", Set, "numeric", 0, {"TEXT"}, {}),
    Op<PelmAlpha2_SetNumericSegments>("alpha2", Set, "numeric-segments", kAlpha2NumericPositions, {"SEGMENTS"}, {}),
    Op<PelmSquawk_GetBrightness>("squawk", Get, "brightness", 0, {}, {"level"}),
    Op<PelmSquawk_GetControlVals>("squawk", Get, "control-vals", 0, {}, {"dial", "switches"}),
    Op<PelmSquawk_SetBrightness>("squawk", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmSquawk_SetDigit>("squawk", Set, "digit", 0, {"TEXT"}, {}),
    Op<PelmSquawk_SetDigitSegments>("squawk", Set, "digit-segments", kSquawkDigitPositions, {"SEGMENTS"}, {}),
    Op<PelmAutopilot_GetBrightness>("autopilot", Get, "brightness", 0, {}, {"level"}),
    Op<PelmAutopilot_GetControlVals>("autopilot", Get, "control-vals", 0, {}, {"dial1", "dial2", "dial3", "dial4", "dial5", "switches1", "switches2"}),
    Op<PelmAutopilot_GetIndicators>("autopilot", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmAutopilot_SetBrightness>("autopilot", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmAutopilot_SetIndicators>("autopilot", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmAutopilot_SetADisplaySegments>("autopilot", Set, "adisplay-segments", kAutopilotDisplayPositions[0], {"SEGMENTS"}, {}),
    Op<PelmAutopilot_SetADisplayText>("autopilot", Set, "adisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot_SetBDisplaySegments>("autopilot", Set, "bdisplay-segments", kAutopilotDisplayPositions[1], {"SEGMENTS"}, {}),
    Op<PelmAutopilot_SetBDisplayText>("autopilot", Set, "bdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot_SetCDisplaySegments>("autopilot", Set, "cdisplay-segments", kAutopilotDisplayPositions[2], {"SEGMENTS"}, {}),
    Op<PelmAutopilot_SetCDisplayText>("autopilot", Set, "cdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot_SetDDisplaySegments>("autopilot", Set, "ddisplay-segments", kAutopilotDisplayPositions[3], {"SEGMENTS"}, {}),
    Op<PelmAutopilot_SetDDisplayText>("autopilot", Set, "ddisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot_SetEDisplaySegments>("autopilot", Set, "edisplay-segments", kAutopilotDisplayPositions[4], {"SEGMENTS"}, {}),
    Op<PelmAutopilot_SetEDisplayText>("autopilot", Set, "edisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_GetBrightness>("autopilot2", Get, "brightness", 0, {}, {"level"}),
    Op<PelmAutopilot2_GetControlVals>("autopilot2", Get, "control-vals", 0, {}, {"dial1", "dial2", "dial3", "dial4", "dial5", "dial6", "switches"}),
    Op<PelmAutopilot2_GetIndicators>("autopilot2", Get, "indicators", 0, {}, {"indicators"}),
    Op<PelmAutopilot2_SetBrightness>("autopilot2", Set, "brightness", 0, {"LEVEL"}, {}),
    Op<PelmAutopilot2_SetIndicators>("autopilot2", Set, "indicators", 0, {"BITS"}, {}),
    Op<PelmAutopilot2_SetADisplaySegments>("autopilot2", Set, "adisplay-segments", kAutopilot2DisplayPositions[0], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetADisplayText>("autopilot2", Set, "adisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_SetBDisplaySegments>("autopilot2", Set, "bdisplay-segments", kAutopilot2DisplayPositions[1], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetBDisplayText>("autopilot2", Set, "bdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_SetCDisplaySegments>("autopilot2", Set, "cdisplay-segments", kAutopilot2DisplayPositions[2], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetCDisplayText>("autopilot2", Set, "cdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_SetDDisplaySegments>("autopilot2", Set, "ddisplay-segments", kAutopilot2DisplayPositions[3], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetDDisplayText>("autopilot2", Set, "ddisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_SetEDisplaySegments>("autopilot2", Set, "edisplay-segments", kAutopilot2DisplayPositions[4], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetEDisplayText>("autopilot2", Set, "edisplay-text", 0, {"TEXT"}, {}),
    Op<PelmAutopilot2_SetFDisplaySegments>("autopilot2", Set, "fdisplay-segments", kAutopilot2DisplayPositions[5], {"SEGMENTS"}, {}),
    Op<PelmAutopilot2_SetFDisplayText>("autopilot2", Set, "fdisplay-text", 0, {"TEXT"}, {}),
    Op<PelmMapCtl_GetControlVals>("mapctl", Get, "control-vals", 0, {}, {"dial1", "dial2", "switches", "selectors"}),
    Op<PelmThrottle_GetControlVals>("throttle", Get, "control-vals", 0, {}, {"lever1", "lever2", "lever3", "lever4", "lever5", "lever6", "switches"}),
    Op<PelmEngineCtl_GetControlVals>("enginectl", Get, "control-vals", 0, {}, {"selector", "switch1", "three-position", "switch2", "switches"}),
  };
  return table;
}

std::string Join(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : ", ") + word;
  return text;
}

}  // namespace

std::span<const Operation> AllOperations() { return Table(); }

const Operation& FindOperation(std::string_view family, std::string_view name, Direction direction) {
  std::vector<std::string> families;
  std::vector<std::string> names;
  bool familyKnown = false;
  for (const Operation& operation : Table()) {
    if (families.empty() || families.back() != operation.family) families.emplace_back(operation.family);
    if (operation.family != family) continue;
    familyKnown = true;
    if (operation.direction != direction) continue;
    if (operation.name == name) return operation;
    names.emplace_back(operation.name);
  }
  if (!familyKnown) {
    throw UsageError("unknown family '" + std::string(family) + "'; families: " + Join(families));
  }
  const char* verb = direction == Set ? "set" : "get";
  if (names.empty()) throw UsageError("a " + std::string(family) + " has nothing to " + verb);
  throw UsageError("a " + std::string(family) + " has no " + verb + " operation '" + std::string(name) +
                   "'; it has: " + Join(names));
}

std::string Synopsis(const Operation& operation) {
  std::string text(operation.name);
  for (std::string_view argument : operation.argumentNames) {
    text += ' ';
    text += argument;
  }
  return text;
}

uint32_t ParseNumber(std::string_view text, std::string_view what) {
  constexpr int kDecimal = 10;
  constexpr int kHex = 16;
  int base = kDecimal;
  std::string_view digits = text;
  if (digits.starts_with("0x") || digits.starts_with("0X")) {
    base = kHex;
    digits.remove_prefix(2);
  }
  uint32_t value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value, base);
  if (digits.empty() || error != std::errc() || end != digits.data() + digits.size()) {
    throw UsageError("'" + std::string(text) + "' is not a " + std::string(what) +
                     " (expected an unsigned 32-bit number, decimal or 0x-hex)");
  }
  return value;
}

OperationResult Invoke(const Operation& operation, int32_t deviceIndex, const std::vector<std::string>& arguments) {
  if (arguments.size() != operation.arguments.size()) {
    throw UsageError(std::string(operation.family) + " " + std::string(operation.name) + " takes " +
                     std::to_string(operation.arguments.size()) + " argument(s), " +
                     std::to_string(arguments.size()) + " given; usage: " + Synopsis(operation));
  }
  return operation.call(deviceIndex, arguments, operation.positions);
}

namespace binding {
namespace {

template <class Value>
std::vector<Value> ParseList(const std::string& text, uint32_t positions, uint32_t largest, const char* what) {
  std::vector<Value> values;
  std::string_view rest = text;
  while (true) {
    const std::size_t comma = rest.find(',');
    const uint32_t value = ParseNumber(rest.substr(0, comma), what);
    if (value > largest) throw UsageError("'" + std::string(rest.substr(0, comma)) + "' does not fit in a " + what);
    values.push_back(static_cast<Value>(value));
    if (comma == std::string_view::npos) break;
    rest.remove_prefix(comma + 1);
  }
  if (values.size() != positions) {
    throw UsageError("the display has " + std::to_string(positions) + " positions: give " + std::to_string(positions) +
                     " comma-separated " + what + "s, got " + std::to_string(values.size()));
  }
  return values;
}

}  // namespace

std::vector<uint8_t> ParseByteList(const std::string& text, uint32_t positions) {
  constexpr uint32_t kLargestByte = 0xFF;
  return ParseList<uint8_t>(text, positions, kLargestByte, "segment byte");
}

std::vector<uint16_t> ParseWordList(const std::string& text, uint32_t positions) {
  constexpr uint32_t kLargestGlyph = 0xFFFF;
  return ParseList<uint16_t>(text, positions, kLargestGlyph, "glyph");
}

}  // namespace binding
}  // namespace pelmctl
