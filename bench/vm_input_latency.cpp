// The benchmarks on the real kernel, inside the test VM, with a panel of every
// model on uhid among foreign HID devices (another vendor's IDs):
//
// - input latency, from an input report written to the radio's uhid device to
//   its delivery, for three readers of that panel in one run — a bare read()
//   loop on the hidraw node (the floor), hidapi's hid_read_timeout (what a
//   developer would otherwise use), and this library's input callback with
//   every panel open, so that all their writers and readers are present;
// - PelmDev_Init beside hidapi's enumerate-and-open (bench/vm_init_time.cpp).
//
// Under software emulation absolute times say little; the ratios to the floor
// are the figures. The readers take turns, one at a time, in rounds, so each
// has the emulated CPUs to itself and all see the same drift. Prints tables
// and lines of JSON prefixed "PELM-VM-BENCH " for the host to collect.

#include <fcntl.h>
#include <hidapi/hidapi.h>
#include <unistd.h>

#include <iterator>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <memory>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/vm_bench_support.h"
#include "bench/vm_init_time.h"
#include "core/pelm_dev.h"
#include "tests/models_under_test.h"
#include "testbed/uhid/uhid_cockpit.h"
#include "testbed/wait_until.h"

namespace {

using pelm::vm_bench::NowNs;
using pelm::vm_bench::Percentile;

constexpr uint16_t kRadioProductId = 0x0050;
constexpr uint16_t kForeignVendorId = 0x1234;
constexpr int kForeignDevices = 16;
constexpr int kFirstForeignPort = 100;
constexpr int kRounds = 10;
constexpr int kReportsPerTurn = 400;
constexpr int kWarmUpReports = 20;
constexpr std::size_t kReadBufferLength = 64;
constexpr int kHidapiReadTimeoutMs = 100;
constexpr auto kArrivalDeadline = std::chrono::seconds(2);
constexpr uint8_t kInputReportId = 1;

// When a report last reached one reader, and how many have.
class Arrivals {
 public:
  void Note() {
    const int64_t now = NowNs();
    {
      std::lock_guard hold(mutex_);
      lastNs_ = now;
      ++count_;
    }
    arrived_.notify_all();
  }
  uint64_t Count() {
    std::lock_guard hold(mutex_);
    return count_;
  }
  // The arrival time of the next report after the first `seen`; none if it never came.
  std::optional<int64_t> WaitBeyond(uint64_t seen) {
    std::unique_lock hold(mutex_);
    if (!arrived_.wait_for(hold, kArrivalDeadline, [&] { return count_ > seen; })) return std::nullopt;
    return lastNs_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  int64_t lastNs_ = 0;
  uint64_t count_ = 0;
};

Arrivals libraryArrivals;
void OnInput(int32_t, int32_t, void*) { libraryArrivals.Note(); }

// The radio's hidraw node, as hidapi finds it by its IDs.
std::string RadioNode() {
  hid_device_info* radios = hid_enumerate(PELM_VENDOR_ID, kRadioProductId);
  std::string node = radios != nullptr ? radios->path : "";
  hid_free_enumeration(radios);
  return node;
}

}  // namespace

int main() {
  // One panel of every model on ports 1 to 18, then the foreign devices, which
  // take the panels' product IDs in turn so that only the vendor ID tells them apart.
  std::vector<std::unique_ptr<pelm::vm::UhidPanel>> devices;
  pelm::vm::UhidPanel* panel = nullptr;
  for (const pelm::test::ModelUnderTest& model : pelm::test::kModels) {
    devices.push_back(pelm::vm::MakePanel(model.productId, static_cast<int>(devices.size()) + 1));
    if (model.productId == kRadioProductId) panel = devices.back().get();
  }
  for (int i = 0; i < kForeignDevices; ++i) {
    const uint16_t productId = pelm::test::kModels[static_cast<std::size_t>(i) % std::size(pelm::test::kModels)].productId;
    devices.push_back(pelm::vm::MakePanel(productId, kFirstForeignPort + i, kForeignVendorId));
  }
  if (!pelm::testbed::WaitUntil([&] { return pelm::vm::HidrawNodeCount() == devices.size(); })) {
    std::fprintf(stderr, "%zu hidraw nodes appeared of %zu devices\n", pelm::vm::HidrawNodeCount(), devices.size());
    return 1;
  }
  hid_init();
  const std::string node = RadioNode();
  const std::string initJson = pelm::vm_bench::TimeInit(kForeignDevices);
  if (initJson.empty()) return 1;

  std::thread readerThread;
  std::atomic<bool> stopReading{false};
  int bareFd = -1;
  hid_device* hidapiDevice = nullptr;

  Arrivals bareArrivals, hidapiArrivals;
  struct Turn {
    const char* name;
    Arrivals& arrivals;
    std::function<bool()> start;
    std::function<void()> stop;
  };
  std::vector<Turn> turns = {
      {"bare read() loop", bareArrivals,
       [&] {
         bareFd = open(node.c_str(), O_RDONLY | O_CLOEXEC);
         if (bareFd < 0) return false;
         stopReading = false;
         readerThread = std::thread([&] {
           uint8_t buffer[kReadBufferLength];
           while (read(bareFd, buffer, sizeof buffer) > 0 && !stopReading) bareArrivals.Note();
         });
         return true;
       },
       [&] {
         stopReading = true;
         panel->InjectInput({kInputReportId, 0, 0, 0, 0, 0, 0, 0});  // ends the blocked read
         readerThread.join();
         close(bareFd);
       }},
      {"hidapi hid_read_timeout", hidapiArrivals,
       [&] {
         hidapiDevice = hid_open_path(node.c_str());
         if (hidapiDevice == nullptr) return false;
         stopReading = false;
         readerThread = std::thread([&] {
           unsigned char buffer[kReadBufferLength];
           while (!stopReading) {
             if (hid_read_timeout(hidapiDevice, buffer, sizeof buffer, kHidapiReadTimeoutMs) > 0) hidapiArrivals.Note();
           }
         });
         return true;
       },
       [&] {
         stopReading = true;
         readerThread.join();
         hid_close(hidapiDevice);
       }},
      {"library input callback", libraryArrivals,
       [&] {
         PelmDev_Init(nullptr);
         for (const pelm::test::ModelUnderTest& model : pelm::test::kModels) {
           if (model.count() != 1) return false;
         }
         return PelmDev_RegisterInputCallback(OnInput) == 1;
       },
       [] { PelmDev_Terminate(); }},
  };

  std::vector<std::vector<double>> samplesUs(turns.size());
  std::size_t lost = 0;
  uint8_t dial = 0;
  for (int round = 0; round < kRounds; ++round) {
    for (std::size_t t = 0; t < turns.size(); ++t) {
      Turn& turn = turns[t];
      if (!turn.start()) {
        std::fprintf(stderr, "%s could not open %s\n", turn.name, node.c_str());
        return 1;
      }
      for (int i = 0; i < kWarmUpReports + kReportsPerTurn; ++i) {
        // Dial counts change from report to report, as a turning knob's would.
        dial = static_cast<uint8_t>(dial % 7 + 1);
        const uint64_t before = turn.arrivals.Count();
        const int64_t sentNs = NowNs();
        panel->InjectInput({kInputReportId, dial, dial, 0, 0, 0, 0, 0});
        const std::optional<int64_t> arrivedNs = turn.arrivals.WaitBeyond(before);
        if (!arrivedNs) {
          ++lost;
          continue;
        }
        if (i >= kWarmUpReports) samplesUs[t].push_back(static_cast<double>(*arrivedNs - sentNs) / 1000.0);
      }
      turn.stop();
    }
  }
  hid_exit();

  const double floorP50 = Percentile(samplesUs[0], 0.5), floorP99 = Percentile(samplesUs[0], 0.99);
  std::printf("\nInput latency inside the VM (software-emulated CPU), %d reports per reader, %zu panels open\n",
              kRounds * kReportsPerTurn, std::size(pelm::test::kModels));
  std::printf("%-26s %10s %10s %10s %10s\n", "reader", "p50 us", "p99 us", "p50 ratio", "p99 ratio");
  std::string json = "{\"reports_per_reader\": " + std::to_string(kRounds * kReportsPerTurn) +
                     ", \"lost\": " + std::to_string(lost) + ", \"readers\": [";
  for (std::size_t t = 0; t < turns.size(); ++t) {
    const double p50 = Percentile(samplesUs[t], 0.5), p99 = Percentile(samplesUs[t], 0.99);
    std::printf("%-26s %10.1f %10.1f %10.2f %10.2f\n", turns[t].name, p50, p99, p50 / floorP50, p99 / floorP99);
    char entry[256];
    std::snprintf(entry, sizeof entry,
                  "%s{\"reader\": \"%s\", \"p50_us\": %.1f, \"p99_us\": %.1f, \"p50_ratio\": %.3f, \"p99_ratio\": %.3f}",
                  t == 0 ? "" : ", ", turns[t].name, p50, p99, p50 / floorP50, p99 / floorP99);
    json += entry;
  }
  json += "]}";
  if (lost != 0) std::printf("%zu reports never arrived\n", lost);
  std::printf("PELM-VM-BENCH %s\n", json.c_str());
  std::printf("PELM-VM-BENCH %s\n", initJson.c_str());
  return lost == 0 ? 0 : 1;
}
