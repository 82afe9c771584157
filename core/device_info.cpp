// The device information queries: which device sits in a slot, by path,
// version, serial number and output report length. They read what the device
// object learnt at open; no device transfer, no lock.

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>

#include "channel/hid_channel.h"
#include "core/core_exports.h"
#include "core/model_table.h"
#include "core/slot_tables.h"
#include "platform/platform.h"

// The records are the host's: their layout is part of the interface.
static_assert(sizeof(PelmDevInfo) == 262);
static_assert(offsetof(PelmDevInfo, devicePath) == 0);
static_assert(offsetof(PelmDevInfo, versionNumber) == 260);
static_assert(sizeof(PelmDevInfo2) == 331);
static_assert(offsetof(PelmDevInfo2, structSize) == 0);
static_assert(offsetof(PelmDevInfo2, devicePath) == 2);
static_assert(offsetof(PelmDevInfo2, versionNumber) == 262);
static_assert(offsetof(PelmDevInfo2, serialNumber) == 264);
static_assert(offsetof(PelmDevInfo2, outputReportLength) == 329);

namespace pelm::exports {
namespace {

// The device object in a slot, or the status that says why there is none.
struct SlotLookup {
  int32_t status = PELM_SUCCESS;
  const ModelDescriptor* model = nullptr;
  cHidChannel* object = nullptr;
};

// An unknown type code is no error: the lookup succeeds with no object. The
// connected flag is not looked at, so an unplugged device is still described.
SlotLookup FindDevice(int32_t modelType, int32_t deviceIndex) {
  SlotLookup lookup;
  lookup.model = ModelByTypeCode(modelType);
  if (lookup.model == nullptr) return lookup;
  if (deviceIndex < 0 || deviceIndex >= lookup.model->slotCount) {
    lookup.status = PELM_ERR_INDEX;
    return lookup;
  }
  lookup.object = ReadSlot(*lookup.model, deviceIndex);
  if (lookup.object == nullptr) lookup.status = PELM_ERR_NODEVICE;
  return lookup;
}

// The host's IsBadWritePtr test: writing the record's own bytes back succeeds
// only if all of it is writable.
template <class Record>
bool HostCanWrite(Record* record) {
  return platform::WriteToHostMemory(record, record, sizeof(Record));
}

// Copies `text` with its terminator into a host field, cut to fit; the bytes
// after the terminator keep what the host put there.
template <std::size_t N>
void CopyString(char (&field)[N], const std::string& text) {
  const std::size_t length = std::min(text.size(), N - 1);
  std::memcpy(field, text.data(), length);
  field[length] = '\0';
}

}  // namespace

int32_t PelmDev_GetDeviceInfo(int32_t modelType, int32_t deviceIndex, PelmDevInfo* info) {
  const SlotLookup lookup = FindDevice(modelType, deviceIndex);
  if (lookup.object == nullptr) return lookup.status;
  if (!HostCanWrite(info)) return PELM_ERR_PARAM;
  CopyString(info->devicePath, lookup.object->DevicePath());
  info->versionNumber = lookup.object->Attributes().versionNumber;
  return PELM_SUCCESS;
}

int32_t PelmDev_GetDeviceInfo2(int32_t modelType, int32_t deviceIndex, PelmDevInfo2* info) {
  const SlotLookup lookup = FindDevice(modelType, deviceIndex);
  if (lookup.object == nullptr) return lookup.status;
  if (!HostCanWrite(info)) return PELM_ERR_PARAM;
  if (info->structSize != sizeof(PelmDevInfo2)) return PELM_SUCCESS;
  CopyString(info->devicePath, lookup.object->DevicePath());
  CopyString(info->serialNumber, lookup.object->SerialNumber());
  info->versionNumber = lookup.object->Attributes().versionNumber;
  if (lookup.model->kind == ModelKind::ClassBased) {
    info->outputReportLength = lookup.object->Caps().outputReportByteLength;
  }
  return PELM_SUCCESS;
}

}  // namespace pelm::exports
