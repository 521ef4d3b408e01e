#include <mach/mach.h>

#include "bench/peak_memory.h"

namespace dunmere {

std::optional<std::int64_t> peakRssBytes() {
  mach_task_basic_info info{};
  mach_msg_type_number_t count = MACH_TASK_BASIC_INFO_COUNT;
  auto* const words = reinterpret_cast<task_info_t>(&info);
  if (::task_info(mach_task_self(), MACH_TASK_BASIC_INFO, words, &count) != KERN_SUCCESS) return std::nullopt;
  return static_cast<std::int64_t>(info.resident_size_max);
}

}  // namespace dunmere
