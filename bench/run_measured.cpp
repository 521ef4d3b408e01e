// run_measured: runs one command with its output thrown away and prints its times and peak memory as JSON.
//
// A program of its own because the kernel lets a process start with the peak of the process that started it: measured
// from a script, no program would seem smaller than the script's interpreter. This one stays below two megabytes.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <cstdio>
#include <cstring>
#include <ctime>

extern char** environ;

namespace {

double nowSeconds() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9;
}

double secondsOf(const timeval& time) {
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
}

int spawnSilently(pid_t& child, char** command) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
  const int error = posix_spawnp(&child, command[0], &actions, nullptr, command, environ);
  posix_spawn_file_actions_destroy(&actions);
  return error;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fputs("usage: run_measured COMMAND [ARGUMENT]...\n", stderr);
    return 2;
  }
  const double start = nowSeconds();
  pid_t child = 0;
  if (const int error = spawnSilently(child, argv + 1); error != 0) {
    std::fprintf(stderr, "run_measured: cannot run %s: %s\n", argv[1], std::strerror(error));
    return 1;
  }
  int status = 0;
  rusage usage{};
  if (wait4(child, &status, 0, &usage) != child) {
    std::perror("run_measured: wait4");
    return 1;
  }
  const double seconds = nowSeconds() - start;
  std::printf("{\"seconds\":%.6f,\"cpuSeconds\":%.6f,\"peakRssBytes\":%ld,\"ok\":%s}\n", seconds,
              secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime), usage.ru_maxrss * 1024L,
              WIFEXITED(status) && WEXITSTATUS(status) == 0 ? "true" : "false");
  return 0;
}
