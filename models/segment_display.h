#pragma once
// A seven-segment display driven by a feature report of its own: byte 0 is the
// report ID, then one segment byte per position, position 0 in byte 1. The
// radio, autopilot and transponder-code panels drive their displays this way.

#include <cstdint>

#include "channel/hid_channel.h"

namespace pelm {

struct SegmentDisplay {
  uint8_t reportId;
  uint16_t positions;

  constexpr uint32_t ReportLength() const { return positions + 1u; }
};

// Queues the display's report with the caller's segment bytes, one per
// position: PELM_SUCCESS, PELM_ERR_PARAM for a null pointer, PELM_ERR_NOMEM or
// PELM_ERR_QUEUE. The caller has made the model's connection test.
int32_t QueueDisplaySegments(cHidChannel& channel, const SegmentDisplay& display, const uint8_t* segments);

// As QueueDisplaySegments, with the text drawn left to right (TextToSegments).
int32_t QueueDisplayText(cHidChannel& channel, const SegmentDisplay& display, const char* text, bool lonePointLit);

}  // namespace pelm
