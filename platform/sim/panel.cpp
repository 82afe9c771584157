#include "platform/sim/panel.h"

#include <algorithm>
#include <cstring>

#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/engine_ctl_panel.h"
#include "platform/sim/panels/gear2_panel.h"
#include "platform/sim/panels/gear_panel.h"
#include "platform/sim/panels/io_board_panel.h"
#include "platform/sim/panels/keypad_panel.h"
#include "platform/sim/panels/knob_panel.h"
#include "platform/sim/panels/map_ctl_panel.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/panels/throttle_panel.h"
#include "platform/sim/panels/warning_panel.h"

namespace pelm::sim {

bool GenericPanel::AnswerFeature(uint8_t* report, uint32_t length) {
  std::lock_guard hold(mutex_);
  const std::optional<Report>& stored = features_[report[0]];
  std::fill(report + 1, report + length, uint8_t{0});
  const std::size_t answered = stored ? std::min<std::size_t>(length, stored->size()) : 0;
  if (answered > 1) std::memcpy(report + 1, stored->data() + 1, answered - 1);
  return true;
}

void GenericPanel::ReceiveFeature(const uint8_t* report, uint32_t length) {
  std::lock_guard hold(mutex_);
  features_[report[0]] = Report(report, report + length);
}

void GenericPanel::ReceiveOutput(const uint8_t* report, uint32_t length) {
  std::lock_guard hold(mutex_);
  lastOutput_ = Report(report, report + length);
}

void GenericPanel::SetFeatureAnswer(const Report& report) {
  std::lock_guard hold(mutex_);
  if (!report.empty()) features_[report[0]] = report;
}

std::optional<Report> GenericPanel::LastFeature(uint8_t reportId) const {
  std::lock_guard hold(mutex_);
  return features_[reportId];
}

std::optional<Report> GenericPanel::LastOutput() const {
  std::lock_guard hold(mutex_);
  return lastOutput_;
}

std::unique_ptr<Panel> MakePanel(uint16_t productId) {
  switch (productId) {
    case RadioPanelSim::kProductId:
      return std::make_unique<RadioPanelSim>();
    case AlphaPanelSim::kAlphaProductId:
    case AlphaPanelSim::kAlpha2ProductId:
      return AlphaPanelSim::ForProduct(productId);
    case SquawkPanelSim::kProductId:
      return std::make_unique<SquawkPanelSim>();
    case AutopilotPanelSim::kProductId:
      return std::make_unique<AutopilotPanelSim>();
    case Autopilot2PanelSim::kProductId:
      return std::make_unique<Autopilot2PanelSim>();
    case MapCtlPanel::kProductId:
      return std::make_unique<MapCtlPanel>();
    case ThrottlePanel::kProductId:
      return std::make_unique<ThrottlePanel>();
    case EngineCtlPanel::kProductId:
      return std::make_unique<EngineCtlPanel>();
    case KnobPanel::kProductId:
      return std::make_unique<KnobPanel>();
    case GearPanel::kProductId:
      return std::make_unique<GearPanel>();
    case KeypadPanel::kProductId:
      return std::make_unique<KeypadPanel>();
    case IoBoardPanel::kProductId:
      return std::make_unique<IoBoardPanel>();
    case Gear2Panel::kProductId:
      return std::make_unique<Gear2Panel>();
    case WarningPanel::kProductId:
      return std::make_unique<WarningPanel>();
    default:
      return std::make_unique<GenericPanel>();
  }
}

}  // namespace pelm::sim
