// inParallel: has many threads do independent pieces of work for one that waits.
#pragma once

#include <cstddef>
#include <functional>
#include <thread>

namespace dunmere {

/// Calls `work` once for each number below `count`, on up to `threads` threads, the caller's among them, and returns
/// when all is done. Threads that cannot be started are simply missing. When `work` throws, what has not been begun is
/// left undone and one of the exceptions is thrown on.
void inParallel(std::size_t count, const std::function<void(std::size_t number)>& work,
                std::size_t threads = std::thread::hardware_concurrency());

}  // namespace dunmere
