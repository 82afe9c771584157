#pragma once
// The simulated keyboard unit. Its lamps arrive as output reports and are read
// back as feature reports; feature report 4 gives the three key codes that the
// unit reports when it is opened.

#include <cstdint>

#include "platform/sim/panels/lamp_panel.h"

namespace pelm::sim {

class KeypadPanel : public LampPanel {
 public:
  static constexpr uint16_t kProductId = 0x0074;

  KeypadPanel() : LampPanel(LampReports::Output) {}
  void SetKeyCodes(uint8_t key1, uint8_t key2, uint8_t key3) { SetControlState({key1, key2, key3}); }
};

}  // namespace pelm::sim
