#pragma once
// Reads the record an input callback hands over, per model, into named values
// and a line of text.

#include <cstdint>
#include <string>
#include <vector>

namespace pelmctl {

struct NamedValue {
  std::string name;
  int64_t value;
  bool bits;  // a set of switch contacts or lamps: shown in hex
};

// The values in the record of a model's input callback, in record order; empty
// for a type code that names no model.
std::vector<NamedValue> DecodeInputRecord(int32_t modelType, const void* record);

// "dial1=3 dial2=-1 switches=0x05"
std::string FormatValues(const std::vector<NamedValue>& values);

}  // namespace pelmctl
