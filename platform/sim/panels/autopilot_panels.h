#pragma once
// The simulated autopilot panels: displays, lamps and a backlight set by
// feature reports (the second model's newer versions take every report as an
// 8-byte output report padded with 0xDD instead), and the control state they
// report at open.

#include <array>
#include <cstdint>
#include <vector>

#include "platform/sim/panels/display_panel.h"

namespace pelm::sim {

class AutopilotPanelSim : public DisplayPanelSim {
 public:
  static constexpr uint16_t kProductId = 0x0060;
  static constexpr std::array<DisplayReport, 5> kDisplays = {{
      {'A', 3, 3}, {'B', 5, 3}, {'C', 7, 3}, {'D', 9, 6}, {'E', 11, 6}}};
  static constexpr uint8_t kBrightnessReport = 12;
  static constexpr uint8_t kIndicatorReport = 13;
  static constexpr uint8_t kControlStateReport = 14;
  static constexpr std::size_t kDialCount = 5;

  // Segment bytes shown on display 'A' to 'E', position 0 first.
  std::vector<uint8_t> Display(char name) const;
  uint8_t Brightness() const { return PayloadByte(kBrightnessReport); }
  uint8_t Indicators() const { return PayloadByte(kIndicatorReport); }

  // What the panel answers when asked for its control state: one byte per dial
  // and two switch bytes.
  void SetControlState(const std::array<uint8_t, kDialCount>& dials, uint8_t switches1, uint8_t switches2);
};

class Autopilot2PanelSim : public DisplayPanelSim {
 public:
  static constexpr uint16_t kProductId = 0x0064;
  static constexpr std::array<DisplayReport, 6> kDisplays = {{
      {'A', 3, 3}, {'B', 5, 5}, {'C', 7, 5}, {'D', 9, 5}, {'E', 11, 5}, {'F', 13, 3}}};
  static constexpr uint8_t kBrightnessReport = 14;
  static constexpr uint8_t kIndicatorReport = 15;
  static constexpr uint8_t kControlStateReport = 16;
  static constexpr std::size_t kDialBytes = 3;

  // Segment bytes shown on display 'A' to 'F', position 0 first.
  std::vector<uint8_t> Display(char name) const;
  uint8_t Brightness() const { return PayloadByte(kBrightnessReport); }
  uint32_t Indicators() const;

  // What the panel answers when asked for its control state: the three bytes
  // that pack its six half-byte dials, and the switch word.
  void SetControlState(const std::array<uint8_t, kDialBytes>& dialBytes, uint32_t switches);

  // An output report is a feature report padded to 8 bytes: the panel takes it
  // as that feature report.
  void ReceiveOutput(const uint8_t* report, uint32_t length) override;
};

}  // namespace pelm::sim
