#pragma once
// The outermost frame of every thread the library starts (and of every call
// into the host that a thread makes on its own behalf). An exception that
// reaches it (no memory, or a host callback that throws) ends that body alone:
// the thread's owner still joins it, and the host's process goes on.

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
