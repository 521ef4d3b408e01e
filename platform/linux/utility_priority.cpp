#include "platform/linux/utility_priority.h"

#include <linux/ioprio.h>
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

void lowerDiskPriority() {
  const long current = ::syscall(SYS_ioprio_get, IOPRIO_WHO_PROCESS, kCallingThread);
  if (current >= 0 && IOPRIO_PRIO_CLASS(static_cast<unsigned long>(current)) == IOPRIO_CLASS_IDLE) return;
  constexpr int kLowest = 7;
  ::syscall(SYS_ioprio_set, IOPRIO_WHO_PROCESS, kCallingThread, IOPRIO_PRIO_VALUE(IOPRIO_CLASS_BE, kLowest));
}

}  // namespace

void lowerThreadPriority() noexcept {
  lowerProcessorPriority();
  lowerDiskPriority();
}

}  // namespace dunmere
