#pragma once
// Which panels are present, open or not, and why not: the query behind
// PelmDevExt_ListPresentPanels.

#include <cstdint>

#include "core/pelm_dev_ext.h"

namespace pelm::core {

int32_t ListPresentPanels(PelmDevExt_PresentPanel* panels, uint32_t capacity, uint32_t* count);

}  // namespace pelm::core
