#pragma once
// The one place where an exception stops on its way to the host: every export
// runs its implementation through Guarded, so that what cannot be done (no
// memory, no thread) comes back as the export's documented failure instead of
// ending the host's process.

#include <cstdint>
#include <type_traits>

#include "core/pelm_dev.h"

namespace pelm {

// A model operation's status says what failed; the core's functions and the
// device counts say 0 (nothing stored, nothing counted).
template <class Ret>
inline constexpr Ret kExportFailure = std::is_signed_v<Ret> ? Ret{PELM_ERR_NOMEM} : Ret{0};

template <class Ret, class Call>
Ret Guarded(Ret failure, Call&& call) noexcept {
  try {
    return call();
  } catch (...) {
    return failure;
  }
}

}  // namespace pelm
