// The set of exported names. The export table generates every export, so the
// names are taken from the table itself and compared with the documented list:
// 133 in the default form and 126 _stdcall twins.

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
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

// The documented list, one name a line; the built libraries' export tables are
// checked against the same file.
std::set<std::string> ExpectedNames() {
  std::ifstream list(PELM_EXPECTED_EXPORTS);
  std::set<std::string> names;
  for (std::string name; std::getline(list, name);) {
    if (!name.empty()) names.insert(name);
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
  const std::set<std::string> present(actual.begin(), actual.end());
  for (const std::string& name : expected) EXPECT_TRUE(present.contains(name)) << name << " is missing";
}

}  // namespace
}  // namespace pelm::test
