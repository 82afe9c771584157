#pragma once
// The outermost frame of every thread the library starts. An exception that
// reaches it (no memory, or a host callback that throws) ends that thread
// alone: its owner still joins it, and the host's process goes on.

#include <utility>

namespace pelm {

template <class Body>
void RunThreadBody(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
  } catch (...) {
    // Nothing more to do on this thread; its owner's stop finds it ended.
  }
}

}  // namespace pelm
