// Every export called with hostile arguments: device indices outside the slot
// table, empty slots, null and unwritable output variables, 8-bit and over-long
// texts, out-of-range numbers. The model operations come from the export table
// itself, so a new export is swept as soon as it is declared.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <fstream>
#include <functional>
#include <set>
#include <string>
#include <type_traits>
#include <vector>

#include "core/model_table.h"
#include "models/model_families.h"
#include "support/guarded_memory.h"
#include "support/library_fixture.h"

namespace pelm::test {
namespace {

constexpr uint8_t kCanaryByte = 0xA5;
// Larger than any output variable or input array an export takes.
constexpr std::size_t kArgumentBufferBytes = 64;
constexpr std::size_t kMaxPointerArguments = 8;
// Far beyond the widest display.
constexpr std::size_t kLongTextLength = 4096;
constexpr platform::HidCaps kRoomyCaps = {64, 64, 64};

enum class PointerMode { Canary, Null, Unwritable };

// Hands out the arguments of one call: each output pointer its own canary
// buffer (or null, or read-only memory), each input pointer a long text of
// bytes 0x80-0xFF, each number the same hostile value.
class Arguments {
 public:
  Arguments(PointerMode mode, uint32_t number) : mode_(mode), number_(number) {
    for (auto& buffer : outputs_) buffer.fill(kCanaryByte);
    for (std::size_t i = 0; i < kLongTextLength; ++i) highText_.push_back(static_cast<char>(0x80 + i % 0x80));
  }

  // Read-only memory starts at the variable's last byte, so that a getter that
  // probes only the first byte shows.
  template <class T>
  T* Output() {
    if (mode_ == PointerMode::Null) return nullptr;
    if (mode_ == PointerMode::Unwritable) return guarded_.LastByteReadOnly<T>();
    return reinterpret_cast<T*>(outputs_.at(used_++).data());
  }
  const void* Input() const { return mode_ == PointerMode::Null ? nullptr : highText_.c_str(); }
  uint32_t Number() const { return number_; }

  bool CanariesIntact() const {
    return std::all_of(outputs_.begin(), outputs_.end(), [](const auto& buffer) {
      return std::all_of(buffer.begin(), buffer.end(), [](uint8_t byte) { return byte == kCanaryByte; });
    });
  }

