// FailingCall: makes the system refuse what this process asks of it, at a chosen moment.
#pragma once

namespace dunmere::test {

/// Works in executables that link dunmere_system_faults, for calls made by code that is linked into them.
enum class Fallible { open, getdents, statx, thread, memory };

/// From its construction to its end, the `first`-th call of that kind by any thread (counted from 1) and, if `lasting`,
/// all later ones fail with `error`; memory fails with std::bad_alloc. One at a time.
class FailingCall {
 public:
  struct Manner {
    bool lasting = false;
    bool sparesCaller = false;  ///< the thread that made this object is not counted and not failed
  };

  FailingCall(Fallible call, int first, int error, Manner manner);
  FailingCall(Fallible call, int first, int error) : FailingCall(call, first, error, Manner()) {}
  ~FailingCall();
  FailingCall(const FailingCall&) = delete;
  FailingCall& operator=(const FailingCall&) = delete;

  /// Whether any call has failed so far.
  bool hasFailed() const;
};

}  // namespace dunmere::test
