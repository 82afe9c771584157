#pragma once
// Every panel model as the VM tests drive it, and the device path the library
// gives a panel on a physical path.

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <string>

#include "core/pelm_dev.h"
#include "tests/models_under_test.h"

namespace pelm::vm {

using test::kModels;
using test::ModelUnderTest;

inline const ModelUnderTest& Model(int32_t typeCode) {
  return *std::find_if(std::begin(kModels), std::end(kModels),
                       [typeCode](const ModelUnderTest& model) { return model.typeCode == typeCode; });
}

// "HIDRAW:VVVV:PPPP:" and the physical path, upper case.
inline std::string DevicePathFor(uint16_t vendorId, uint16_t productId, const std::string& phys) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "HIDRAW:%04X:%04X:", vendorId, productId);
  std::string path = prefix + phys;
  for (char& c : path) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return path;
}

}  // namespace pelm::vm
