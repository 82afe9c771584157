#pragma once
// A panel that only reports its controls. It keeps the bytes of the input
// report that its current control state gives, answers the feature report that
// mirrors them (for panels that have one) and takes no reports.

#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>

#include "platform/sim/panel.h"

namespace pelm::sim {

class ControlStatePanel : public Panel {
 public:
  bool AnswerFeature(uint8_t* report, uint32_t length) override;
  // The bus logs what arrives; the panel itself ignores it.
  void ReceiveFeature(const uint8_t*, uint32_t) override {}
  void ReceiveOutput(const uint8_t*, uint32_t) override {}

  // The input report of the current control state; byte 0, the report ID, is 0.
  Report InputReport() const;
  // Sets the report bytes after the ID as they are, for states no setter of the
  // panel describes.
  void SetReportBytes(const Report& bytesAfterId);

 protected:
  // `stateReportId`: the feature report that reads the control state, if any.
  ControlStatePanel(std::optional<uint8_t> stateReportId, uint32_t reportLength);
  // Changes the report bytes under the panel's lock.
  void Update(const std::function<void(Report&)>& change);

 private:
  const std::optional<uint8_t> stateReportId_;
  mutable std::mutex mutex_;
  Report state_;
};

}  // namespace pelm::sim
