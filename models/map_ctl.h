#pragma once
// The display-control panel: two rotary dials, fifteen push buttons and two
// selector switches. It only reports its controls; the library sends it
// nothing, so its writer thread never has a report to send.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

// What the input callback receives (core/pelm_records.h).
using MapCtlInputRecord = PelmMapCtlInputRecord;
static_assert(sizeof(MapCtlInputRecord) == 7);
static_assert(offsetof(MapCtlInputRecord, dialVals) == 0);
static_assert(offsetof(MapCtlInputRecord, switchVals) == 4);
static_assert(offsetof(MapCtlInputRecord, selectorVals) == 6);

class cPelmMapCtl final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_MAPCTL;
  static constexpr int kDialCount = 2;

  // Input report, 8 bytes; feature report 2, read once at open, has the same
  // layout. Bytes 1 and 2 are not used.
  //   byte 3, 4  first and second dial: detents moved, signed (the feature
  //              report gives them unsigned)
  //   byte 5     buttons 0-6 in bits 0-6
  //   byte 6     first selector (0-3) in bits 0-1, button 15 in bit 3,
  //              button 14 in bit 4, second selector (0-7) in bits 5-7
  //   byte 7     buttons 8-13 in bits 0-5
  static constexpr uint32_t kInputReportLength = 8;
  static constexpr uint8_t kControlStateReport = 2;
  static constexpr uint32_t kControlStateReportLength = 8;
  static constexpr std::size_t kFirstDialByte = 3;
  static constexpr std::size_t kLowButtonsByte = 5;
  static constexpr std::size_t kSelectorByte = 6;
  static constexpr std::size_t kHighButtonsByte = 7;

  explicit cPelmMapCtl(const char* path);

  // Hands out the dial counts, setting each to 0 as it is written; buttons and
  // selectors are not reset. Each value only where its pointer is writable.
  int32_t GetControlVals(int16_t* dial1, int16_t* dial2, uint16_t* switches, uint8_t* selectors);

  // Dial counts of the latest report (not added up), pending until handed out.
  std::atomic<int16_t> dialVals[kDialCount] = {0, 0};
  // Buttons 0-6 and 8-15; bit 7 is always 0.
  std::atomic<uint16_t> switchVals{0};
  // First selector in bits 0-1, second selector in bits 4-6.
  std::atomic<uint8_t> selectorVals{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void OnInputReport(const uint8_t* report) override;
  void Store(const MapCtlInputRecord& values);
};

}  // namespace pelm
