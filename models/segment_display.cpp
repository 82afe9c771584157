#include "models/segment_display.h"

#include <cstring>

#include "models/segment_encoding.h"

namespace pelm {

int32_t QueueDisplaySegments(cHidChannel& channel, const SegmentDisplay& display, const uint8_t* segments) {
  if (segments == nullptr) return PELM_ERR_PARAM;
  return channel.BuildAndQueue(display.ReportLength(), ReportKind::Feature, [&](uint8_t* report) {
    report[0] = display.reportId;
    std::memcpy(report + 1, segments, display.positions);
  });
}

int32_t QueueDisplayText(cHidChannel& channel, const SegmentDisplay& display, const char* text, bool lonePointLit) {
  if (text == nullptr) return PELM_ERR_PARAM;
  return channel.BuildAndQueue(display.ReportLength(), ReportKind::Feature, [&](uint8_t* report) {
    report[0] = display.reportId;
    TextToSegments(text, report + 1, display.positions, lonePointLit);
  });
}

}  // namespace pelm
