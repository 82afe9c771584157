#pragma once
// A client of the panel server (PROTOCOL.md beside this file) for test
// programs on Linux and on Windows: standard C++ and the system's sockets
// only (link ws2_32 on Windows), so a test built with mingw can use it too.

#include <cstdint>
#include <string>
#include <vector>

namespace pelm::testbed {

// A transfer a served panel received.
struct ServerTransfer {
  char kind = 'F';  // 'F' a feature report set, 'O' an output report
  std::vector<uint8_t> bytes;  // byte 0 is the report ID
  bool refused = false;
  bool operator==(const ServerTransfer&) const = default;
};

class PanelServerClient {
 public:
  // The server's address, "127.0.0.1:PORT", as tests are given it.
  static constexpr char kAddressVariable[] = "PELM_PANEL_SERVER";
  // The address in kAddressVariable; empty when it is not set.
  static std::string AddressFromEnvironment();

  // Connects to "IPV4:PORT"; throws std::runtime_error saying why it cannot.
  explicit PanelServerClient(const std::string& address);
  ~PanelServerClient();
  PanelServerClient(const PanelServerClient&) = delete;
  PanelServerClient& operator=(const PanelServerClient&) = delete;

  // Sends one request line and returns the reply after "ok" (empty for a
  // bare "ok"); throws std::runtime_error with the server's text on "error"
  // or when the connection fails.
  std::string Call(const std::string& request);

  // `options` is appended as it stands, e.g. "length=64 serial=".
  void Plug(uint16_t productId, int port, const std::string& options = "");
  void Unplug(int port);
  void Replug(int port);
  void Input(int port, const std::vector<uint8_t>& report);
  // Several reports in one request: back to back, as a busy device sends them.
  void Input(int port, const std::vector<std::vector<uint8_t>>& reports);
  std::vector<ServerTransfer> Received(int port);
  std::vector<ServerTransfer> WaitReceived(int port, std::size_t count, int timeoutMs);
  void FailSends(int port, int count);
  void FailFeatureReads(int port, bool fail);
  bool IsOpen(int port);
  std::vector<uint8_t> Feature(int port, uint8_t reportId);
  std::vector<std::string> Nodes(int port);
  std::vector<std::string> SetMode(int port, const std::string& octal);
  void Reset();
  void Quit();

 private:
  std::vector<ServerTransfer> Transfers(const std::string& reply);

  std::uintptr_t socket_;  // a SOCKET on Windows, a descriptor elsewhere
  std::string pending_;    // received bytes after the last reply line
};

}  // namespace pelm::testbed
