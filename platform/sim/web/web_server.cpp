#include "platform/sim/web/web_server.h"

#include <httplib.h>

#include <charconv>
#include <optional>

#include "platform/sim/web/cockpit_page.h"
#include "platform/sim/web/cockpit_snapshot.h"

namespace pelm::sim::web {
namespace {

constexpr int kBadRequest = 400;
constexpr int kNotFound = 404;
constexpr int kConflict = 409;
// How long an idle event stream waits before it sends a comment, so that a
// client that went away is noticed.
constexpr auto kKeepAliveInterval = std::chrono::seconds(1);
// Idle keep-alive connections hold a server thread; this bounds how long.
constexpr time_t kKeepAliveSeconds = 1;
constexpr int kHexBase = 16;

void Refuse(httplib::Response& response, int status, const std::string& why) {
  response.status = status;
  response.set_content(why + "\n", "text/plain");
}

std::optional<std::vector<uint8_t>> ParseHex(const std::string& text) {
  if (text.empty() || text.size() % 2 != 0) return std::nullopt;
  std::vector<uint8_t> bytes(text.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* begin = text.data() + 2 * i;
    const auto [end, error] = std::from_chars(begin, begin + 2, bytes[i], kHexBase);
    if (error != std::errc() || end != begin + 2) return std::nullopt;
  }
  return bytes;
}

// The device a request's path names, or a refusal in `response`.
std::shared_ptr<SimDevice> RequestedPanel(const Bus& bus, const httplib::Request& request,
                                          httplib::Response& response) {
  const std::string& text = request.matches[1];
  std::size_t id = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), id);
  const std::vector<std::shared_ptr<SimDevice>> devices = bus.Devices();
  if (error != std::errc() || end != text.data() + text.size() || id >= devices.size() ||
      InputReportLength(devices[id]->Description().productId) == 0) {
    Refuse(response, kNotFound, "no panel " + text + " (GET /state lists them)");
    return nullptr;
  }
  return devices[id];
}

// The state of one event stream: what it sent last.
struct EventStream {
  uint64_t seenChanges = 0;
  std::string lastSent;
  bool started = false;
};

}  // namespace

WebServer::WebServer(Bus& bus) : bus_(bus), server_(std::make_unique<httplib::Server>()) {
  server_->set_keep_alive_timeout(kKeepAliveSeconds);
  AddRoutes();
}

WebServer::~WebServer() { Stop(); }

int WebServer::Start(const std::string& address, int port) {
  const int bound = port == 0 ? server_->bind_to_any_port(address) : (server_->bind_to_port(address, port) ? port : -1);
  if (bound < 0) return -1;
  port_ = bound;
  listener_ = std::thread([this] {
    server_->listen_after_bind();
    listenerEnded_ = true;
  });
  // A stop before the server runs would go unheard, so Start returns once it
  // runs (or could not).
  while (!server_->is_running() && !listenerEnded_) std::this_thread::yield();
  return bound;
}

void WebServer::Stop() {
  if (!listener_.joinable()) return;
  stopping_ = true;
  bus_.Changes().WakeWaiters();
  server_->stop();
  listener_.join();
}

void WebServer::AddRoutes() {
  server_->Get("/", [](const httplib::Request&, httplib::Response& response) {
    response.set_content(reinterpret_cast<const char*>(kCockpitPage), sizeof kCockpitPage, "text/html; charset=utf-8");
  });

  server_->Get("/state", [this](const httplib::Request&, httplib::Response& response) {
    response.set_header("Cache-Control", "no-store");
    response.set_content(CockpitSnapshot(bus_), "application/json");
  });

  server_->Get("/events", [this](const httplib::Request&, httplib::Response& response) {
    response.set_header("Cache-Control", "no-store");
    auto stream = std::make_shared<EventStream>();
    response.set_chunked_content_provider("text/event-stream", [this, stream](std::size_t, httplib::DataSink& sink) {
      while (!stopping_) {
        const uint64_t changes = stream->started
                                     ? bus_.Changes().WaitPast(stream->seenChanges, kKeepAliveInterval)
                                     : bus_.Changes().Count();
        if (stopping_) break;
        if (stream->started && changes == stream->seenChanges) {
          const std::string keepAlive = ":\n\n";
          return sink.write(keepAlive.data(), keepAlive.size());
        }
        stream->started = true;
        stream->seenChanges = changes;
        std::string snapshot = CockpitSnapshot(bus_);
        if (snapshot == stream->lastSent) continue;
        const std::string event = "data: " + snapshot + "\n\n";
        stream->lastSent = std::move(snapshot);
        return sink.write(event.data(), event.size());
      }
      sink.done();
      return false;
    });
  });

  server_->Post(R"(/panels/(\d+)/(plug|unplug))", [this](const httplib::Request& request, httplib::Response& response) {
    const std::shared_ptr<SimDevice> device = RequestedPanel(bus_, request, response);
    if (!device) return;
    const bool plug = request.matches[2] == "plug";
    if (device->Present() == plug) {
      Refuse(response, kConflict, plug ? "the panel is plugged in already" : "the panel is unplugged already");
      return;
    }
    if (plug) {
      bus_.Plug(device->Description());
    } else {
      bus_.Unplug(device->Description().path);
    }
    response.set_content("ok\n", "text/plain");
  });

  server_->Post(R"(/panels/(\d+)/input)", [this](const httplib::Request& request, httplib::Response& response) {
    const std::shared_ptr<SimDevice> device = RequestedPanel(bus_, request, response);
    if (!device) return;
    const std::size_t length = InputReportLength(device->Description().productId);
    const std::optional<std::vector<uint8_t>> report = ParseHex(request.get_param_value("report"));
    if (!report || report->size() != length) {
      Refuse(response, kBadRequest,
             "report= must be the model's input report of " + std::to_string(length) +
                 " bytes as hexadecimal digits, report ID first");
      return;
    }
    if (!device->Present()) {
      Refuse(response, kConflict, "the panel is unplugged: plug it in first");
      return;
    }
    device->InjectInput(*report);
    response.set_content("ok\n", "text/plain");
  });
}

}  // namespace pelm::sim::web
