// Child processes for tests that change what a process has only once: its environment, user, limits and mounts.
#pragma once

#include <functional>
#include <string>

namespace dunmere::test {

/// Runs `body` in a forked child and waits. Expectations that fail in it are printed, and fail this test too. Call it
/// before the parent has started any thread.
void inChildProcess(const std::function<void()>& body);

// For use inside a child only. Each throws std::system_error when the system refuses.

/// From here on the process has its own view of the mounts: nothing that it mounts is seen outside, and all of it
/// ends with the process. Needs root, or a system that allows user namespaces.
void enterPrivateMounts();

/// Mounts a new file system of `type` ("tmpfs", "ramfs") on the existing folder `path`.
void mountNew(const std::string& path, const std::string& type, const std::string& options = {});

/// Shows the folder `from`, with all that is mounted in it, also at the existing folder `to`.
void mountAgain(const std::string& from, const std::string& to);

/// Makes the mount at `path` read-only.
void remountReadOnly(const std::string& path);

/// Gives up root for a user without any rights; a process without root stays who it is.
void dropPrivileges();

/// Further writes into files fail as on an exhausted quota; making and renaming files goes on working.
void forbidWriting();

}  // namespace dunmere::test
