// The device information queries: which checks come first, what is written and
// what the host's record keeps.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <climits>
#include <cstring>

#include "core/pelm_dev.h"
#include "support/guarded_memory.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kMapCtlId = 0x0300;
constexpr uint16_t kThrottleId = 0x0200;
constexpr uint16_t kEngineStartId = 0x003C;
constexpr uint8_t kHostFill = 0xAB;
constexpr uint16_t kHostOutputLength = 0xBEEF;

PelmDevInfo FilledInfo() {
  PelmDevInfo info;
  std::memset(&info, kHostFill, sizeof info);
  return info;
}

PelmDevInfo2 FilledInfo2(uint16_t structSize = sizeof(PelmDevInfo2)) {
  PelmDevInfo2 info;
  std::memset(&info, kHostFill, sizeof info);
  info.structSize = structSize;
  info.outputReportLength = kHostOutputLength;
  return info;
}

std::string UpperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

template <class Record>
bool SameBytes(const Record& a, const Record& b) {
  return std::memcmp(&a, &b, sizeof(Record)) == 0;
}

class DeviceInfoTest : public LibraryTest {};

TEST_F(DeviceInfoTest, UnknownTypeCodesSucceedWithoutWriting) {
  Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  for (int32_t code : {0, 16, 20, -1, INT_MIN}) {
    PelmDevInfo info = FilledInfo();
    PelmDevInfo2 info2 = FilledInfo2();
    EXPECT_EQ(PelmDev_GetDeviceInfo(code, 0, &info), PELM_SUCCESS) << code;
    EXPECT_EQ(PelmDev_GetDeviceInfo2(code, 0, &info2), PELM_SUCCESS) << code;
    EXPECT_TRUE(SameBytes(info, FilledInfo())) << code;
    EXPECT_TRUE(SameBytes(info2, FilledInfo2())) << code;
    EXPECT_EQ(PelmDev_GetDeviceInfo_stdcall(code, 0, nullptr), PELM_SUCCESS) << code;
  }
}

TEST_F(DeviceInfoTest, TheIndexAndTheSlotAreCheckedBeforeTheRecord) {
  Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  struct Case {
    int32_t code;
    int32_t index;
    int32_t status;
  };
  const Case cases[] = {
      {PELM_MODEL_MAPCTL, 4, PELM_ERR_INDEX},      {PELM_MODEL_MAPCTL, -1, PELM_ERR_INDEX},
      {PELM_MODEL_RADIO, 16, PELM_ERR_INDEX},      {PELM_MODEL_BUTTONS, 32, PELM_ERR_INDEX},
      {PELM_MODEL_MAPCTL, 1, PELM_ERR_NODEVICE},   {PELM_MODEL_BUTTONS, 31, PELM_ERR_NODEVICE},
      {PELM_MODEL_IOBOARD, 3, PELM_ERR_NODEVICE},
  };
  for (const Case& c : cases) {
    PelmDevInfo info = FilledInfo();
    PelmDevInfo2 info2 = FilledInfo2();
    EXPECT_EQ(PelmDev_GetDeviceInfo(c.code, c.index, &info), c.status) << c.code << "/" << c.index;
    EXPECT_EQ(PelmDev_GetDeviceInfo2(c.code, c.index, &info2), c.status) << c.code << "/" << c.index;
    EXPECT_EQ(PelmDev_GetDeviceInfo(c.code, c.index, nullptr), c.status) << c.code << "/" << c.index;
    EXPECT_TRUE(SameBytes(info, FilledInfo()));
    EXPECT_TRUE(SameBytes(info2, FilledInfo2()));
  }
}

TEST_F(DeviceInfoTest, ANullOrUnwritableRecordIsRefused) {
  Plug(kMapCtlId, 1);
  PelmDev_Init(nullptr);
  GuardedMemory memory;
  ASSERT_TRUE(memory.Mapped());
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_MAPCTL, 0, nullptr), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_MAPCTL, 0, memory.ReadOnly<PelmDevInfo>()), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_MAPCTL, 0, memory.LastByteReadOnly<PelmDevInfo>()), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_MAPCTL, 0, nullptr), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_MAPCTL, 0, memory.ReadOnly<PelmDevInfo2>()), PELM_ERR_PARAM);
  // The whole record is tested, not only the fields that would be written.
  PelmDevInfo2* straddling = memory.LastByteReadOnly<PelmDevInfo2>();
  const uint16_t size = sizeof(PelmDevInfo2);
  std::memcpy(straddling, &size, sizeof size);
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_MAPCTL, 0, straddling), PELM_ERR_PARAM);
  EXPECT_EQ(reinterpret_cast<const uint8_t*>(straddling)[offsetof(PelmDevInfo2, devicePath)], 0);
}

