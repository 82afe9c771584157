#include "models/autopilot_panels.h"

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"

namespace pelm {
namespace {

// A point that follows no character lights on a position of its own.
constexpr bool kLonePointLit = true;

RecordParams AutopilotParams(WriterVariant writer, uint8_t controlStateReport, uint32_t controlStateReportLength,
                             uint32_t inputReportLength, bool readsSerialNumber) {
  RecordParams params;
  params.channel.writer = writer;
  params.channel.minInputReportLength = inputReportLength;
  params.openReportId = controlStateReport;
  params.openReportLength = controlStateReportLength;
  params.readsSerialNumber = readsSerialNumber;
  return params;
}

// Where a dial of the second panel sits in bytes 1 to 3.
struct HalfByte {
  uint32_t byte;
  bool high;
};
using DialHalves = std::array<HalfByte, cPelmAutopilot2::kDialCount>;
constexpr DialHalves kInputDialHalves = {{{1, true}, {2, true}, {1, false}, {3, true}, {2, false}, {3, false}}};
constexpr DialHalves kControlStateDialHalves = {{{1, true}, {1, false}, {2, true}, {2, false}, {3, true}, {3, false}}};

constexpr uint8_t kHalfByteMask = 0x0F;
constexpr uint8_t kHalfByteSignBit = 0x08;
constexpr int kHalfByteRange = 16;

// A two's-complement count of four bits.
int16_t SignedHalfByte(const uint8_t* report, HalfByte where) {
  const uint8_t byte = report[where.byte];
  const int value = (where.high ? byte >> 4 : byte) & kHalfByteMask;
  return static_cast<int16_t>((value & kHalfByteSignBit) != 0 ? value - kHalfByteRange : value);
}

uint32_t BigEndianWord(const uint8_t* bytes) {
  return static_cast<uint32_t>(bytes[0]) << 24 | static_cast<uint32_t>(bytes[1]) << 16 |
         static_cast<uint32_t>(bytes[2]) << 8 | bytes[3];
}

void PutBigEndianWord(uint32_t word, uint8_t* bytes) {
  bytes[0] = static_cast<uint8_t>(word >> 24);
  bytes[1] = static_cast<uint8_t>(word >> 16);
  bytes[2] = static_cast<uint8_t>(word >> 8);
  bytes[3] = static_cast<uint8_t>(word);
}

}  // namespace

// ---- Both panels ---------------------------------------------------------

cPelmAutopilotPanel::cPelmAutopilotPanel(const char* path, const RecordParams& params, uint8_t brightnessReport,
                                         std::span<const SegmentDisplay> displays)
    : cPelmDeviceRecord(path, params), brightnessReport_(brightnessReport), displays_(displays) {}

int32_t cPelmAutopilotPanel::GetBrightness(uint16_t* level) {
  return ReadFeatureInto(brightnessReport_, brightnessVal, level);
}

int32_t cPelmAutopilotPanel::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, brightnessReport_, level);
}

int32_t cPelmAutopilotPanel::SetDisplaySegments(DisplayName name, const uint8_t* segments) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplaySegments(*this, displays_[name], segments);
}

int32_t cPelmAutopilotPanel::SetDisplayText(DisplayName name, const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueDisplayText(*this, displays_[name], text, kLonePointLit);
}

int32_t cPelmAutopilotPanel::SetADisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kA, segments); }
int32_t cPelmAutopilotPanel::SetADisplayText(const char* text) { return SetDisplayText(kA, text); }
int32_t cPelmAutopilotPanel::SetBDisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kB, segments); }
int32_t cPelmAutopilotPanel::SetBDisplayText(const char* text) { return SetDisplayText(kB, text); }
int32_t cPelmAutopilotPanel::SetCDisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kC, segments); }
int32_t cPelmAutopilotPanel::SetCDisplayText(const char* text) { return SetDisplayText(kC, text); }
int32_t cPelmAutopilotPanel::SetDDisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kD, segments); }
int32_t cPelmAutopilotPanel::SetDDisplayText(const char* text) { return SetDisplayText(kD, text); }
int32_t cPelmAutopilotPanel::SetEDisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kE, segments); }
int32_t cPelmAutopilotPanel::SetEDisplayText(const char* text) { return SetDisplayText(kE, text); }

// ---- First autopilot panel -------------------------------------------------

