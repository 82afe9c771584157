#pragma once
// The engine-control module: a five-position rotary selector, two two-contact
// switches, a three-position switch and twelve further contacts, all in a
// three-byte report. It only reports; the library sends it nothing and it has
// no writer thread. The host hears of a report only when a selector contact is
// closed in it.

#include <atomic>
#include <cstddef>
#include <cstdint>

#include "channel/device_record.h"
#include "core/pelm_dev.h"

namespace pelm {

inline constexpr int kEngineCtlControlCount = 4;

// What the input callback receives (core/pelm_records.h).
using EngineCtlInputRecord = PelmEngineCtlInputRecord;
static_assert(sizeof(EngineCtlInputRecord) == 6);
static_assert(offsetof(EngineCtlInputRecord, controlVals) == 0 &&
              sizeof(EngineCtlInputRecord::controlVals) == kEngineCtlControlCount);
static_assert(offsetof(EngineCtlInputRecord, switchVals) == 4);

class cPelmEngineCtl final : public cPelmDeviceRecord {
 public:
  static constexpr int32_t kTypeCode = PELM_MODEL_ENGINECTL;
  static constexpr int kControlCount = kEngineCtlControlCount;

  // Input report, 4 bytes; feature report 2, read once at open, is the same.
  // Bytes 1 to 3 carry contacts, laid out in models/engine_ctl.cpp.
  static constexpr uint32_t kInputReportLength = 4;
  static constexpr uint8_t kControlStateReport = 2;
  static constexpr uint32_t kControlStateReportLength = 4;

  explicit cPelmEngineCtl(const char* path);

  // Writes the four control values and the switch bits, each only where its
  // pointer is writable. Nothing is reset.
  int32_t GetControlVals(uint8_t* selector, uint8_t* switch1, uint8_t* threePosition, uint8_t* switch2,
                         uint16_t* switches);

  // controlVals[0]  rotary selector, 1 to 5; 0 until a report closes a
  //                 selector contact, kept through reports that close none
  // controlVals[1]  first two-contact switch, 1 when either contact is closed
  // controlVals[2]  three-position switch: 2 up, 1 middle, 0 down
  // controlVals[3]  second two-contact switch, 0 or 1
  std::atomic<uint8_t> controlVals[kControlCount] = {0, 0, 0, 0};
  // Twelve contacts in bits 0-11.
  std::atomic<uint16_t> switchVals{0};

 private:
  void OnOpenTimeReport(const uint8_t* report) override;
  void OnInputReport(const uint8_t* report) override;
  // Decodes bytes 1 to 3 into the state and gives it as the callback's record;
  // true when a selector contact was closed.
  bool Decode(const uint8_t* report, EngineCtlInputRecord& state);
};

}  // namespace pelm