TEST_F(DeviceInfoTest, AFunctionBasedPanelIsDescribedWithItsSerialNumber) {
  sim::DeviceSpec spec = PanelSpec(kMapCtlId, 1);
  spec.versionNumber = 0x0123;
  spec.serialNumber = u"SN-0042";
  bus().Plug(spec);
  PelmDev_Init(nullptr);
  const std::string upperPath = UpperCase(spec.path);
  ASSERT_NE(upperPath, spec.path);

  PelmDevInfo info = FilledInfo();
  EXPECT_EQ(PelmDev_GetDeviceInfo_stdcall(PELM_MODEL_MAPCTL, 0, &info), PELM_SUCCESS);
  EXPECT_STREQ(info.devicePath, upperPath.c_str());
  EXPECT_EQ(static_cast<uint8_t>(info.devicePath[upperPath.size() + 1]), kHostFill);  // only up to the terminator
  EXPECT_EQ(info.versionNumber, 0x0123);

  PelmDevInfo2 info2 = FilledInfo2();
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_MAPCTL, 0, &info2), PELM_SUCCESS);
  EXPECT_EQ(info2.structSize, sizeof(PelmDevInfo2));
  EXPECT_STREQ(info2.devicePath, upperPath.c_str());
  EXPECT_EQ(info2.versionNumber, 0x0123);
  EXPECT_STREQ(info2.serialNumber, "SN-0042");
  EXPECT_EQ(info2.outputReportLength, kHostOutputLength);
}

TEST_F(DeviceInfoTest, SerialNumberAndOutputLengthFollowTheModelsKind) {
  struct Case {
    uint16_t productId;
    int32_t code;
    uint16_t outputReportLength;  // what offset 329 holds afterwards
  };
  const Case cases[] = {
      {kThrottleId, PELM_MODEL_THROTTLE, kHostOutputLength},  // function-based: left alone
      {kEngineStartId, PELM_MODEL_ENGINESTART, 5},            // class-based: its capability
  };
  for (const Case& c : cases) {
    sim::DeviceSpec spec = PanelSpec(c.productId, 1, {8, 5, 8});
    spec.serialNumber = u"NOT-READ";  // neither model reads its serial number
    bus().Plug(spec);
  }
  PelmDev_Init(nullptr);
  for (const Case& c : cases) {
    PelmDevInfo2 info = FilledInfo2();
    EXPECT_EQ(PelmDev_GetDeviceInfo2(c.code, 0, &info), PELM_SUCCESS);
    EXPECT_STREQ(info.serialNumber, "") << c.code;
    EXPECT_EQ(info.outputReportLength, c.outputReportLength) << c.code;
    EXPECT_EQ(info.devicePath, UpperCase(InterfacePath(c.productId, 1))) << c.code;
  }
}

TEST_F(DeviceInfoTest, AnyOtherStructSizeSucceedsWithoutWriting) {
  Plug(kEngineStartId, 1);
  PelmDev_Init(nullptr);
  for (uint16_t size : {0, 262, 330, 332, 0xFFFF}) {
    PelmDevInfo2 info = FilledInfo2(size);
    EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_ENGINESTART, 0, &info), PELM_SUCCESS) << size;
    EXPECT_TRUE(SameBytes(info, FilledInfo2(size))) << size;
  }
}

TEST_F(DeviceInfoTest, AnUnpluggedDeviceIsStillDescribedUntilTerminate) {
  sim::DeviceSpec spec = PanelSpec(kMapCtlId, 1);
  spec.serialNumber = u"KEPT";
  auto device = bus().Plug(spec);
  PelmDev_Init(kHostInstance);
  bus().Unplug(spec.path);
  PelmDevExt_DispatchEvents();
  ASSERT_EQ(PelmMapCtl_GetNumDevices(), 0u);

  PelmDevInfo info = FilledInfo();
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_MAPCTL, 0, &info), PELM_SUCCESS);
  EXPECT_EQ(info.devicePath, UpperCase(spec.path));
  PelmDevInfo2 info2 = FilledInfo2();
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_MAPCTL, 0, &info2), PELM_SUCCESS);
  EXPECT_STREQ(info2.serialNumber, "KEPT");

  PelmDev_Terminate();
  EXPECT_EQ(PelmDev_GetDeviceInfo(PELM_MODEL_MAPCTL, 0, &info), PELM_ERR_NODEVICE);
}

}  // namespace
}  // namespace pelm::test