 private:
  const PointerMode mode_;
  const uint32_t number_;
  std::array<std::array<uint8_t, kArgumentBufferBytes>, kMaxPointerArguments> outputs_{};
  std::size_t used_ = 0;
  std::string highText_;
  GuardedMemory guarded_;
};

template <class T>
T Make(Arguments& arguments) {
  if constexpr (std::is_pointer_v<T>) {
    if constexpr (std::is_const_v<std::remove_pointer_t<T>>) {
      return static_cast<T>(arguments.Input());
    } else {
      return arguments.Output<std::remove_pointer_t<T>>();
    }
  } else {
    return static_cast<T>(arguments.Number());
  }
}

using ModelCall = std::function<int32_t(int32_t deviceIndex, Arguments&)>;

struct ModelExport {
  std::string name;
  int32_t typeCode;
  ModelCall call;
  int outputVariables;
};

template <class T>
constexpr bool kIsOutput = std::is_pointer_v<T> && !std::is_const_v<std::remove_pointer_t<T>>;

template <class... Params>
ModelExport Operation(std::string name, int32_t typeCode, int32_t (*function)(int32_t, Params...)) {
  ModelCall call = [function](int32_t deviceIndex, Arguments& arguments) {
    return function(deviceIndex, Make<Params>(arguments)...);
  };
  return {std::move(name), typeCode, std::move(call), (0 + ... + kIsOutput<Params>)};
}

struct CountExport {
  std::string name;
  uint32_t (*call)();
};

struct ExportTable {
  std::vector<ModelExport> operations;
  std::vector<CountExport> counts;
};

// The model operations and the count exports, read from the export table.
const ExportTable& Exports() {
  static const ExportTable table = [] {
    ExportTable read;
#define PELM_CORE_PAIR(ret, name, params, args)
#define PELM_CORE_SINGLE(ret, form, name, params, args)
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  read.counts.push_back({#family "_GetNumDevices", &family##_GetNumDevices});
#define PELM_MODEL_COUNT(family)         \
  PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  read.counts.push_back({#family "_GetNumDevices_stdcall", &family##_GetNumDevices_stdcall});
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  read.operations.push_back(Operation(#family "_" #op, families::family::kTypeCode, &family##_##op));
#define PELM_MODEL_OP(family, op, params, args)          \
  PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  read.operations.push_back(                           \
      Operation(#family "_" #op "_stdcall", families::family::kTypeCode, &family##_##op##_stdcall));
#include "core/pelm_exports.h"
#undef PELM_MODEL_OP
#undef PELM_MODEL_OP_DEFAULT_ONLY
#undef PELM_MODEL_COUNT
#undef PELM_MODEL_COUNT_DEFAULT_ONLY
#undef PELM_CORE_PAIR
#undef PELM_CORE_SINGLE
    return read;
  }();
  return table;
}

// The library-wide exports, each exercised by its own tests (lifecycle,
// callbacks, device information and the checks below).
const std::vector<std::string> kCoreExports = {
    "PelmDev_Init", "PelmDev_Init_stdcall", "PelmDev_Terminate", "PelmDev_Terminate_stdcall",
    "PelmDev_GetDeviceInfo", "PelmDev_GetDeviceInfo_stdcall", "PelmDev_GetDeviceInfo2",
    "PelmDev_RegisterConnectCallback", "PelmDev_RegisterConnectCallback_stdcall",
    "PelmDev_UnregisterConnectCallback", "PelmDev_UnregisterConnectCallback_stdcall",
    "PelmDev_RegisterInputCallback", "PelmDev_RegisterInputCallback_stdcall",
    "PelmDev_UnregisterInputCallback", "PelmDev_UnregisterInputCallback_stdcall",
    "PelmDev_RegisterWakeupCallback", "PelmDev_RegisterWakeupCallback_stdcall",
    "PelmDev_UnregisterWakeupCallback", "PelmDev_UnregisterWakeupCallback_stdcall",
};

int32_t SlotCount(int32_t typeCode) { return ModelByTypeCode(typeCode)->slotCount; }

std::vector<int32_t> IndicesOutside(int32_t typeCode) { return {-1, SlotCount(typeCode), INT32_MIN, INT32_MAX}; }

const std::set<int32_t> kDocumentedStatuses = {PELM_SUCCESS, PELM_ERR_NOMEM, PELM_ERR_NODEVICE, PELM_ERR_QUEUE,
                                               PELM_ERR_IO,  PELM_ERR_PARAM, PELM_ERR_UNSUPPORTED};
// The getters of one variable that skip a null or unwritable one and succeed.
const std::vector<std::string> kGettersThatSkip = {"PelmWarning_GetControlVals", "PelmAutopilot2_GetIndicators"};
const std::vector<uint32_t> kHostileNumbers = {0, 7, 8, 0x100, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF};

class BadInputSweep : public LibraryTest {
 protected:
  void PlugEveryModel() {
    for (const ModelDescriptor& model : ModelsInProbeOrder()) Plug(model.productId, 1, kRoomyCaps);
    PelmDev_Init(nullptr);
  }
};

TEST_F(BadInputSweep, SweepCoversEveryExport) {
  std::set<std::string> swept(kCoreExports.begin(), kCoreExports.end());
  for (const ModelExport& entry : Exports().operations) swept.insert(entry.name);
  for (const CountExport& entry : Exports().counts) swept.insert(entry.name);

  std::ifstream list(PELM_EXPECTED_EXPORTS);
  std::set<std::string> expected;
  for (std::string name; std::getline(list, name);) {
    if (!name.empty()) expected.insert(name);
  }
  EXPECT_EQ(expected.size(), 259u);
  EXPECT_EQ(swept, expected);
}

// Every model operation, on a library with one panel of each model so that a
// stray index lands on a live device and writes. Indices outside the slot
// table and empty slots are refused without writing. On the present device,
// null and read-only variables, hostile texts and numbers give a documented
// status, never a crash or a write into read-only memory.
TEST_F(BadInputSweep, ModelOperationsRefuseBadIndicesAndSurviveHostileArguments) {
  PlugEveryModel();
  for (const ModelExport& entry : Exports().operations) {
    auto expectRefused = [&entry](int32_t index, int32_t status) {
      Arguments arguments(PointerMode::Canary, 1);
      EXPECT_EQ(entry.call(index, arguments), status) << entry.name << " index " << index;
      EXPECT_TRUE(arguments.CanariesIntact()) << entry.name << " index " << index;
    };
    for (int32_t index : IndicesOutside(entry.typeCode)) expectRefused(index, PELM_ERR_INDEX);
    for (int32_t index : {1, SlotCount(entry.typeCode) - 1}) expectRefused(index, PELM_ERR_NODEVICE);

    // A getter of one variable refuses one it cannot write, unless it is one of
    // those that skip it.
    const bool skips = std::any_of(kGettersThatSkip.begin(), kGettersThatSkip.end(),
                                   [&](const std::string& getter) { return entry.name.starts_with(getter); });
    for (PointerMode mode : {PointerMode::Null, PointerMode::Unwritable, PointerMode::Canary}) {
      for (uint32_t number : kHostileNumbers) {
        Arguments arguments(mode, number);
        const int32_t status = entry.call(0, arguments);
        const std::string call = entry.name + " mode " + std::to_string(static_cast<int>(mode)) + " number " +
                                 std::to_string(number);
        EXPECT_TRUE(kDocumentedStatuses.contains(status)) << call;
        if (entry.outputVariables == 1 && mode != PointerMode::Canary) {
          EXPECT_EQ(status, skips ? PELM_SUCCESS : PELM_ERR_PARAM) << call;
        }
      }
    }
  }
  for (const CountExport& entry : Exports().counts) EXPECT_EQ(entry.call(), 1u) << entry.name;
}

// Getters of several variables that require all of them, or all but the
// first, refuse one that is partly read-only without writing the others.
TEST_F(BadInputSweep, GettersOfSeveralRequiredVariablesRefuseAnUnwritableOne) {
  PlugEveryModel();
  GuardedMemory guarded;
  ASSERT_TRUE(guarded.Mapped());
  uint32_t count = kCanaryByte;
  EXPECT_EQ(PelmKeypad_GetKeycodes(0, reinterpret_cast<uint8_t*>(guarded.LastByteReadOnly<uint32_t>()), &count), PELM_ERR_PARAM);
  EXPECT_EQ(count, kCanaryByte);

  uint8_t inputs[6];
  std::memset(inputs, kCanaryByte, sizeof inputs);
  EXPECT_EQ(PelmIoBoard_GetSwitchVals(0, &inputs[0], &inputs[1], &inputs[2], &inputs[3], &inputs[4], &inputs[5],
                                      guarded.ReadOnly<uint8_t>()),
            PELM_ERR_PARAM);
  EXPECT_TRUE(std::all_of(inputs, inputs + sizeof inputs, [](uint8_t byte) { return byte == kCanaryByte; }));
}

TEST_F(BadInputSweep, DeviceInfoQueriesRefuseBadModelsIndicesAndRecords) {
  PlugEveryModel();
  using Query = int32_t (*)(int32_t, int32_t, PelmDevInfo*);
  GuardedMemory guarded;
  ASSERT_TRUE(guarded.Mapped());
  for (Query query : {&PelmDev_GetDeviceInfo, &PelmDev_GetDeviceInfo_stdcall}) {
    PelmDevInfo info;
    std::memset(&info, kCanaryByte, sizeof info);
    for (int32_t noModel : {0, 16, 20, -1, INT32_MIN, INT32_MAX}) {
      EXPECT_EQ(query(noModel, 0, &info), PELM_SUCCESS) << noModel;
    }
    for (int32_t index : IndicesOutside(PELM_MODEL_BUTTONS)) {
      EXPECT_EQ(query(PELM_MODEL_BUTTONS, index, &info), PELM_ERR_INDEX) << index;
    }
    EXPECT_EQ(query(PELM_MODEL_BUTTONS, 1, &info), PELM_ERR_NODEVICE);
    const auto* bytes = reinterpret_cast<const uint8_t*>(&info);
    EXPECT_TRUE(std::all_of(bytes, bytes + sizeof info, [](uint8_t byte) { return byte == kCanaryByte; }));

    EXPECT_EQ(query(PELM_MODEL_BUTTONS, 0, nullptr), PELM_ERR_PARAM);
    EXPECT_EQ(query(PELM_MODEL_BUTTONS, 0, guarded.ReadOnly<PelmDevInfo>()), PELM_ERR_PARAM);
    auto* partly = guarded.LastByteReadOnly<PelmDevInfo>();
    std::memset(partly, kCanaryByte, sizeof(PelmDevInfo) - 1);
    EXPECT_EQ(query(PELM_MODEL_BUTTONS, 0, partly), PELM_ERR_PARAM);
    EXPECT_EQ(static_cast<uint8_t>(partly->devicePath[0]), kCanaryByte);
  }

  PelmDevInfo2 info2;
  std::memset(&info2, kCanaryByte, sizeof info2);
  for (uint16_t wrongSize : {0, 330, 332, 0xFFFF}) {
    info2.structSize = wrongSize;
    EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_BUTTONS, 0, &info2), PELM_SUCCESS);
    EXPECT_EQ(static_cast<uint8_t>(info2.devicePath[0]), kCanaryByte) << wrongSize;
  }
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_BUTTONS, 0, nullptr), PELM_ERR_PARAM);
  EXPECT_EQ(PelmDev_GetDeviceInfo2(PELM_MODEL_BUTTONS, -1, &info2), PELM_ERR_INDEX);
}

}  // namespace
}  // namespace pelm::test
