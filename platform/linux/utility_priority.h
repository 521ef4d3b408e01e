// lowerThreadPriority: puts a background thread behind the interface.
#pragma once

namespace dunmere {

/// Lowers the calling thread's processor priority (nice 10) and disk priority (the lowest of the best-effort class, so
/// that it still moves on a busy disk). Never raises either. A refusal changes nothing. Linux gives both to threads.
void lowerThreadPriority() noexcept;

}  // namespace dunmere
