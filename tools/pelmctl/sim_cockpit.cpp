#include "tools/pelmctl/sim_cockpit.h"

#include <cstdio>
#include <stdexcept>

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

namespace pelmctl {
namespace {

using pelm::sim::Bus;
using pelm::sim::DeviceDescription;
using pelm::sim::LogOp;

// Every model's reports fit in eight bytes, the report ID included.
constexpr pelm::platform::HidCaps kPanelCaps = {8, 8, 8};
constexpr uint16_t kPanelVersion = 0x0110;

struct Placement {
  const char* family;
  uint16_t productId;
  int instances;
};

// Two radios (COM and NAV) and two button panels; one of everything else.
constexpr Placement kPlacements[] = {
    {"alpha", pelm::sim::AlphaPanelSim::kAlphaProductId, 1},
    {"alpha2", pelm::sim::AlphaPanelSim::kAlpha2ProductId, 1},
    {"buttons", kButtonPanelId, 2},
    {"knobs", pelm::sim::KnobPanel::kProductId, 1},
    {"warning", pelm::sim::WarningPanel::kProductId, 1},
    {"toggles", kTogglePanelId, 1},
    {"gear", pelm::sim::GearPanel::kProductId, 1},
    {"gear2", pelm::sim::Gear2Panel::kProductId, 1},
    {"radio", pelm::sim::RadioPanelSim::kProductId, 2},
    {"autopilot", pelm::sim::AutopilotPanelSim::kProductId, 1},
    {"autopilot2", pelm::sim::Autopilot2PanelSim::kProductId, 1},
    {"mapctl", pelm::sim::MapCtlPanel::kProductId, 1},
    {"squawk", pelm::sim::SquawkPanelSim::kProductId, 1},
    {"enginectl", pelm::sim::EngineCtlPanel::kProductId, 1},
    {"enginestart", kEngineStartId, 1},
    {"keypad", pelm::sim::KeypadPanel::kProductId, 1},
    {"throttle", pelm::sim::ThrottlePanel::kProductId, 1},
    {"ioboard", pelm::sim::IoBoardPanel::kProductId, 1},
};

DeviceDescription Describe(uint16_t productId, int instance) {
  char path[128];
  std::snprintf(path, sizeof path, "\\\\?\\hid#vid_%04x&pid_%04x#cockpit&%d", PELM_VENDOR_ID, productId, instance);
  char serial[32];
  std::snprintf(serial, sizeof serial, "SIM%04X-%d", productId, instance);
  DeviceDescription description;
  description.path = path;
  description.vendorId = PELM_VENDOR_ID;
  description.productId = productId;
  description.versionNumber = kPanelVersion;
  for (const char* c = serial; *c; ++c) description.serialNumber += static_cast<char16_t>(*c);
  description.caps = kPanelCaps;
  return description;
}

}  // namespace

void SimCockpit::Plug() {
  Bus& bus = Bus::Instance();
  bus.Reset();
  panels_.clear();
  for (const Placement& placement : kPlacements) {
    for (int instance = 1; instance <= placement.instances; ++instance) {
      panels_.push_back({placement.family, placement.productId, instance, bus.Plug(Describe(placement.productId, instance))});
    }
  }
}

pelm::sim::SimDevice& SimCockpit::Device(uint16_t productId, int instance) const {
  for (const CockpitPanel& panel : panels_) {
    if (panel.productId == productId && panel.instance == instance) return *panel.device;
  }
  throw std::logic_error("the simulated cockpit has no such panel");
}

void SimCockpit::Inject(uint16_t productId, int instance, const pelm::sim::Report& bytes) const {
  pelm::sim::Report report(kPanelCaps.inputReportByteLength, 0);
  for (std::size_t i = 0; i < bytes.size() && i + 1 < report.size(); ++i) report[i + 1] = bytes[i];
  Device(productId, instance).InjectInput(report);
}

void SimCockpit::Unplug(uint16_t productId, int instance) const {
  Bus::Instance().Unplug(Device(productId, instance).Description().path);
}

void SimCockpit::Replug(uint16_t productId, int instance) const {
  Bus::Instance().Plug(Device(productId, instance).Description());
}

std::size_t SimCockpit::ReportsReceived() const {
  std::size_t count = 0;
  for (const CockpitPanel& panel : panels_) {
    count += panel.device->CountOf(LogOp::SetFeature) + panel.device->CountOf(LogOp::WriteOutput);
  }
  return count;
}

}  // namespace pelmctl
