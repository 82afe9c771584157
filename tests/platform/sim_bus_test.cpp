// The simulated bus's own switches that benchmarks rely on.

#include <gtest/gtest.h>

#include "support/sim_fixture.h"

namespace pelm::test {
namespace {

class SimBusTest : public SimTest {};

TEST_F(SimBusTest, WithLoggingOffSendsAreCountedButTheirBytesAreNotKept) {
  auto device = bus().Plug(PanelDescription(0x0050, 1));
  platform::HidHandle handle = platform::OpenDevice(device->Description().path.c_str(), platform::OpenMode::Synchronous);
  ASSERT_TRUE(handle);
  const uint8_t report[] = {7, 0xA5};

  device->SetLogging(false);
  ASSERT_TRUE(handle->SetFeature(report, sizeof report));
  ASSERT_TRUE(handle->WriteOutput(report, sizeof report));
  ASSERT_TRUE(handle->SetFeature(report, sizeof report));
  EXPECT_EQ(device->CountOf(sim::LogOp::SetFeature), 2u);
  EXPECT_EQ(device->CountOf(sim::LogOp::WriteOutput), 1u);
  EXPECT_TRUE(device->LogOf(sim::LogOp::SetFeature).empty());

  device->SetLogging(true);
  ASSERT_TRUE(handle->SetFeature(report, sizeof report));
  EXPECT_EQ(device->CountOf(sim::LogOp::SetFeature), 3u);
  EXPECT_EQ(SentReports(*device, sim::LogOp::SetFeature), (std::vector<sim::Report>{{7, 0xA5}}));

  device->ClearLog();
  EXPECT_EQ(device->CountOf(sim::LogOp::SetFeature), 0u);
}

}  // namespace
}  // namespace pelm::test
