#pragma once
// The eighteen device models: type code, export family, product ID, slot count,
// kind and how to create a device object, listed in probe order. Enumeration,
// the hot-plug lookup and probe, and shutdown all walk this one list.

#include <array>
#include <cstdint>

namespace pelm {

class cHidChannel;

// The vendor ID every model shares (a build option).
inline constexpr uint16_t kVendorId = PELM_VENDOR_ID;

// Type codes run 1 to 19; 16 names no model.
inline constexpr int32_t kLowestTypeCode = 1;
inline constexpr int32_t kHighestTypeCode = 19;

enum class ModelKind {
  FunctionBased,  // a device record opened as soon as it is created
  ClassBased,     // a cPelmHidDevice object opened after it is placed in its slot
};

struct ModelDescriptor {
  int32_t typeCode;
  const char* family;
  uint16_t productId;
  int32_t slotCount;
  ModelKind kind;
  // Function-based: creates and opens the record. Class-based: constructs the
  // object without I/O. Null when memory is short or the path is too long.
  cHidChannel* (*create)(const char* path);
};

inline constexpr std::size_t kModelCount = 18;

const std::array<ModelDescriptor, kModelCount>& ModelsInProbeOrder();
// Null for a code that names no model.
const ModelDescriptor* ModelByTypeCode(int32_t typeCode);
const ModelDescriptor* ModelByProductId(uint16_t productId);

}  // namespace pelm
