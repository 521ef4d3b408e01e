#include "engine/listing/in_parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <vector>

namespace dunmere {

void inParallel(std::size_t count, const std::function<void(std::size_t)>& work, std::size_t threads) {
  std::atomic<std::size_t> next = 0;
  std::mutex mutex;
  std::exception_ptr fault;  // under the mutex
  const auto takeTurns = [&] {
    try {
      for (std::size_t number = next++; number < count; number = next++) work(number);
    } catch (...) {
      next = count;
      const std::lock_guard lock(mutex);
      fault = std::current_exception();
    }
  };
  std::vector<std::thread> others;
  try {
    for (std::size_t thread = 1; thread < std::min(count, threads); ++thread) others.emplace_back(takeTurns);
  } catch (const std::exception&) {  // no thread, or no memory for one: those that run and this one do it all
  }
  takeTurns();
  for (std::thread& other : others) other.join();
  if (fault) std::rethrow_exception(fault);
}

}  // namespace dunmere
