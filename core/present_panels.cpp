#include "core/present_panels.h"

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "channel/hid_channel.h"
#include "core/model_table.h"
#include "core/slot_tables.h"
#include "platform/platform.h"

// The record is the host's: its layout is part of the interface.
static_assert(offsetof(PelmDevExt_PresentPanel, devicePath) == 20);
static_assert(offsetof(PelmDevExt_PresentPanel, node) == 280);
static_assert(sizeof(PelmDevExt_PresentPanel) == 344);

namespace pelm::core {
namespace {

int32_t OpenStatusOf(platform::OpenFailure failure) {
  switch (failure) {
    case platform::OpenFailure::None:
      return PELMEXT_OPEN_OK;
    case platform::OpenFailure::PermissionDenied:
      return PELMEXT_OPEN_PERMISSION_DENIED;
    case platform::OpenFailure::NotPresent:
      return PELMEXT_OPEN_GONE;
    case platform::OpenFailure::Other:
      break;
  }
  return PELMEXT_OPEN_FAILED;
}

// Copies `text` into a fixed field, cut to fit, NUL-terminated.
template <std::size_t N>
void CopyField(char (&field)[N], const std::string& text) {
  const std::size_t length = std::min(text.size(), N - 1);
  std::memcpy(field, text.data(), length);
  field[length] = '\0';
}

PelmDevExt_PresentPanel Describe(const ModelDescriptor& model, const platform::PresentInterface& present) {
  PelmDevExt_PresentPanel panel{};
  panel.modelType = model.typeCode;
  panel.deviceIndex = SlotWithPath(model, present.path.c_str());
  cHidChannel* object = panel.deviceIndex >= 0 ? ReadSlot(model, panel.deviceIndex) : nullptr;
  panel.openInSlot = object != nullptr && object->IsConnected() && object->MainHandle() != nullptr ? 1 : 0;
  if (panel.openInSlot == 0) {
    const platform::OpenAttempt attempt = platform::TryOpen(present.path.c_str());
    panel.openStatus = OpenStatusOf(attempt.failure);
    panel.osError = attempt.failure == platform::OpenFailure::None ? 0 : attempt.osError;
  }
  CopyField(panel.devicePath, UpperCasePath(present.path.c_str()));
  CopyField(panel.node, present.node);
  return panel;
}

}  // namespace

int32_t ListPresentPanels(PelmDevExt_PresentPanel* panels, uint32_t capacity, uint32_t* count) {
  // Writing its own bytes back tells whether the host's count is writable.
  if (!platform::WriteToHostMemory(count, count, sizeof *count)) return PELM_ERR_PARAM;
  std::vector<PelmDevExt_PresentPanel> found;
  for (const platform::PresentInterface& present : platform::ListPresentInterfaces()) {
    const ModelDescriptor* model = ModelByProductId(present.productId);
    if (present.vendorId != kVendorId || model == nullptr || present.path.size() > kMaxDevicePathLength) continue;
    found.push_back(Describe(*model, present));
  }
  const std::size_t written = std::min<std::size_t>(found.size(), capacity);
  if (written > 0 && !platform::WriteToHostMemory(panels, found.data(), written * sizeof(PelmDevExt_PresentPanel))) {
    return PELM_ERR_PARAM;
  }
  const auto present = static_cast<uint32_t>(found.size());
  platform::WriteToHostMemory(count, &present, sizeof present);
  return PELM_SUCCESS;
}

}  // namespace pelm::core
