// on_slow_share: starts a program that finds a folder's files on a slow share. Only that program sees it.
//
// usage: on_slow_share [--serial] [--no-kinds] MICROSECONDS FOLDER MOUNT_POINT COMMAND...
//
// Each answer of the share takes so many microseconds; --serial answers one question after the other, --no-kinds leaves
// out what a folder's entries are. Tells at the end how many questions there were.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <string>
#include <string_view>

#include "tests/support/own_mounts.h"
#include "tests/support/slow_share.h"

namespace {

constexpr int kBadUsage = 2;
constexpr int kNotStarted = 127;

int runOnShare(const dunmere::test::SlowShareOptions& options, char** arguments) {
  dunmere::test::enterPrivateMounts();
  const std::string mountPoint = arguments[1];
  const dunmere::test::SlowShare share(arguments[0], mountPoint, mountPoint + "/node", options);
  const pid_t program = ::fork();
  if (program == 0) {
    ::execvp(arguments[2], arguments + 2);
    std::perror(arguments[2]);
    ::_exit(kNotStarted);
  }
  int status = 0;
  ::waitpid(program, &status, 0);
  std::fprintf(stderr, "on_slow_share: %zu questions\n", share.questions());
  return WIFEXITED(status) ? WEXITSTATUS(status) : kNotStarted;
}

}  // namespace

int main(int, char** arguments) try {
  dunmere::test::SlowShareOptions options;
  for (++arguments; *arguments != nullptr && std::string_view(*arguments).starts_with("--"); ++arguments) {
    if (std::string_view(*arguments) == "--serial") options.isSerial = true;
    if (std::string_view(*arguments) == "--no-kinds") options.tellsKinds = false;
  }
  for (int word = 0; word < 4; ++word) {
    if (arguments[word] != nullptr) continue;
    std::fprintf(stderr, "usage: on_slow_share [--serial] [--no-kinds] MICROSECONDS FOLDER MOUNT_POINT COMMAND...\n");
    return kBadUsage;
  }
  options.delay = std::chrono::microseconds(std::stol(*arguments));
  return runOnShare(options, arguments + 1);
} catch (const std::exception& error) {
  std::fprintf(stderr, "on_slow_share: %s\n", error.what());
  return kNotStarted;
}
