// The device information queries: what is written for each model, and the
// present panels. The records are packed, so
// their 16-bit fields are copied out before they are compared.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <vector>

#include "core/model_table.h"
#include "models_under_test.h"
#include "support/guarded_memory.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint16_t kThrottleId = 0x0200;
constexpr uint8_t kHostFill = 0xAB;
constexpr uint16_t kHostOutputLength = 0xBEEF;

template <class Record>
Record Filled(uint16_t structSize = sizeof(PelmDevInfo2)) {
  Record record;
  std::memset(&record, kHostFill, sizeof record);
  if constexpr (std::is_same_v<Record, PelmDevInfo2>) {
    record.structSize = structSize;
    record.outputReportLength = kHostOutputLength;
  }
  return record;
}

std::string UpperCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

class DeviceInfoTest : public LibraryTest {};

// Every model, so that a model that reads its serial number where it should
// not (or misses it) shows.
TEST_F(DeviceInfoTest, EveryModelIsDescribedWithItsPathVersionSerialAndKind) {
  for (const ModelUnderTest& model : kModels) {
    sim::DeviceDescription description = PanelDescription(model.productId, 1, {8, 5, 8});
    description.versionNumber = 0x0123;
    description.serialNumber = u"SN-0042";
    bus().Plug(description);
  }
  PelmDev_Init(nullptr);
  for (const ModelUnderTest& model : kModels) {
    SCOPED_TRACE(testing::Message() << "model " << model.typeCode);
    const std::string path = UpperCase(InterfacePath(model.productId, 1));
    auto info = Filled<PelmDevInfo>();
    EXPECT_EQ(PelmDev_GetDeviceInfo(model.typeCode, 0, &info), PELM_SUCCESS);
    EXPECT_EQ(info.devicePath, path);
    EXPECT_EQ(static_cast<uint8_t>(info.devicePath[path.size() + 1]), kHostFill);  // written up to the terminator
    EXPECT_EQ(uint16_t{info.versionNumber}, 0x0123);

    auto info2 = Filled<PelmDevInfo2>();
    EXPECT_EQ(PelmDev_GetDeviceInfo2(model.typeCode, 0, &info2), PELM_SUCCESS);
    EXPECT_EQ(uint16_t{info2.structSize}, sizeof(PelmDevInfo2));
    EXPECT_EQ(info2.devicePath, path);
    EXPECT_EQ(uint16_t{info2.versionNumber}, 0x0123);
    EXPECT_STREQ(info2.serialNumber, model.readsSerial ? "SN-0042" : "");
    // Only class-based models fill the output length in; the host's value stays otherwise.
    const bool classBased = ModelByTypeCode(model.typeCode)->kind == ModelKind::ClassBased;
    EXPECT_EQ(uint16_t{info2.outputReportLength}, classBased ? 5 : kHostOutputLength);
  }
}

// A panel the user may not open has no slot and no count: the presence query
// is what tells it from no panel at all.
TEST_F(DeviceInfoTest, PresentPanelsAreListedWithWhatKeepsThemClosed) {
  constexpr uint16_t kRadioId = 0x0050;
  Plug(kRadioId, 1);
  Plug(kThrottleId, 1)->DenyAccess(true);
  sim::DeviceDescription foreign = PanelDescription(kRadioId, 2);
  foreign.vendorId = 0x1234;
  bus().Plug(foreign);
  PelmDev_Init(nullptr);
  EXPECT_EQ(PelmThrottle_GetNumDevices(), 0u);

  uint32_t count = 99;
  ASSERT_EQ(PelmDevExt_ListPresentPanels(nullptr, 0, &count), PELM_SUCCESS);
  EXPECT_EQ(count, 2u);
  std::vector<PelmDevExt_PresentPanel> panels(3);
  panels[1].modelType = -7;
  ASSERT_EQ(PelmDevExt_ListPresentPanels(panels.data(), 1, &count), PELM_SUCCESS);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(panels[1].modelType, -7) << "written past the capacity";
  ASSERT_EQ(PelmDevExt_ListPresentPanels(panels.data(), 3, &count), PELM_SUCCESS);
  ASSERT_EQ(count, 2u);

  // Model, slot, whether it is open there, why not, the system's error.
  using Fields = std::array<int32_t, 5>;
  auto fields = [](const PelmDevExt_PresentPanel& p) {
    return Fields{p.modelType, p.deviceIndex, p.openInSlot, p.openStatus, p.osError};
  };
  EXPECT_EQ(fields(panels[0]), (Fields{PELM_MODEL_RADIO, 0, 1, PELMEXT_OPEN_OK, 0}));
  EXPECT_EQ(fields(panels[1]), (Fields{PELM_MODEL_THROTTLE, -1, 0, PELMEXT_OPEN_PERMISSION_DENIED, EACCES}));
  EXPECT_EQ(panels[1].devicePath, UpperCase(InterfacePath(kThrottleId, 1)));

  EXPECT_EQ(PelmDevExt_ListPresentPanels(panels.data(), 3, nullptr), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDevExt_ListPresentPanels(nullptr, 1, &count), PELM_ERR_PARAM);
  GuardedMemory guarded;
  ASSERT_TRUE(guarded.Mapped());
  EXPECT_EQ(PelmDevExt_ListPresentPanels(guarded.LastByteReadOnly<PelmDevExt_PresentPanel>(), 1, &count),
            PELM_ERR_PARAM);
}

}  // namespace
}  // namespace pelm::test
