#include "models/alpha_panels.h"

#include <cstring>

#include "core/callbacks.h"
#include "models/host_outputs.h"
#include "models/report_conventions.h"
#include "models/segment_encoding.h"

namespace pelm {
namespace {

RecordParams AlphaParams(WriterVariant writer, uint32_t inputReportLength) {
  RecordParams params;
  params.channel.writer = writer;
  params.channel.minInputReportLength = inputReportLength;
  return params;
}

constexpr uint8_t LowByte(uint16_t value) { return static_cast<uint8_t>(value); }
constexpr uint8_t HighByte(uint16_t value) { return static_cast<uint8_t>(value >> 8); }

}  // namespace

cPelmAlphaPanel::cPelmAlphaPanel(const char* path, const RecordParams& params, uint16_t numericPositions)
    : cPelmDeviceRecord(path, params), numericPositions_(numericPositions) {}

void cPelmAlphaPanel::ApplyStateDefaults() {
  for (auto& dial : dialVals) dial = 0;
}

std::array<int16_t, cPelmAlphaPanel::kDialCount> cPelmAlphaPanel::StoreDials(const uint8_t* report) {
  std::array<int16_t, kDialCount> dials;
  for (int i = 0; i < kDialCount; ++i) {
    dials[i] = SignedByte(report[kFirstDialByte + i]);
    dialVals[i] = dials[i];
  }
  return dials;
}

void cPelmAlphaPanel::HandOutDials(int16_t* dial1, int16_t* dial2) {
  HandOutDial(dialVals[0], dial1);
  HandOutDial(dialVals[1], dial2);
}

int32_t cPelmAlphaPanel::SetAlpha(const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (text == nullptr) return PELM_ERR_PARAM;
  return BuildAndQueue(kAlphaReportLength, ReportKind::Feature, [text](uint8_t* report) {
    uint16_t glyphs[kAlphaPositions];
    TextToAlphaSegments(text, glyphs, kAlphaPositions);
    report[0] = kAlphaReport;
    for (uint16_t i = 0; i < kAlphaPositions; ++i) {
      report[1 + 2 * i] = LowByte(glyphs[i]);
      report[2 + 2 * i] = HighByte(glyphs[i]);
    }
  });
}

// The host's codes go out as they lie in its memory: low byte first on the
// little-endian machines the panels are driven from.
int32_t cPelmAlphaPanel::SetAlphaSegments(const uint16_t* glyphs) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (glyphs == nullptr) return PELM_ERR_PARAM;
  return BuildAndQueue(kAlphaReportLength, ReportKind::Feature, [glyphs](uint8_t* report) {
    report[0] = kAlphaReport;
    std::memcpy(report + 1, glyphs, kAlphaReportLength - 1);
  });
}

// The numeric encoder fills right to left, which is the report's order: the
// text goes straight into the report.
int32_t cPelmAlphaPanel::SetNumeric(const char* text) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  if (text == nullptr) return PELM_ERR_PARAM;
  return BuildAndQueue(numericPositions_ + 1u, ReportKind::Feature, [this, text](uint8_t* report) {
    report[0] = kNumericReport;
    TextToNumericSegments(text, report + 1, numericPositions_);
  });
}

int32_t cPelmAlphaPanel::SetNumericSegments(const uint8_t* segments) {
  if (!IsConnected()) return PELM_SUCCESS;
  if (segments == nullptr) return PELM_ERR_PARAM;
  return BuildAndQueue(numericPositions_ + 1u, ReportKind::Feature, [this, segments](uint8_t* report) {
    report[0] = kNumericReport;
    for (uint16_t position = 0; position < numericPositions_; ++position) {
      report[numericPositions_ - position] = segments[position];
    }
  });
}

int32_t cPelmAlphaPanel::SetBrightness(uint32_t level) {
  return QueueBrightness(*this, kBrightnessReport, level);
}

cPelmAlpha::cPelmAlpha(const char* path)
    : cPelmAlphaPanel(path, AlphaParams(WriterVariant::Direct, kInputReportLength), kNumericPositions) {}

void cPelmAlpha::OnInputReport(const uint8_t* report) {
  const auto dials = StoreDials(report);
  AlphaInputRecord record{{dials[0], dials[1]}};
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmAlpha::GetDialVals(int16_t* dial1, int16_t* dial2) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  HandOutDials(dial1, dial2);
  return PELM_SUCCESS;
}

cPelmAlpha2::cPelmAlpha2(const char* path)
    : cPelmAlphaPanel(path, AlphaParams(WriterVariant::Retrying, kInputReportLength), kNumericPositions) {}

void cPelmAlpha2::ApplyStateDefaults() {
  cPelmAlphaPanel::ApplyStateDefaults();
  switchVals = 0;
}

void cPelmAlpha2::OnInputReport(const uint8_t* report) {
  const auto dials = StoreDials(report);
  Alpha2InputRecord record{{dials[0], dials[1]}, report[kSwitchByte]};
  switchVals = record.switchVals;
  DispatchInput(kTypeCode, CallbackIndex(), &record);
}

int32_t cPelmAlpha2::GetControlVals(int16_t* dial1, int16_t* dial2, uint8_t* switches) {
  if (!IsConnected()) return PELM_ERR_NODEVICE;
  HandOutDials(dial1, dial2);
  HandOut(switchVals, switches);
  return PELM_SUCCESS;
}

int32_t cPelmAlpha2::GetBrightness(uint16_t* level) {
  return ReadFeatureInto(kBrightnessReport, brightnessVal, level);
}

}  // namespace pelm
