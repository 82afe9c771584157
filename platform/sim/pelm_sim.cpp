// The C face of the simulated cockpit in libpelmdev-sim.so. It sits on top of
// the whole library, as the exports do, and guards its calls as they do.

#include "platform/sim/pelm_sim.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "core/model_table.h"
#include "exports/export_guard.h"
#include "models/segment_reading.h"
#include "platform/sim/panels/alpha_panels.h"
#include "platform/sim/panels/autopilot_panels.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/panels/squawk_panel.h"
#include "platform/sim/sim_bus.h"
#ifdef PELM_WEB_VIEW
#include "platform/sim/web/web_server.h"
#endif

namespace {

using pelm::sim::Bus;
using pelm::sim::SimDevice;

// The panels' report lengths on the simulated bus: enough for every model.
constexpr pelm::platform::HidCaps kPanelCaps{8, 8, 8};
// Instance numbers fill four decimal digits of the device path.
constexpr int32_t kHighestInstance = 9999;

std::optional<std::string> PathOf(int32_t modelType, int32_t instance) {
  const pelm::ModelDescriptor* model = pelm::ModelByTypeCode(modelType);
  if (model == nullptr || instance < 0 || instance > kHighestInstance) return std::nullopt;
  return pelm::sim::PanelPath(model->productId, instance);
}

std::shared_ptr<SimDevice> FindPanel(int32_t modelType, int32_t instance) {
  const std::optional<std::string> path = PathOf(modelType, instance);
  return path ? Bus::Instance().Find(*path) : nullptr;
}

// The text display `display` of the panel shows, or nothing for a model
// without that display.
std::optional<std::string> ReadDisplay(int32_t modelType, SimDevice& device, int32_t display) {
  using namespace pelm::sim;
  const auto pick = [&](const auto& displays) -> std::optional<char> {
    if (display < 0 || static_cast<std::size_t>(display) >= displays.size()) return std::nullopt;
    return displays[static_cast<std::size_t>(display)].name;
  };
  switch (modelType) {
    case PELM_MODEL_RADIO: {
      const auto& radio = device.PanelAs<RadioPanelSim>();
      if (display == PELMSIM_RADIO_LEFT) return pelm::ReadSevenSegments(radio.LeftDisplay());
      if (display == PELMSIM_RADIO_RIGHT) return pelm::ReadSevenSegments(radio.RightDisplay());
      return std::nullopt;
    }
    case PELM_MODEL_ALPHA:
    case PELM_MODEL_ALPHA2: {
      const auto& alpha = device.PanelAs<AlphaPanelSim>();
      if (display == PELMSIM_ALPHA_TEXT) return pelm::ReadSixteenSegments(alpha.AlphaDisplay());
      if (display == PELMSIM_ALPHA_NUMERIC) return pelm::ReadSevenSegments(alpha.NumericDisplay());
      return std::nullopt;
    }
    case PELM_MODEL_SQUAWK: {
      if (display != PELMSIM_SQUAWK_DIGIT) return std::nullopt;
      const uint8_t digit = device.PanelAs<SquawkPanelSim>().Digit();
      return pelm::ReadSevenSegments({&digit, 1});
    }
    case PELM_MODEL_AUTOPILOT: {
      const std::optional<char> name = pick(AutopilotPanelSim::kDisplays);
      if (!name) return std::nullopt;
      return pelm::ReadSevenSegments(device.PanelAs<AutopilotPanelSim>().Display(*name));
    }
    case PELM_MODEL_AUTOPILOT2: {
      const std::optional<char> name = pick(Autopilot2PanelSim::kDisplays);
      if (!name) return std::nullopt;
      return pelm::ReadSevenSegments(device.PanelAs<Autopilot2PanelSim>().Display(*name));
    }
    default:
      return std::nullopt;
  }
}

constexpr int32_t kHighestPort = 65535;

#ifdef PELM_WEB_VIEW
// The process's one web view. It is made after the bus, so that it stops, and
// its threads end, before the bus goes when the library unloads.
class WebView {
 public:
  static WebView& Instance() {
    Bus::Instance();
    static WebView view;
    return view;
  }

  int32_t Serve(int32_t port) {
    std::lock_guard hold(mutex_);
    if (server_) return server_->Port();
    auto server = std::make_unique<pelm::sim::web::WebServer>(Bus::Instance());
    const int bound = server->Start(pelm::sim::web::kLoopbackAddress, port);
    if (bound < 0) return -PELM_ERR_IO;
    std::fprintf(stderr, "PELMDEV web view of the simulated cockpit: http://%s:%d/\n",
                 pelm::sim::web::kLoopbackAddress, bound);
    server_ = std::move(server);
    return bound;
  }

  void Stop() {
    std::unique_ptr<pelm::sim::web::WebServer> server;
    {
      std::lock_guard hold(mutex_);
      server.swap(server_);
    }
  }

