#include "tests/support/temporary_tree.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <stdexcept>
#include <system_error>
#include <vector>

#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

namespace {

void check(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

UniqueDescriptor openFolderAt(int parent, const std::string& name) {
  UniqueDescriptor folder(::openat(parent, name.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  check(static_cast<bool>(folder), name);
  return folder;
}

std::vector<std::string> namesIn(int folder) {
  const int duplicate = ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  check(duplicate >= 0, "a temporary folder");
  DIR* stream = ::fdopendir(duplicate);
  std::vector<std::string> names;
  while (const dirent* entry = ::readdir(stream)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  ::closedir(stream);
  return names;
}

bool removeOne(int folder, const std::string& name) {
  return ::unlinkat(folder, name.c_str(), 0) == 0 || ::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0;
}

/// Empties `folder`. What a full folder inside it holds is first moved up beside it, so that any depth takes two
/// descriptors and no recursion.
void removeContents(int folder) {
  std::size_t moved = 0;
  for (auto names = namesIn(folder); !names.empty(); names = namesIn(folder)) {
    for (const std::string& name : names) {
      if (removeOne(folder, name)) continue;
      check(::fchmodat(folder, name.c_str(), 0700, 0) == 0, name);
      const UniqueDescriptor full = openFolderAt(folder, name);
      for (const std::string& inner : namesIn(full.get())) {
        if (removeOne(full.get(), inner)) continue;
        // To be moved, a folder must be writable itself.
        check(::fchmodat(full.get(), inner.c_str(), 0700, 0) == 0, inner);
        const std::string free = "moved up " + std::to_string(moved++);
        check(::renameat(full.get(), inner.c_str(), folder, free.c_str()) == 0, inner);
      }
      check(::unlinkat(folder, name.c_str(), AT_REMOVEDIR) == 0, name);
    }
  }
}

}  // namespace

std::string fastFolder() {
  const std::string inMemory = "/dev/shm";
  return ::access(inMemory.c_str(), W_OK | X_OK) == 0 ? inMemory : std::filesystem::temp_directory_path().string();
}

TemporaryTree::TemporaryTree() : TemporaryTree(std::filesystem::temp_directory_path().string()) {}

TemporaryTree::TemporaryTree(const std::string& parent) {
  ::umask(022);  // some tests look at it as another user
  std::string pattern = parent + "/dunmere-test-XXXXXX";
  check(::mkdtemp(pattern.data()) != nullptr, pattern);
  // The system's temporary folder may be reached through links; tests compare real paths.
  root_ = std::filesystem::canonical(pattern).string();
  mode("", 0755);
}

TemporaryTree::~TemporaryTree() {
  try {
    remove("");
  } catch (const std::exception& error) {
    std::fprintf(stderr, "A temporary tree was left behind: %s\n", error.what());
  }
}

std::string TemporaryTree::path(std::string_view relative) const {
  return relative.empty() ? root_ : root_ + "/" + std::string(relative);
}

void TemporaryTree::folder(std::string_view relative) const {
  std::filesystem::create_directories(path(relative));
}

void TemporaryTree::file(std::string_view relative, std::size_t bytes) const {
  const std::string name = path(relative);
  const UniqueDescriptor file(::open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644));
  check(static_cast<bool>(file), name);
  const std::string block(std::min<std::size_t>(bytes, 1 << 20), 'x');
  for (std::size_t left = bytes; left > 0;) {
    const ssize_t written = ::write(file.get(), block.data(), std::min(left, block.size()));
    check(written > 0, name);
    left -= static_cast<std::size_t>(written);
  }
  // Some file systems choose the blocks only when they write them: from here on the size does not change.
  if (bytes > 0) check(::fsync(file.get()) == 0, name);
}

void TemporaryTree::sparseFile(std::string_view relative, std::int64_t bytes) const {
  file(relative);
  check(::truncate(path(relative).c_str(), bytes) == 0, path(relative));
}

void TemporaryTree::link(std::string_view relative, const std::string& target) const {
  check(::symlink(target.c_str(), path(relative).c_str()) == 0, path(relative));
}

void TemporaryTree::hardLink(std::string_view existing, std::string_view relative) const {
  check(::link(path(existing).c_str(), path(relative).c_str()) == 0, path(relative));
}

void TemporaryTree::fifo(std::string_view relative) const {
  check(::mkfifo(path(relative).c_str(), 0644) == 0, path(relative));
}

void TemporaryTree::socket(std::string_view relative) const {
  const UniqueDescriptor bound(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  check(static_cast<bool>(bound), "a socket");
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string name = path(relative);
  if (name.size() >= sizeof address.sun_path) throw std::length_error("The path of a socket is too long: " + name);
  name.copy(address.sun_path, name.size());
  check(::bind(bound.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0, name);
}

void TemporaryTree::device(std::string_view relative) const {
  // Nothing is behind the second, and anybody may make it, but not where it means that an overlay hides a file.
  const bool isMade = ::mknod(path(relative).c_str(), S_IFCHR | 0644, makedev(1, 3)) == 0 ||
                      ::mknod(path(relative).c_str(), S_IFCHR | 0644, makedev(0, 0)) == 0;
  check(isMade, path(relative));
}

void TemporaryTree::mode(std::string_view relative, unsigned bits) const {
  check(::chmod(path(relative).c_str(), bits) == 0, path(relative));
}

void TemporaryTree::rename(std::string_view from, std::string_view to) const {
  check(::rename(path(from).c_str(), path(to).c_str()) == 0, path(to));
}

void TemporaryTree::remove(std::string_view relative) const {
  const std::string name = path(relative);
  if (removeOne(AT_FDCWD, name)) return;
  ::chmod(name.c_str(), 0700);
  removeContents(openFolderAt(AT_FDCWD, name).get());
  check(removeOne(AT_FDCWD, name), name);
}

void TemporaryTree::chain(std::string_view relative, std::size_t depth, std::string_view name,
                          std::size_t siblings) const {
  const std::string next(name);
  UniqueDescriptor folder = openFolderAt(AT_FDCWD, path(relative));
  for (std::size_t level = 0; level < depth; ++level) {
    for (std::size_t sibling = 0; sibling < siblings; ++sibling) {
      check(::mkdirat(folder.get(), ("s" + std::to_string(sibling)).c_str(), 0755) == 0, "a sibling in a chain");
    }
    check(::mkdirat(folder.get(), next.c_str(), 0755) == 0, next);
    folder = openFolderAt(folder.get(), next);
  }
}

std::int64_t TemporaryTree::allocatedBytes(std::string_view relative) const {
  struct stat status{};
  check(::lstat(path(relative).c_str(), &status) == 0, path(relative));
  return static_cast<std::int64_t>(status.st_blocks) * 512;
}

}  // namespace dunmere::test
