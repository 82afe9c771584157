#pragma once
// How the model table creates each model's device object. A model whose file
// has not been written yet has no factory, and its devices are not opened.

#include "channel/device_record.h"
#include "models/model_families.h"

namespace pelm::factories {

using Factory = cHidChannel* (*)(const char* path);

// Function-based: creates and opens the record.
template <class Record>
cHidChannel* OpenRecord(const char* path) {
  return CreateRecord<Record>(path);
}

// Class-based: constructs the object; the owner opens it once it is placed.
template <class Device>
cHidChannel* ConstructDevice(const char* path) {
  if (std::char_traits<char>::length(path) > kMaxDevicePathLength) return nullptr;
  return new (std::nothrow) Device(path);
}

inline constexpr Factory kAlpha = OpenRecord<cPelmAlpha>;
inline constexpr Factory kAlpha2 = OpenRecord<cPelmAlpha2>;
inline constexpr Factory kButtons = OpenRecord<cPelmButtons>;
inline constexpr Factory kKnobs = OpenRecord<cPelmKnobs>;
inline constexpr Factory kWarning = ConstructDevice<cPelmWarning>;
inline constexpr Factory kToggles = OpenRecord<cPelmToggles>;
inline constexpr Factory kGear = OpenRecord<cPelmGear>;
inline constexpr Factory kGear2 = ConstructDevice<cPelmGear2>;
inline constexpr Factory kRadio = OpenRecord<cPelmRadio>;
inline constexpr Factory kAutopilot = OpenRecord<cPelmAutopilot>;
inline constexpr Factory kAutopilot2 = OpenRecord<cPelmAutopilot2>;
inline constexpr Factory kMapCtl = OpenRecord<cPelmMapCtl>;
inline constexpr Factory kSquawk = OpenRecord<cPelmSquawk>;
inline constexpr Factory kEngineCtl = OpenRecord<cPelmEngineCtl>;
inline constexpr Factory kEngineStart = ConstructDevice<cPelmEngineStart>;
inline constexpr Factory kKeypad = OpenRecord<cPelmKeypad>;
inline constexpr Factory kThrottle = OpenRecord<cPelmThrottle>;
inline constexpr Factory kIoBoard = ConstructDevice<cPelmIoBoard>;

}  // namespace pelm::factories