 private:
  std::mutex mutex_;
  std::unique_ptr<pelm::sim::web::WebServer> server_;
};
#endif

}  // namespace

extern "C" PELM_API int32_t PELM_CDECL PelmSim_Serve(int32_t port) {
  if (port < 0 || port > kHighestPort) return -PELM_ERR_PARAM;
#ifdef PELM_WEB_VIEW
  return pelm::Guarded(-PELM_ERR_NOMEM, [&] { return WebView::Instance().Serve(port); });
#else
  return -PELM_ERR_UNSUPPORTED;
#endif
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_Plug(int32_t modelType, int32_t instance) {
  return pelm::Guarded(0, [&] {
    const std::optional<std::string> path = PathOf(modelType, instance);
    if (!path) return 0;
    pelm::sim::DeviceDescription description;
    description.path = *path;
    description.vendorId = PELM_VENDOR_ID;
    description.productId = pelm::ModelByTypeCode(modelType)->productId;
    description.caps = kPanelCaps;
    Bus::Instance().Plug(description);
    return 1;
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_Unplug(int32_t modelType, int32_t instance) {
  return pelm::Guarded(0, [&] {
    const std::shared_ptr<SimDevice> device = FindPanel(modelType, instance);
    if (!device || !device->Present()) return 0;
    Bus::Instance().Unplug(device->Description().path);
    return 1;
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_InjectInput(int32_t modelType, int32_t instance,
                                                            const uint8_t* report, uint32_t length) {
  return pelm::Guarded(0, [&] {
    const std::shared_ptr<SimDevice> device = FindPanel(modelType, instance);
    if (!device || report == nullptr || length == 0) return 0;
    device->InjectInput(pelm::sim::Report(report, report + length));
    return 1;
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_LastReport(int32_t modelType, int32_t instance, int32_t kind,
                                                           uint8_t reportId, uint8_t* bytes, uint32_t capacity) {
  constexpr int32_t kRefused = -1;
  return pelm::Guarded(kRefused, [&] {
    const std::shared_ptr<SimDevice> device = FindPanel(modelType, instance);
    if (!device || (bytes == nullptr && capacity != 0)) return kRefused;
    pelm::sim::LogOp op;
    if (kind == PELMSIM_FEATURE_REPORT) {
      op = pelm::sim::LogOp::SetFeature;
    } else if (kind == PELMSIM_OUTPUT_REPORT) {
      op = pelm::sim::LogOp::WriteOutput;
    } else {
      return kRefused;
    }
    const std::vector<pelm::sim::LogEntry> sent = device->LogOf(op);
    const auto last = std::find_if(sent.rbegin(), sent.rend(), [&](const pelm::sim::LogEntry& entry) {
      return entry.succeeded && !entry.bytes.empty() && entry.bytes[0] == reportId;
    });
    if (last == sent.rend()) return 0;
    std::copy_n(last->bytes.begin(), std::min<std::size_t>(capacity, last->bytes.size()), bytes);
    return static_cast<int32_t>(last->bytes.size());
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_DisplayText(int32_t modelType, int32_t instance, int32_t display,
                                                            char* text, uint32_t capacity) {
  constexpr int32_t kRefused = -1;
  return pelm::Guarded(kRefused, [&] {
    const std::shared_ptr<SimDevice> device = FindPanel(modelType, instance);
    if (!device || text == nullptr) return kRefused;
    const std::optional<std::string> shown = ReadDisplay(modelType, *device, display);
    if (!shown || shown->size() >= capacity) return kRefused;
    std::memcpy(text, shown->c_str(), shown->size() + 1);
    return static_cast<int32_t>(shown->size());
  });
}

extern "C" PELM_API int32_t PELM_CDECL PelmSim_SetFault(int32_t modelType, int32_t instance, int32_t fault,
                                                         int32_t value) {
  return pelm::Guarded(0, [&] {
    const std::shared_ptr<SimDevice> device = FindPanel(modelType, instance);
    if (!device || value < 0) return 0;
    switch (fault) {
      case PELMSIM_FAULT_FAIL_OPENS:
        device->FailOpens(value != 0);
        return 1;
      case PELMSIM_FAULT_DENY_ACCESS:
        device->DenyAccess(value != 0);
        return 1;
      case PELMSIM_FAULT_FAIL_SENDS:
        device->FailNextSends(value);
        return 1;
      case PELMSIM_FAULT_FAIL_READS:
        device->FailFeatureReads(value != 0);
        return 1;
      default:
        return 0;
    }
  });
}

extern "C" PELM_API void PELM_CDECL PelmSim_Reset() {
  pelm::Guarded(0, [] {
#ifdef PELM_WEB_VIEW
    WebView::Instance().Stop();
#endif
    Bus::Instance().Reset();
    return 1;
  });
}
