#pragma once
// The behaviour that the knob panel, both gear panels and the keyboard unit
// share: an indicator byte and a backlight level, set by report 2 and report 3
// and read back by feature reads of the same IDs, and a control state that the
// device gives in feature report 4. Reads of any other report are refused.

#include <cstdint>
#include <mutex>

#include "platform/sim/panel.h"

namespace pelm::sim {

class LampPanel : public Panel {
 public:
  static constexpr uint8_t kIndicatorReport = 2;
  static constexpr uint8_t kBrightnessReport = 3;
  static constexpr uint8_t kControlStateReport = 4;

  bool AnswerFeature(uint8_t* report, uint32_t length) override;
  void ReceiveFeature(const uint8_t* report, uint32_t length) override;
  void ReceiveOutput(const uint8_t* report, uint32_t length) override;

  uint8_t Indicators() const;
  uint8_t Brightness() const;

 protected:
  // How the library sets the lamps of this model.
  enum class LampReports { Feature, Output };
  explicit LampPanel(LampReports lampReports) : lampReports_(lampReports) {}

  // Bytes 1 on of the control state report.
  void SetControlState(const Report& bytesAfterId);

 private:
  void ReceiveLamps(const uint8_t* report, uint32_t length);

  const LampReports lampReports_;
  mutable std::mutex mutex_;
  uint8_t indicators_ = 0;
  uint8_t brightness_ = 0;
  Report controlState_;
};

}  // namespace pelm::sim
