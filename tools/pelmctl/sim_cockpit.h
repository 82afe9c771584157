#pragma once
// A cockpit of simulated panels on the simulated bus: one of each of the
// eighteen models, and a second radio and button panel, as a cockpit builder
// would wire them.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/sim/sim_bus.h"

namespace pelmctl {

// Models whose simulated panels have no class of their own.
inline constexpr uint16_t kButtonPanelId = 0x0020;
inline constexpr uint16_t kTogglePanelId = 0x0030;
inline constexpr uint16_t kEngineStartId = 0x003C;

struct CockpitPanel {
  std::string family;   // as the command line names it
  uint16_t productId;
  int instance;         // 1 for the first panel of a model, 2 for the second
  std::shared_ptr<pelm::sim::SimDevice> device;
};

class SimCockpit {
 public:
  // Plugs every panel (the bus forgets what it had before).
  void Plug();
  const std::vector<CockpitPanel>& Panels() const { return panels_; }
  pelm::sim::SimDevice& Device(uint16_t productId, int instance = 1) const;

  // Sends an input report: `bytes` follow the report ID, padded to the
  // device's input report length.
  void Inject(uint16_t productId, int instance, const pelm::sim::Report& bytes) const;
  void Unplug(uint16_t productId, int instance) const;
  void Replug(uint16_t productId, int instance) const;

  // Feature sets and output writes every panel has received.
  std::size_t ReportsReceived() const;

 private:
  std::vector<CockpitPanel> panels_;
};

}  // namespace pelmctl
