// What this process asks of the system for its threads: their priority, and that nothing is fetched from the cloud.
#pragma once

namespace dunmere {

/// Puts the calling thread behind the interface, for the processor and the disk. Never raises it. A refusal changes
/// nothing.
void lowerThreadPriority() noexcept;

/// From now on no thread of this process makes the system fetch a file or a folder's entries from the cloud: what would
/// need it fails with EDEADLK. Sizes and moves need none of it. Best effort.
void keepCloudFilesAway() noexcept;

}  // namespace dunmere
