#include "tests/support/failing_mappings.h"

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <system_error>
#include <thread>

namespace dunmere::test {

struct FailingMappings::Shared {
  std::atomic<int> listener = -1;  // where the calls come in; none at first
  std::atomic<int> callsLeft;      // until the first one to fail
  std::atomic<bool> isLasting;
  std::atomic<bool> hasEnded = false;
  std::atomic<bool> hasFailed = false;

  bool refusesNext() {
    const int left = --callsLeft;
    return !hasEnded && (left == 0 || (left < 0 && isLasting));
  }

  /// Must not need memory: whoever is stopped at a call may hold the allocator's lock.
  void decideOnCalls() {
    listener.wait(-1);
    for (;;) {
      seccomp_notif call{};
      if (::ioctl(listener, SECCOMP_IOCTL_NOTIF_RECV, &call) != 0) continue;  // its thread is gone
      seccomp_notif_resp answer{};
      answer.id = call.id;
      if (refusesNext()) {
        answer.error = -ENOMEM;
        hasFailed = true;
      } else {
        answer.flags = SECCOMP_USER_NOTIF_FLAG_CONTINUE;
      }
      ::ioctl(listener, SECCOMP_IOCTL_NOTIF_SEND, &answer);
    }
  }
};

namespace {

int check(int result, const char* what) {
  if (result < 0) throw std::system_error(errno, std::generic_category(), what);
  return result;
}

/// From now on this thread, and each that it starts, is stopped at these calls until the listener has decided on them.
int listenToMappings() {
  constexpr unsigned kNumber = offsetof(seccomp_data, nr);
  std::array<sock_filter, 6> filter{
      {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, kNumber), BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_mmap, 3, 0),
       BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_mremap, 2, 0), BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, SYS_mprotect, 1, 0),
       BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW), BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_USER_NOTIF)}};
  const sock_fprog program{filter.size(), filter.data()};
  check(::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0), "PR_SET_NO_NEW_PRIVS");
  return check(
      static_cast<int>(::syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, SECCOMP_FILTER_FLAG_NEW_LISTENER, &program)),
      "seccomp");
}

}  // namespace

FailingMappings::FailingMappings(int first, bool lasting) : shared_(std::make_shared<Shared>()) {
  shared_->callsLeft = first;
  shared_->isLasting = lasting;
  std::thread([shared = shared_] { shared->decideOnCalls(); }).detach();
  shared_->listener = listenToMappings();
  shared_->listener.notify_one();
}

void FailingMappings::end() {
  shared_->hasEnded = true;
}

bool FailingMappings::hasFailed() const {
  return shared_->hasFailed;
}

}  // namespace dunmere::test
