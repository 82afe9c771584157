// The presence query behind PelmDevExt_ListPresentPanels (core/pelm_dev_ext.h).
// The Windows DLL exports only its table of 259 functions, so nothing asks it
// there; these answers only complete the platform interface.

#include <windows.h>

#include "platform/platform.h"

namespace pelm::platform {

std::vector<PresentInterface> ListPresentInterfaces() { return {}; }

OpenAttempt TryOpen(const char*) { return {OpenFailure::Other, ERROR_NOT_SUPPORTED}; }

}  // namespace pelm::platform
