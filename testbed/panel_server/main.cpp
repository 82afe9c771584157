// pelm-panel-server PORT: makes panels on uhid for test programs that may not
// (an ordinary user, a Windows program under Wine) and serves the line
// protocol of PROTOCOL.md on 127.0.0.1:PORT. Runs as root inside a test VM.

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>
#include <thread>

#include "testbed/panel_server/panel_rack.h"

namespace {

constexpr std::size_t kLongestLine = 65536;
constexpr int kBacklog = 8;

bool SendLine(int connection, std::string line) {
  line.push_back('\n');
  for (std::size_t sent = 0; sent < line.size();) {
    const ssize_t written = send(connection, line.data() + sent, line.size() - sent, MSG_NOSIGNAL);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    sent += static_cast<std::size_t>(written);
  }
  return true;
}

void Serve(int connection, pelm::testbed::PanelRack& rack) {
  std::string pending;
  char buffer[4096];
  for (;;) {
    const std::size_t end = pending.find('\n');
    if (end == std::string::npos) {
      if (pending.size() > kLongestLine) {
        SendLine(connection, "error request longer than " + std::to_string(kLongestLine) + " bytes");
        break;
      }
      const ssize_t got = recv(connection, buffer, sizeof buffer, 0);
      if (got < 0 && errno == EINTR) continue;
      if (got <= 0) break;
      pending.append(buffer, static_cast<std::size_t>(got));
      continue;
    }
    std::string line = pending.substr(0, end);
    pending.erase(0, end + 1);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (!SendLine(connection, rack.Handle(line))) break;
    if (rack.QuitRequested()) {
      // Every panel is gone already; closing the descriptors ends the rest.
      std::fflush(stdout);
      _exit(0);
    }
  }
  close(connection);
}

}  // namespace

int main(int argc, char** argv) {
  int port = 0;
  const std::string_view argument = argc == 2 ? argv[1] : "";
  const auto [end, error] = std::from_chars(argument.data(), argument.data() + argument.size(), port);
  if (argc != 2 || error != std::errc() || end != argument.data() + argument.size() || port <= 0 || port > 65535) {
    std::fprintf(stderr, "usage: %s PORT (1..65535; it listens on 127.0.0.1:PORT)\n", argv[0]);
    return 2;
  }
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int yes = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (listener < 0 || bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, kBacklog) != 0) {
    std::fprintf(stderr, "cannot listen on 127.0.0.1:%d: %s\n", port, std::strerror(errno));
    return 1;
  }
  if (access("/dev/uhid", R_OK | W_OK) != 0) {
    std::fprintf(stderr, "cannot use /dev/uhid (%s): run as root with the uhid module loaded\n", std::strerror(errno));
    return 1;
  }
  pelm::testbed::PanelRack rack;
  std::printf("PELM-PANEL-SERVER READY %d\n", port);
  std::fflush(stdout);
  for (;;) {
    const int connection = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
    if (connection < 0) {
      if (errno == EINTR || errno == ECONNABORTED) continue;
      std::fprintf(stderr, "accept failed: %s\n", std::strerror(errno));
      return 1;
    }
    std::thread([connection, &rack] { Serve(connection, rack); }).detach();
  }
}
