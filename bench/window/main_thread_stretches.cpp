#include "bench/window/main_thread_stretches.h"

#include <dlfcn.h>
#include <poll.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>

namespace dunmere::bench {
namespace {

using Clock = std::chrono::steady_clock;

Clock::time_point begin;
std::chrono::nanoseconds longest{0};

bool isMainThread() {
  static const pid_t process = ::getpid();
  return ::syscall(SYS_gettid) == process;
}

/// Around a wait for events that is not over at once.
template <typename Wait>
int wait(bool mayBlock, Wait forEvents) {
  const bool endsStretch = mayBlock && isMainThread();
  if (endsStretch) longest = std::max<std::chrono::nanoseconds>(longest, Clock::now() - begin);
  const int result = forEvents();
  if (endsStretch) begin = Clock::now();
  return result;
}

template <typename Function>
Function realFunction(const char* name) {
  return reinterpret_cast<Function>(::dlsym(RTLD_NEXT, name));
}

}  // namespace

void startStretches() {
  begin = Clock::now();
  longest = {};
}

std::chrono::nanoseconds longestStretch() {
  return longest;
}

}  // namespace dunmere::bench

// Qt's event loops wait in one of these two, which stand before those of the C library.

extern "C" int poll(pollfd* files, nfds_t count, int milliseconds) {
  static const auto real = dunmere::bench::realFunction<int (*)(pollfd*, nfds_t, int)>("poll");
  return dunmere::bench::wait(milliseconds != 0, [&] { return real(files, count, milliseconds); });
}

extern "C" int ppoll(pollfd* files, nfds_t count, const timespec* span, const sigset_t* signals) {
  static const auto real =
      dunmere::bench::realFunction<int (*)(pollfd*, nfds_t, const timespec*, const sigset_t*)>("ppoll");
  const bool mayBlock = span == nullptr || span->tv_sec != 0 || span->tv_nsec != 0;
  return dunmere::bench::wait(mayBlock, [&] { return real(files, count, span, signals); });
}
