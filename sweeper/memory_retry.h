// untilMemoryAllows: for what must be done although memory is short.
#pragma once

#include <chrono>
#include <new>
#include <thread>

namespace dunmere {

/// Does `work`, again and again while it throws std::bad_alloc; it must then have changed nothing. For what nobody else
/// would do or tell, which may well be that memory is short.
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