cPelmAutopilot::cPelmAutopilot(const char* path)
    : cPelmAutopilotPanel(path,
                          AutopilotParams(WriterVariant::Retrying, kControlStateReport, kControlStateReportLength,
                                          kInputReportLength, false),
                          kBrightnessReport, kDisplays) {}

// Unlike the input report's, these dial bytes are taken as unsigned. Nothing
// resets them: the first GetControlVals hands them out.
void cPelmAutopilot::OnOpenTimeReport(const uint8_t* report) {
  for (int i = 0; i < kDialCount; ++i) dialVals[i] = report[kFirstDialByte + i];
  for (int i = 0; i < kSwitchByteCount; ++i) switchVals[i] = report[kFirstSwitchByte + i];
}

void cPelmAutopilot::OnInputReport(const uint8_t* report) {
  AutopilotInputRecord record;
  for (int i = 0; i < kDialCount; ++i) {
    const int16_t dial = SignedByte(report[kFirstDialByte + i]);
    record.dialVals[i] = dial;
    dialVals[i] = dial;
  }
  for (int i = 0; i < kSwitchByteCount; ++i) {
    const uint8_t switches = report[kFirstSwitchByte + i];
    record.switchVals[i] = switches;
    switchVals[i] = switches;
  }
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmAutopilot::GetControlVals(int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4,
                                       int16_t* dial5, uint8_t* switches1, uint8_t* switches2) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  int16_t* const dials[kDialCount] = {dial1, dial2, dial3, dial4, dial5};
  for (int i = 0; i < kDialCount; ++i) HandOutDial(dialVals[i], dials[i]);
  HandOut(switchVals[0], switches1);
  HandOut(switchVals[1], switches2);
  return PELM_SUCCESS;
}

int32_t cPelmAutopilot::GetIndicators(uint8_t* indicators) {
  return ReadFeatureInto(kIndicatorReport, indicatorVals, indicators);
}

int32_t cPelmAutopilot::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  return QueueByteReport(kIndicatorReport, static_cast<uint8_t>(indicators));
}

// ---- Second autopilot panel ------------------------------------------------

cPelmAutopilot2::cPelmAutopilot2(const char* path)
    : cPelmAutopilotPanel(path,
                          AutopilotParams(WriterVariant::VersionSwitched, kControlStateReport,
                                          kControlStateReportLength, kInputReportLength, true),
                          kBrightnessReport, kDisplays) {}

// Nothing resets these: the first GetControlVals hands them out.
void cPelmAutopilot2::OnOpenTimeReport(const uint8_t* report) {
  for (int i = 0; i < kDialCount; ++i) dialVals[i] = SignedHalfByte(report, kControlStateDialHalves[i]);
  switchVals = BigEndianWord(report + kFirstSwitchByte);
}

void cPelmAutopilot2::OnInputReport(const uint8_t* report) {
  Autopilot2InputRecord record;
  for (int i = 0; i < kDialCount; ++i) {
    const int16_t dial = SignedHalfByte(report, kInputDialHalves[i]);
    record.dialVals[i] = dial;
    dialVals[i] = dial;
  }
  record.switchVals = BigEndianWord(report + kFirstSwitchByte);
  switchVals = record.switchVals;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmAutopilot2::GetControlVals(int16_t* dial1, int16_t* dial2, int16_t* dial3, int16_t* dial4,
                                        int16_t* dial5, int16_t* dial6, uint32_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  int16_t* const dials[kDialCount] = {dial1, dial2, dial3, dial4, dial5, dial6};
  for (int i = 0; i < kDialCount; ++i) HandOutDial(dialVals[i], dials[i]);
  HandOut(switchVals, switches);
  return PELM_SUCCESS;
}

int32_t cPelmAutopilot2::GetIndicators(uint32_t* indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  HandOut(indicatorVals, indicators);
  return PELM_SUCCESS;
}

int32_t cPelmAutopilot2::SetIndicators(uint32_t indicators) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  const int32_t status = BuildAndQueue(kIndicatorReportLength, ReportKind::Feature, [indicators](uint8_t* report) {
    report[0] = kIndicatorReport;
    PutBigEndianWord(indicators, report + 1);
  });
  if (status == PELM_SUCCESS) indicatorVals = indicators;
  return status;
}

int32_t cPelmAutopilot2::SetFDisplaySegments(const uint8_t* segments) { return SetDisplaySegments(kF, segments); }
int32_t cPelmAutopilot2::SetFDisplayText(const char* text) { return SetDisplayText(kF, text); }

}  // namespace pelm
