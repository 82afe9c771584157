// Writer throughput: reports per second that writer threads deliver to
// simulated button panels that answer at once. Producers keep every queue
// topped up (a refused report is simply offered again later), so the figure is
// the writers' pace, not the producers'.

#include <atomic>
#include <thread>

#include "bench/benchmarks.h"
#include "core/pelm_dev.h"

namespace pelm::bench {
namespace {

constexpr uint16_t kButtonPanelProductId = 0x0020;
constexpr int kManyWriters = 32;
// Two producers: one per core of the machines this runs on.
constexpr int kProducerThreads = 2;
constexpr auto kWindow = std::chrono::seconds(1);
constexpr auto kQuickWindow = std::chrono::milliseconds(200);
constexpr double kOneWriterLimitPerSecond = 100000;

double DeliveredPerSecond(int writers, Clock::duration window) {
  sim::Bus::Instance().Reset();
  std::vector<std::shared_ptr<sim::SimDevice>> devices;
  for (int i = 0; i < writers; ++i) devices.push_back(PlugQuietly(PanelDescription(kButtonPanelProductId, i + 1)));
  PelmDev_Init(nullptr);

  std::atomic<bool> stop{false};
  std::vector<std::thread> producers;
  const int producerCount = std::min(writers, kProducerThreads);
  for (int p = 0; p < producerCount; ++p) {
    producers.emplace_back([&, p] {
      uint32_t value = 0;
      while (!stop.load(std::memory_order_relaxed)) {
        bool anyQueued = false;
        for (int index = p; index < writers; index += producerCount) {
          anyQueued |= PelmButtons_SetIndicators(index, value++) == PELM_SUCCESS;
        }
        if (!anyQueued) std::this_thread::yield();
      }
    });
  }

  const auto totalSends = [&] {
    std::size_t total = 0;
    for (const auto& device : devices) total += SendsReceived(*device);
    return total;
  };
  // Let the queues fill before the window opens.
  SpinUntil([&] { return totalSends() >= static_cast<std::size_t>(writers); }, std::chrono::seconds(2));
  const std::size_t before = totalSends();
  const auto start = Clock::now();
  std::this_thread::sleep_for(window);
  const std::size_t delivered = totalSends() - before;
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  stop = true;
  for (auto& producer : producers) producer.join();
  PelmDev_Terminate();
  sim::Bus::Instance().Reset();
  return static_cast<double>(delivered) / seconds;
}

}  // namespace

std::vector<Figure> MeasureWriterThroughput(const RunLength& length) {
  const auto window = length.quick ? Clock::duration(kQuickWindow) : Clock::duration(kWindow);
  Progress("writer throughput: one writer");
  const double one = DeliveredPerSecond(1, window);
  Progress("writer throughput: " + std::to_string(kManyWriters) + " writers");
  const double many = DeliveredPerSecond(kManyWriters, window);
  return {
      {"writer throughput, one writer", one, "reports/s", kOneWriterLimitPerSecond, true,
       "button panel, instant device, one producer keeping its queue full"},
      {"writer throughput, " + std::to_string(kManyWriters) + " writers together", many, "reports/s", {}, false,
       std::to_string(kProducerThreads) + " producers; per writer " +
           std::to_string(static_cast<long>(many / kManyWriters)) + "/s"},
  };
}

}  // namespace pelm::bench
