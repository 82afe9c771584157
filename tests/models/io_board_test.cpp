// The I/O board: outputs in a report of the board's output length, switched off
// at Init only, inputs with a probed first pointer, and the functions it lacks.

#include <gtest/gtest.h>

#include "models/model_test.h"
#include "platform/sim/panels/io_board_panel.h"

namespace pelm::test {
namespace {

using sim::IoBoardPanel;
using sim::LogOp;
using sim::Report;

constexpr platform::HidCaps kLongOutputCaps = {8, 10, 8};

class IoBoardTest : public ModelTest {};

TEST_F(IoBoardTest, InitSwitchesTheOutputsOffButAnArrivalDoesNot) {
  auto atInit = Plug(IoBoardPanel::kProductId, 1);
  PelmDev_Init(kHostInstance);
  EXPECT_EQ(WaitForSent(*atInit, 1, LogOp::WriteOutput), (std::vector<Report>{{2, 0, 0, 0, 0, 0, 0, 0}}));

  auto arriving = Plug(IoBoardPanel::kProductId, 2);
  PelmDevExt_DispatchEvents();
  ASSERT_EQ(PelmIoBoard_GetNumDevices(), 2u);
  ASSERT_EQ(PelmIoBoard_SetIndicators(1, 9, 9, 9, 9), PELM_SUCCESS);
  EXPECT_EQ(WaitForSent(*arriving, 1, LogOp::WriteOutput), (std::vector<Report>{{2, 9, 9, 9, 9, 0, 0, 0}}));
}

TEST_F(IoBoardTest, OutputsFillTheBoardsOutputReport) {
  auto device = Plug(IoBoardPanel::kProductId, 1, kLongOutputCaps);
  PelmDev_Init(nullptr);
  ASSERT_EQ(PelmIoBoard_SetIndicators(0, 1, 2, 3, 0x104), PELM_SUCCESS);
  const auto sent = WaitForSent(*device, 2, LogOp::WriteOutput);
  ASSERT_EQ(sent.size(), 2u);
  EXPECT_EQ(sent[1], (Report{2, 1, 2, 3, 4, 0, 0, 0, 0, 0}));
}

TEST_F(IoBoardTest, ABoardWhoseOutputReportCannotHoldTheOutputsIsRefused) {
  auto device = Plug(IoBoardPanel::kProductId, 1, {8, 4, 8});
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmIoBoard_SetIndicators(0, 1, 2, 3, 4), PELM_ERR_PARAM);
  EXPECT_EQ(device->CountOf(LogOp::WriteOutput), 0u);
}

TEST_F(IoBoardTest, InputsComeFromTheOpenTimeReadThenFromEveryReport) {
  auto device = Plug(IoBoardPanel::kProductId, 1);
  device->PanelAs<IoBoardPanel>().SetInputs({1, 2, 3, 4, 5, 6, 7});
  PelmDev_Init(nullptr);
  EXPECT_EQ(Read(PelmIoBoard_GetSwitchVals), (Values{1, 2, 3, 4, 5, 6, 7}));
  const Report report = {0, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77};
  Deliver(*device, {report, report});  // a repeated report is delivered too
  EXPECT_EQ(Read(PelmIoBoard_GetSwitchVals), (Values{0x11, 0x22, 0x33, 0x44, 0x55, 0x66, 0x77}));

  // A missing pointer writes nothing.
  uint8_t untouched[7] = {};
  uint8_t* u = untouched;
  EXPECT_EQ(PelmIoBoard_GetSwitchVals(0, nullptr, u + 1, u + 2, u + 3, u + 4, u + 5, u + 6), PELM_SUCCESS);
  EXPECT_EQ(PelmIoBoard_GetSwitchVals(0, u, u + 1, u + 2, nullptr, u + 4, u + 5, u + 6), PELM_ERR_PARAM);
  EXPECT_EQ(Report(u, u + 7), Report(7, 0));
}

TEST_F(IoBoardTest, TheFunctionsTheBoardLacksAreUnsupportedAfterTheIndexChecks) {
  auto device = Plug(IoBoardPanel::kProductId, 1);
  PelmDev_Init(kHostInstance);
  const auto lacking = [](int32_t index) {
    return std::vector<int32_t>{PelmIoBoard_GetIndicators(index, 0, 0, 0, 0), PelmIoBoard_GetBrightness(index, 0),
                                PelmIoBoard_SetBrightness(index, 15)};
  };
  EXPECT_EQ(lacking(0), std::vector<int32_t>(3, PELM_ERR_UNSUPPORTED));
  EXPECT_EQ(lacking(1), std::vector<int32_t>(3, PELM_ERR_NODEVICE));
  EXPECT_EQ(lacking(4), std::vector<int32_t>(3, PELM_ERR_INDEX));
  Disconnect(*device);
  EXPECT_EQ(lacking(0), std::vector<int32_t>(3, PELM_ERR_UNSUPPORTED));
}

}  // namespace
}  // namespace pelm::test
