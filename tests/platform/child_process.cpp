#include "tests/platform/child_process.h"

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <fstream>
#include <system_error>

namespace dunmere::test {

namespace {

constexpr int kPassed = 0;
constexpr int kFailed = 1;
constexpr uid_t kNobody = 65534;

void check(bool succeeded, const std::string& attempt) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), attempt);
}

[[noreturn]] void runAsChild(const std::function<void()>& body) {
  try {
    body();
  } catch (const std::exception& error) {
    ADD_FAILURE() << "child process: " << error.what();
  }
  std::fflush(nullptr);
  _exit(testing::Test::HasFailure() ? kFailed : kPassed);
}

void mapToRoot(const char* map, unsigned int id) {
  std::ofstream file(map);
  file << "0 " << id << " 1";
  check(static_cast<bool>(file.flush()), map);
}

void becomeRootOfOwnNamespace() {
  const uid_t user = geteuid();
  const gid_t group = getegid();
  check(unshare(CLONE_NEWUSER) == 0, "unshare(CLONE_NEWUSER)");
  std::ofstream("/proc/self/setgroups") << "deny";
  mapToRoot("/proc/self/uid_map", user);
  mapToRoot("/proc/self/gid_map", group);
}

}  // namespace

void inChildProcess(const std::function<void()>& body) {
  std::fflush(nullptr);
  const pid_t child = fork();
  ASSERT_GE(child, 0) << "fork failed";
  if (child == 0) runAsChild(body);
  int status = 0;
  while (waitpid(child, &status, 0) < 0) ASSERT_EQ(errno, EINTR);
  ASSERT_TRUE(WIFEXITED(status)) << "the child process was killed by signal " << WTERMSIG(status);
  EXPECT_EQ(WEXITSTATUS(status), kPassed) << "see the child process's output above";
}

void enterPrivateMounts() {
  if (geteuid() != 0) becomeRootOfOwnNamespace();
  check(unshare(CLONE_NEWNS) == 0, "unshare(CLONE_NEWNS)");
  check(mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0, "making the mounts private");
}

void mountNew(const std::string& path, const std::string& type, const std::string& options) {
  check(mount(type.c_str(), path.c_str(), type.c_str(), 0, options.c_str()) == 0, "mounting " + path);
}

void mountAgain(const std::string& from, const std::string& to) {
  check(mount(from.c_str(), to.c_str(), nullptr, MS_BIND | MS_REC, nullptr) == 0, "mounting " + from + " again");
}

void remountReadOnly(const std::string& path) {
  check(mount(nullptr, path.c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0, "remounting " + path);
}

void dropPrivileges() {
  if (geteuid() != 0) return;
  check(setresgid(kNobody, kNobody, kNobody) == 0, "setresgid");
  check(setresuid(kNobody, kNobody, kNobody) == 0, "setresuid");
}

void forbidWriting() {
  std::signal(SIGXFSZ, SIG_IGN);
  const rlimit none{0, 0};
  check(setrlimit(RLIMIT_FSIZE, &none) == 0, "setrlimit");
}

}  // namespace dunmere::test
