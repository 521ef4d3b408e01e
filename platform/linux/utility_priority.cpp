#include "platform/linux/utility_priority.h"

#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

namespace dunmere {

namespace {

constexpr int kCallingThread = 0;

void lowerProcessorPriority() {
  constexpr int kNice = 10;
  errno = 0;
  const int current = ::getpriority(PRIO_PROCESS, kCallingThread);
  if (errno == 0 && current < kNice) ::setpriority(PRIO_PROCESS, kCallingThread, kNice);
}

/// The kernel's numbers, from ioprio_set(2): some versions of <linux/ioprio.h> do not compile as C++.
constexpr int kWhoProcess = 1;
constexpr long kClassBestEffort = 2;
constexpr long kClassIdle = 3;
constexpr int kClassShift = 13;

void lowerDiskPriority() {
  const long current = ::syscall(SYS_ioprio_get, kWhoProcess, kCallingThread);
  if (current >= 0 && current >> kClassShift == kClassIdle) return;
  constexpr long kLowest = 7;
  ::syscall(SYS_ioprio_set, kWhoProcess, kCallingThread, kClassBestEffort << kClassShift | kLowest);
}

}  // namespace

void lowerThreadPriority() noexcept {
  lowerProcessorPriority();
  lowerDiskPriority();
}

}  // namespace dunmere
