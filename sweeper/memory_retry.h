// untilMemoryAllows: for what must be done although memory is short.
#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace dunmere {

/// Repeats `work` until it does not throw std::bad_alloc; it must change nothing when it throws. For what must not get
/// lost, such as the error that memory is short.
template <typename Work>
void untilMemoryAllows(const Work& work) {
  for (;;) {
    try {
      work();
      return;
    } catch (const std::bad_alloc&) {
      std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
  }
}

}  // namespace dunmere
