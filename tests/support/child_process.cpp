#include "tests/support/child_process.h"

#include <grp.h>
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <system_error>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

namespace {

void check(bool succeeded, const std::string& attempt) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), attempt);
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

std::string readAll(int descriptor) {
  std::string text;
  char buffer[4096];
  for (ssize_t length; (length = ::read(descriptor, buffer, sizeof buffer)) != 0;) {
    if (length > 0) text.append(buffer, static_cast<std::size_t>(length));
    if (length < 0 && errno != EINTR) break;
  }
  return text;
}

void dropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  std::array<__user_cap_data_struct, _LINUX_CAPABILITY_U32S_3> none{};
  check(::syscall(SYS_capset, &header, none.data()) == 0, "capset");
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
    dropPrivileges();
    return work();
  });
}

void inChildProcess(const std::function<void()>& body) {
  const ChildResult result = runInChild([&body] {
    body();
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

void becomeNobody() {
  constexpr unsigned kNobody = 65534;
  check(::setgroups(0, nullptr) == 0, "setgroups");
  check(::setresgid(kNobody, kNobody, kNobody) == 0, "setresgid");
  check(::setresuid(kNobody, kNobody, kNobody) == 0, "setresuid");
}

void dropPrivileges() {
  try {
    becomeNobody();
  } catch (const std::system_error&) {
    dropCapabilities();
  }
}

void forbidThreads() {
  dropPrivileges();  // the limit does not bind root
  const rlimit none{0, 0};
  check(::setrlimit(RLIMIT_NPROC, &none) == 0, "setrlimit");
}

void forbidWriting() {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit none{0, 0};
  check(::setrlimit(RLIMIT_FSIZE, &none) == 0, "setrlimit");
}

}  // namespace dunmere::test
