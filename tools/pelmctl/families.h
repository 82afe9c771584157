#pragma once
// The eighteen panel families as the command line names them: the name a user
// types, the model type code the library reports, and how to count its slots.

#include <cstdint>
#include <span>
#include <string_view>

namespace pelmctl {

struct Family {
  std::string_view name;         // as typed on the command line, e.g. "radio"
  std::string_view title;        // for people, e.g. "Radio panel"
  int32_t modelType;             // PELM_MODEL_*
  uint32_t (*connectedCount)();  // the family's GetNumDevices export
};

std::span<const Family> AllFamilies();
const Family* FamilyByName(std::string_view name);
const Family* FamilyByModelType(int32_t modelType);

}  // namespace pelmctl
