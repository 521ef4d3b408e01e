#include "tests/support/stepped_process.h"

#include <elf.h>
#include <sys/ptrace.h>
#include <sys/uio.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <exception>
#include <stdexcept>
#include <system_error>

namespace dunmere::test {

namespace {

constexpr int kSystemCallStop = SIGTRAP | 0x80;  // as PTRACE_O_TRACESYSGOOD marks it

void check(long result, const char* attempt) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), attempt);
}

int waitFor(pid_t process) {
  int status = 0;
  while (waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) check(-1, "waitpid");
  }
  return status;
}

void goOn(pid_t process, int signal) {
  // ESRCH: it was killed while it was stopped.
  if (ptrace(PTRACE_SYSCALL, process, nullptr, signal) != 0 && errno != ESRCH) check(-1, "PTRACE_SYSCALL");
}

[[noreturn]] void runAsChild(const std::function<void()>& prepare, const std::function<int()>& work) {
  int code = 125;
  try {
    prepare();
    check(ptrace(PTRACE_TRACEME, 0, nullptr, nullptr), "PTRACE_TRACEME");
    raise(SIGSTOP);
    code = work();
  } catch (const std::exception& error) {
    std::fprintf(stderr, "stepped process: %s\n", error.what());
  }
  _exit(code);
}

#if defined(__x86_64__)

/// No system call has this number, so that none is made.
void cancelCall(pid_t process) {
  user_regs_struct registers{};
  check(ptrace(PTRACE_GETREGS, process, nullptr, &registers), "PTRACE_GETREGS");
  registers.orig_rax = static_cast<unsigned long long>(-1);
  check(ptrace(PTRACE_SETREGS, process, nullptr, &registers), "PTRACE_SETREGS");
}

void setResult(pid_t process, int result) {
  user_regs_struct registers{};
  check(ptrace(PTRACE_GETREGS, process, nullptr, &registers), "PTRACE_GETREGS");
  registers.rax = static_cast<unsigned long long>(static_cast<long long>(result));
  check(ptrace(PTRACE_SETREGS, process, nullptr, &registers), "PTRACE_SETREGS");
}

#elif defined(__aarch64__)

void cancelCall(pid_t process) {
  int number = -1;
  iovec part{&number, sizeof number};
  check(ptrace(PTRACE_SETREGSET, process, NT_ARM_SYSTEM_CALL, &part), "PTRACE_SETREGSET");
}

void setResult(pid_t process, int result) {
  user_regs_struct registers{};
  iovec part{&registers, sizeof registers};
  check(ptrace(PTRACE_GETREGSET, process, NT_PRSTATUS, &part), "PTRACE_GETREGSET");
  registers.regs[0] = static_cast<unsigned long long>(static_cast<long long>(result));
  check(ptrace(PTRACE_SETREGSET, process, NT_PRSTATUS, &part), "PTRACE_SETREGSET");
}

#endif

}  // namespace

long SystemCallStop::callAhead() const {
  __ptrace_syscall_info info{};
  check(ptrace(PTRACE_GET_SYSCALL_INFO, process_, sizeof info, &info), "PTRACE_GET_SYSCALL_INFO");
  return info.op == PTRACE_SYSCALL_INFO_ENTRY ? static_cast<long>(info.entry.nr) : -1;
}

void SystemCallStop::kill() const {
  check(::kill(process_, SIGKILL), "kill");
}

void SystemCallStop::fail(int error) const {
  cancelCall(process_);
  goOn(process_, 0);
  const int status = waitFor(process_);
  if (!WIFSTOPPED(status) || WSTOPSIG(status) != kSystemCallStop) {
    throw std::runtime_error("no stop after a cancelled system call");
  }
  setResult(process_, -error);
}

int runStepped(const std::function<void()>& prepare, const std::function<int()>& work,
               const std::function<void(const SystemCallStop&)>& atStop) {
  std::fflush(nullptr);
  const pid_t child = fork();
  check(child, "fork");
  if (child == 0) runAsChild(prepare, work);
  int status = waitFor(child);  // the child's own SIGSTOP, if it came so far
  if (WIFSTOPPED(status)) {
    check(ptrace(PTRACE_SETOPTIONS, child, nullptr, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL), "PTRACE_SETOPTIONS");
    goOn(child, 0);
    status = waitFor(child);
  }
  for (int number = 0; WIFSTOPPED(status); status = waitFor(child)) {
    const int signal = WSTOPSIG(status);
    if (signal == kSystemCallStop) atStop({child, number++});
    goOn(child, signal == kSystemCallStop ? 0 : signal);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

}  // namespace dunmere::test
