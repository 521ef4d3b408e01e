#include <cstdlib>
#include <fstream>
#include <string>

#include "bench/peak_memory.h"

namespace dunmere {

std::optional<std::int64_t> peakRssBytes() {
  // Not getrusage(): its ru_maxrss counts the program that started this one.
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmHWM:")) return std::strtoll(line.c_str() + 6, nullptr, 10) * 1024;
  }
  return std::nullopt;
}

}  // namespace dunmere
