// FailingMappings: makes the system refuse memory, a page or a stack at a time, at a chosen moment.
#pragma once

#include <memory>

namespace dunmere::test {

/// From its making on, the `first`-th call (counted from 1) that would map memory or open it for use (mmap, mremap,
/// mprotect) and, if `lasting`, all later ones fail with ENOMEM, whoever makes them, the C library included: in this
/// thread and those that are started from now on. Their calls can never be left alone again, only be let through, so
/// one is made in a process of its own. Throws std::system_error when the system cannot do it.
class FailingMappings {
 public:
  FailingMappings(int first, bool lasting);

  /// All further calls succeed.
  void end();
  bool hasFailed() const;

 private:
  struct Shared;
  std::shared_ptr<Shared> shared_;
};

}  // namespace dunmere::test
