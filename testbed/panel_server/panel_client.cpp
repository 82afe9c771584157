#include "testbed/panel_server/panel_client.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <cstdlib>
#include <sstream>
#include <stdexcept>

#include "testbed/panel_server/hex_text.h"

namespace pelm::testbed {
namespace {

#ifdef _WIN32
using Socket = SOCKET;
const Socket kNoSocket = INVALID_SOCKET;
void CloseSocket(Socket socket) { closesocket(socket); }
#else
using Socket = int;
constexpr Socket kNoSocket = -1;
void CloseSocket(Socket socket) { close(socket); }
#endif

Socket AsSocket(std::uintptr_t value) { return static_cast<Socket>(value); }

std::vector<std::string> Words(const std::string& text) {
  std::vector<std::string> words;
  std::istringstream stream(text);
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

}  // namespace

std::string PanelServerClient::AddressFromEnvironment() {
  const char* address = std::getenv(kAddressVariable);
  return address != nullptr ? address : "";
}

PanelServerClient::PanelServerClient(const std::string& address) {
#ifdef _WIN32
  WSADATA data;
  if (WSAStartup(MAKEWORD(2, 2), &data) != 0) throw std::runtime_error("cannot start Winsock");
#endif
  const std::size_t colon = address.rfind(':');
  sockaddr_in server{};
  server.sin_family = AF_INET;
  const int port = colon == std::string::npos ? 0 : std::atoi(address.c_str() + colon + 1);
  server.sin_port = htons(static_cast<uint16_t>(port));
  if (port <= 0 || port > 65535 || inet_pton(AF_INET, address.substr(0, colon).c_str(), &server.sin_addr) != 1) {
    throw std::runtime_error("bad panel server address '" + address + "' (expected IPV4:PORT, e.g. 127.0.0.1:7770)");
  }
  const Socket connection = ::socket(AF_INET, SOCK_STREAM, 0);
  if (connection == kNoSocket ||
      ::connect(connection, reinterpret_cast<const sockaddr*>(&server), sizeof server) != 0) {
    if (connection != kNoSocket) CloseSocket(connection);
    throw std::runtime_error("cannot connect to the panel server at " + address + ": is it running?");
  }
  socket_ = static_cast<std::uintptr_t>(connection);
}

PanelServerClient::~PanelServerClient() {
  CloseSocket(AsSocket(socket_));
#ifdef _WIN32
  WSACleanup();
#endif
}

std::string PanelServerClient::Call(const std::string& request) {
  const std::string line = request + "\n";
  for (std::size_t sent = 0; sent < line.size();) {
    const auto written = ::send(AsSocket(socket_), line.data() + sent, static_cast<int>(line.size() - sent), 0);
    if (written <= 0) throw std::runtime_error("lost the panel server while sending '" + request + "'");
    sent += static_cast<std::size_t>(written);
  }
  std::size_t end;
  while ((end = pending_.find('\n')) == std::string::npos) {
    char buffer[4096];
    const auto got = ::recv(AsSocket(socket_), buffer, sizeof buffer, 0);
    if (got <= 0) throw std::runtime_error("lost the panel server while waiting for the reply to '" + request + "'");
    pending_.append(buffer, static_cast<std::size_t>(got));
  }
  std::string reply = pending_.substr(0, end);
  pending_.erase(0, end + 1);
  if (reply == "ok") return "";
  if (reply.rfind("ok ", 0) == 0) return reply.substr(3);
  throw std::runtime_error("panel server, on '" + request + "': " + reply);
}

void PanelServerClient::Plug(uint16_t productId, int port, const std::string& options) {
  std::ostringstream request;
  request << "plug " << std::hex << productId << std::dec << ' ' << port;
  if (!options.empty()) request << ' ' << options;
  Call(request.str());
}

void PanelServerClient::Unplug(int port) { Call("unplug " + std::to_string(port)); }
void PanelServerClient::Replug(int port) { Call("replug " + std::to_string(port)); }

void PanelServerClient::Input(int port, const std::vector<uint8_t>& report) {
  Input(port, std::vector<std::vector<uint8_t>>{report});
}

void PanelServerClient::Input(int port, const std::vector<std::vector<uint8_t>>& reports) {
  // Appended piece by piece: GCC 12 at -O3 misreads `" " + string` as an overlapping copy.
  std::string request = "input " + std::to_string(port);
  for (const std::vector<uint8_t>& report : reports) {
    request += ' ';
    request += ToHex(report);
  }
  Call(request);
}

std::vector<ServerTransfer> PanelServerClient::Transfers(const std::string& reply) {
  std::vector<ServerTransfer> transfers;
  for (std::string word : Words(reply)) {
    ServerTransfer transfer;
    transfer.refused = !word.empty() && word.back() == '!';
    if (transfer.refused) word.pop_back();
    const auto bytes = word.size() > 2 ? FromHex(std::string_view(word).substr(2)) : std::nullopt;
    if (!bytes || word[1] != ':' || (word[0] != 'F' && word[0] != 'O')) {
      throw std::runtime_error("panel server sent a malformed transfer '" + word + "'");
    }
    transfer.kind = word[0];
    transfer.bytes = *bytes;
    transfers.push_back(std::move(transfer));
  }
  return transfers;
}

std::vector<ServerTransfer> PanelServerClient::Received(int port) {
  return Transfers(Call("received " + std::to_string(port)));
}

std::vector<ServerTransfer> PanelServerClient::WaitReceived(int port, std::size_t count, int timeoutMs) {
  return Transfers(Call("wait-received " + std::to_string(port) + " " + std::to_string(count) + " " +
                        std::to_string(timeoutMs)));
}

void PanelServerClient::FailSends(int port, int count) {
  Call("fail-sends " + std::to_string(port) + " " + std::to_string(count));
}

void PanelServerClient::FailFeatureReads(int port, bool fail) {
  Call("fail-feature-reads " + std::to_string(port) + (fail ? " 1" : " 0"));
}

bool PanelServerClient::IsOpen(int port) { return Call("open " + std::to_string(port)) == "1"; }

std::vector<uint8_t> PanelServerClient::Feature(int port, uint8_t reportId) {
  const std::string reply = Call("feature " + std::to_string(port) + " " + std::to_string(reportId));
  const auto bytes = FromHex(reply);
  if (!bytes) throw std::runtime_error("panel server sent a malformed feature report '" + reply + "'");
  return *bytes;
}

std::vector<std::string> PanelServerClient::Nodes(int port) { return Words(Call("node " + std::to_string(port))); }

std::vector<std::string> PanelServerClient::SetMode(int port, const std::string& octal) {
  return Words(Call("mode " + std::to_string(port) + " " + octal));
}

void PanelServerClient::Reset() { Call("reset"); }
void PanelServerClient::Quit() { Call("quit"); }

}  // namespace pelm::testbed
