// Web view latency: from a host's setter to the web view's event about it
// arriving at a client of the event stream. Timed from the call, not its
// return: the writer may send the report before the setter has returned. The setter's report goes
// through the library's writer to the simulated radio panel, which tells the
// server; the server reads the whole cockpit again and sends it. The client
// is an HTTP client in this process, reading the stream as a browser would.

#include <httplib.h>

#include <cstdio>
#include <optional>
#include <string>
#include <thread>

#include "bench/arrivals.h"
#include "bench/benchmarks.h"
#include "core/pelm_dev.h"
#include "platform/sim/panels/radio_panel.h"
#include "platform/sim/web/web_server.h"

namespace pelm::bench {
namespace {

constexpr std::size_t kSamples = 300;
constexpr std::size_t kWarmUpSamples = 10;
constexpr double kMedianLimitMs = 50;
constexpr const char* kEventEnd = "\n\n";
// Frequencies shown one after another, so every setter changes the display.
constexpr int kFirstFrequency = 100000;

// Counts the stream's events ("data: ...\n\n") however the chunks cut them.
class EventCounter {
 public:
  explicit EventCounter(Arrivals& arrivals) : arrivals_(arrivals) {}
  void Receive(const char* data, std::size_t length) {
    pending_.append(data, length);
    for (std::size_t end; (end = pending_.find(kEventEnd)) != std::string::npos;) {
      if (pending_.starts_with("data: ")) arrivals_.Note();
      pending_.erase(0, end + std::char_traits<char>::length(kEventEnd));
    }
  }

 private:
  Arrivals& arrivals_;
  std::string pending_;
};

}  // namespace

std::vector<Figure> MeasureWebViewLatency(const RunLength& length) {
  sim::Bus::Instance().Reset();
  PlugQuietly(PanelDescription(sim::RadioPanelSim::kProductId, 1));
  PelmDev_Init(nullptr);
  sim::web::WebServer server(sim::Bus::Instance());
  const int port = server.Start(sim::web::kLoopbackAddress, 0);

  Arrivals events;
  std::thread client([&] {
    httplib::Client http(sim::web::kLoopbackAddress, port);
    EventCounter counter(events);
    http.Get("/events", [&](const char* data, std::size_t size) {
      counter.Receive(data, size);
      return true;
    });
  });

  const std::size_t samples = length.Scaled(kSamples);
  Progress("web view latency: " + std::to_string(samples) + " radio displays to a client of the event stream");
  std::vector<double> latencyMs;
  std::size_t lost = 0;
  // The stream's first event is the cockpit as it is.
  const bool connected = port > 0 && events.WaitBeyond(0);
  for (std::size_t i = 0; connected && i < kWarmUpSamples + samples; ++i) {
    char text[16];
    std::snprintf(text, sizeof text, "%d", kFirstFrequency + static_cast<int>(i));
    const uint64_t before = events.Count();
    const int64_t calledNs = NowNs();
    PelmRadio_SetLDisplayText(0, text);
    if (!events.WaitBeyond(before)) {
      ++lost;
      continue;
    }
    if (i >= kWarmUpSamples) {
      latencyMs.push_back(static_cast<double>(events.lastNs.load(std::memory_order_relaxed) - calledNs) / 1e6);
    }
  }
  server.Stop();  // ends the stream, and with it the client's request
  client.join();
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();

  std::string note = std::to_string(latencyMs.size()) + " displays";
  if (!connected) note += "; the client never connected";
  if (lost > 0) note += "; " + std::to_string(lost) + " events never arrived";
  return {
      {"web view: setter to page event p50", Median(latencyMs), "ms", kMedianLimitMs, false, note},
      {"web view: setter to page event p99", Percentile(latencyMs, 0.99), "ms", {}, false, ""},
  };
}

}  // namespace pelm::bench
