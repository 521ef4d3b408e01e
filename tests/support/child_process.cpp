#include "tests/support/child_process.h"

#include <fcntl.h>
#include <grp.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <exception>
#include <system_error>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

namespace {

void check(bool succeeded, const char* what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

int exitCodeOf(const std::function<int()>& work) {
  try {
    const int code = work();
    return code == 0 && ::testing::Test::HasFailure() ? 1 : code;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "Escaped exception: %s\n", error.what());
    return 2;
  }
}

void writeText(const char* path, const std::string& text) {
  const UniqueDescriptor file(::open(path, O_WRONLY | O_CLOEXEC));
  check(file && ::write(file.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size()), path);
}

/// Root may have mounts of its own; anybody else has to become root of a user namespace first.
void leaveMounts() {
  const uid_t user = ::geteuid();
  const gid_t group = ::getegid();
  check(::unshare(user == 0 ? CLONE_NEWNS : CLONE_NEWNS | CLONE_NEWUSER) == 0, "unshare");
  if (user != 0) {
    writeText("/proc/self/setgroups", "deny");
    writeText("/proc/self/uid_map", "0 " + std::to_string(user) + " 1");
    writeText("/proc/self/gid_map", "0 " + std::to_string(group) + " 1");
  }
  check(::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "making the mounts private");
}

std::string readAll(int descriptor) {
  std::string text;
  char buffer[4096];
  for (ssize_t length; (length = ::read(descriptor, buffer, sizeof buffer)) != 0;) {
    if (length > 0) text.append(buffer, static_cast<std::size_t>(length));
    if (length < 0 && errno != EINTR) break;
  }
  return text;
}

}  // namespace

ChildResult runInChild(const std::function<int()>& work) {
  int ends[2];
  check(::pipe(ends) == 0, "pipe");
  const UniqueDescriptor readEnd(ends[0]);
  UniqueDescriptor writeEnd(ends[1]);
  std::fflush(nullptr);
  const pid_t child = ::fork();
  check(child >= 0, "fork");
  if (child == 0) {
    ::dup2(writeEnd.get(), STDOUT_FILENO);
    ::dup2(writeEnd.get(), STDERR_FILENO);
    const int code = exitCodeOf(work);
    std::fflush(nullptr);
    ::_exit(code);
  }
  writeEnd = UniqueDescriptor();
  ChildResult result{.exitCode = 0, .output = readAll(readEnd.get())};
  int status = 0;
  check(::waitpid(child, &status, 0) == child, "waitpid");
  result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
  return result;
}

ChildResult runUnprivileged(const std::function<int()>& work) {
  return runInChild([&work] {
    constexpr unsigned kNobody = 65534;
    if (::geteuid() == 0) {
      check(::setgroups(0, nullptr) == 0, "setgroups");
      check(::setresgid(kNobody, kNobody, kNobody) == 0, "setresgid");
      check(::setresuid(kNobody, kNobody, kNobody) == 0, "setresuid");
    }
    return work();
  });
}

ChildResult runWithOwnMounts(const std::function<int()>& work) {
  return runInChild([&work] {
    leaveMounts();
    return work();
  });
}

}  // namespace dunmere::test
