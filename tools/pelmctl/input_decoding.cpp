#include "tools/pelmctl/input_decoding.h"

#include <cstdio>
#include <cstring>

#include "core/pelm_dev.h"

namespace pelmctl {
namespace {

enum class FieldType { I16, U8, Bits8, Bits16, Bits32 };

struct Field {
  const char* name;
  FieldType type;
  int count;  // consecutive values; named name1, name2... when more than one
};

struct RecordLayout {
  int32_t modelType;
  std::vector<Field> fields;
};

using enum FieldType;

// The input callback records, packed, in the host's byte order.
const std::vector<RecordLayout>& Layouts() {
  static const std::vector<RecordLayout> layouts = {
      {PELM_MODEL_ALPHA, {{"dial", I16, 2}}},
      {PELM_MODEL_ALPHA2, {{"dial", I16, 2}, {"switches", Bits8, 1}}},
      {PELM_MODEL_BUTTONS, {{"switches", Bits8, 1}}},
      {PELM_MODEL_TOGGLES, {{"switches", Bits8, 1}}},
      {PELM_MODEL_GEAR, {{"value", I16, 1}, {"control", Bits8, 1}}},
      {PELM_MODEL_GEAR2, {{"value", I16, 3}, {"control", Bits8, 1}}},
      {PELM_MODEL_RADIO, {{"dial", I16, 2}, {"switches", Bits8, 1}}},
      {PELM_MODEL_AUTOPILOT, {{"dial", I16, 5}, {"switches", Bits8, 2}}},
      {PELM_MODEL_AUTOPILOT2, {{"dial", I16, 6}, {"switches", Bits32, 1}}},
      {PELM_MODEL_KNOBS, {{"knob", I16, 4}, {"switches", Bits8, 1}}},
      {PELM_MODEL_THROTTLE, {{"lever", U8, 6}, {"switches", Bits8, 1}}},
      {PELM_MODEL_SQUAWK, {{"dial", I16, 1}, {"switches", Bits8, 1}}},
      {PELM_MODEL_MAPCTL, {{"dial", I16, 2}, {"switches", Bits16, 1}, {"selectors", Bits8, 1}}},
      {PELM_MODEL_ENGINECTL, {{"control", U8, 4}, {"switches", Bits16, 1}}},
      {PELM_MODEL_KEYPAD, {{"key", U8, 1}}},
      {PELM_MODEL_ENGINESTART, {{"selector", U8, 3}}},
      {PELM_MODEL_WARNING, {{"control", Bits8, 1}}},
      {PELM_MODEL_IOBOARD, {{"input", Bits8, 7}}},
  };
  return layouts;
}

template <class Value>
int64_t Read(const uint8_t*& cursor) {
  Value value;
  std::memcpy(&value, cursor, sizeof value);
  cursor += sizeof value;
  return static_cast<int64_t>(value);
}

int64_t ReadField(FieldType type, const uint8_t*& cursor) {
  switch (type) {
    case I16: return Read<int16_t>(cursor);
    case U8:
    case Bits8: return Read<uint8_t>(cursor);
    case Bits16: return Read<uint16_t>(cursor);
    case Bits32: return Read<uint32_t>(cursor);
  }
  return 0;
}

bool IsBits(FieldType type) { return type == Bits8 || type == Bits16 || type == Bits32; }

}  // namespace

std::vector<NamedValue> DecodeInputRecord(int32_t modelType, const void* record) {
  std::vector<NamedValue> values;
  for (const RecordLayout& layout : Layouts()) {
    if (layout.modelType != modelType) continue;
    const auto* cursor = static_cast<const uint8_t*>(record);
    for (const Field& field : layout.fields) {
      for (int i = 0; i < field.count; ++i) {
        std::string name = field.name;
        if (field.count > 1) name += std::to_string(i + 1);
        values.push_back({name, ReadField(field.type, cursor), IsBits(field.type)});
      }
    }
  }
  return values;
}

std::string FormatValues(const std::vector<NamedValue>& values) {
  std::string text;
  for (const auto& [name, value, bits] : values) {
    if (!text.empty()) text += ' ';
    char number[24];
    if (bits) {
      std::snprintf(number, sizeof number, "0x%02llX", static_cast<unsigned long long>(value));
    } else {
      std::snprintf(number, sizeof number, "%lld", static_cast<long long>(value));
    }
    text += name + "=" + number;
  }
  return text;
}

}  // namespace pelmctl
