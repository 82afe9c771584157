#pragma once
// Helpers for the model tests: getters read into one shape, input reports
// delivered, setter tables, waiting for the writer's sends, and taking a panel
// away and back.

#include <cstring>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include "support/input_capture.h"
#include "support/library_fixture.h"

namespace pelm::test {

// The bytes of a record as the library lays it out in host memory.
template <class Record>
std::vector<uint8_t> BytesOf(const Record& record) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
  return std::vector<uint8_t>(bytes, bytes + sizeof record);
}

// The values of a getter's outputs, in the order of its parameters.
using Values = std::vector<int64_t>;

// Calls a getter of panel `index` and gives what it wrote. Every output starts
// as a filler that no test expects, so one left unwritten shows.
template <class... Out>
Values Read(int32_t (*getter)(int32_t, Out*...), int32_t index = 0) {
  std::tuple<Out...> outs;
  std::apply([](Out&... out) { (std::memset(&out, 0xA5, sizeof out), ...); }, outs);
  EXPECT_EQ(std::apply([&](Out&... out) { return getter(index, &out...); }, outs), PELM_SUCCESS);
  return std::apply([](const Out&... out) { return Values{int64_t{out}...}; }, outs);
}

// Injects input reports and waits until the host has been called back for
// each, so that the getters show them.
inline void Deliver(sim::SimDevice& device, std::initializer_list<sim::Report> reports) {
  const InputCapture capture(1);
  for (const sim::Report& report : reports) device.InjectInput(report);
  EXPECT_TRUE(capture.WaitForCount(reports.size()));
}

// A setter call and the report it must send.
struct SetterCase {
  std::string description;
  std::function<int32_t()> call;
  sim::Report sent;
};

class ModelTest : public LibraryTest {
 protected:
  std::shared_ptr<sim::SimDevice> PlugAndInit(uint16_t productId, uint16_t version = 0x0100) {
    sim::DeviceDescription description = PanelDescription(productId, 1);
    description.versionNumber = version;
    auto device = bus().Plug(description);
    PelmDev_Init(nullptr);
    return device;
  }

  // Makes every call, then checks the reports that went out, in order.
  static void ExpectSent(const sim::SimDevice& device, const std::vector<SetterCase>& cases,
                         sim::LogOp op = sim::LogOp::SetFeature) {
    for (const SetterCase& c : cases) EXPECT_EQ(c.call(), PELM_SUCCESS) << c.description;
    const std::vector<sim::Report> sent = WaitForSent(device, cases.size(), op);
    ASSERT_EQ(sent.size(), cases.size());
    for (std::size_t i = 0; i < cases.size(); ++i) EXPECT_EQ(sent[i], cases[i].sent) << cases[i].description;
  }

  // Waits until `count` reports of `op` have gone out successfully and gives
  // them in order.
  static std::vector<sim::Report> WaitForSent(const sim::SimDevice& device, std::size_t count,
                                              sim::LogOp op = sim::LogOp::SetFeature) {
    std::vector<sim::Report> sent;
    device.WaitForLog([&](const std::vector<sim::LogEntry>& log) {
      sent.clear();
      for (const sim::LogEntry& entry : log) {
        if (entry.op == op && entry.succeeded) sent.push_back(entry.bytes);
      }
      return sent.size() >= count;
    });
    return sent;
  }

  // Needs PelmDev_Init(kHostInstance): the library hears of the removal.
  void Disconnect(const sim::SimDevice& device) {
    bus().Unplug(device.Description().path);
    PelmDevExt_DispatchEvents();
  }
  void Reconnect(const sim::SimDevice& device) {
    bus().Plug(device.Description());
    PelmDevExt_DispatchEvents();
  }
};

}  // namespace pelm::test
