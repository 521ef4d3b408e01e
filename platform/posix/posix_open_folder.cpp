#include "platform/posix/posix_open_folder.h"

#include <fcntl.h>

#include <cerrno>
#include <ranges>
#include <utility>
#include <vector>

#include "platform/posix/open_path.h"
#include "platform/posix/system_values.h"

namespace dunmere {
namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

using Opened = std::expected<UniqueDescriptor, int>;

Opened openAt(int folder, const char* name, int flags) {
  UniqueDescriptor opened(::openat(folder, name, flags | O_CLOEXEC));
  if (!opened) return std::unexpected(errno);
  return opened;
}

/// `open` opens the folder with the flags that it is given. Opening a point where a volume mounts itself asks for the
/// mount, and waits for it. Holding it does not, nor does opening it from there, which fails with ENOENT where nothing
/// is mounted: such a point stays held, to be read as an empty folder.
template <typename Open>
Opened openWithoutMount(const Open& open) {
#ifdef O_PATH
  Opened held = open(O_PATH);
  if (!held) return held;
  Opened opened = openAt(held->get(), ".", kFolderFlags | O_NOFOLLOW);
  if (!opened && opened.error() == ENOENT) return held;
  // "." needs the permission to search, too, and a second descriptor.
  const bool wantsMore = !opened && (opened.error() == EACCES || opened.error() == EMFILE || opened.error() == ENFILE);
  if (!wantsMore) return opened;
  held = UniqueDescriptor();
#endif
  return open(kFolderFlags);
}

}  // namespace

PosixOpenFolder::PosixOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent,
                                 std::string name, bool mayMountItself)
    : descriptors_(descriptors),
      parent_(std::move(parent)),
      name_(std::move(name)),
      mayMountItself_(mayMountItself),
      slot_(descriptors) {}

PosixOpenFolder::~PosixOpenFolder() {
  releaseInTurn(std::move(parent_));
}

/// Releases a parent without recursion: ten thousand nested folders must not end in as many nested destructors. A
/// destructor that runs inside another one leaves its parent to the outermost one, which releases them in a loop.
void PosixOpenFolder::releaseInTurn(std::shared_ptr<PosixOpenFolder> parent) noexcept {
  thread_local std::shared_ptr<PosixOpenFolder>* next = nullptr;
  if (next != nullptr) {
    *next = std::move(parent);
    return;
  }
  next = &parent;
  while (parent) {
    std::shared_ptr<PosixOpenFolder> current = std::move(parent);
    current.reset();  // may set `parent` through `next`
  }
  next = nullptr;
}

std::expected<void, SweepError> PosixOpenFolder::openByPath() {
  // With a slash at its end even holding it would ask for the mount.
  const std::string path = mayMountItself_ ? FileUrl(name_).path() : name_;
  const auto open = [&](int flags) { return openPath(path, flags); };
  auto opened =
      descriptors_.openWithRetry([&] { return mayMountItself_ ? openWithoutMount(open) : open(kFolderFlags); });
  if (!opened) return failure(opened.error());
  descriptors_.keep(slot_, std::move(*opened));
  return {};
}

std::expected<void, SweepError> PosixOpenFolder::openBelowParent() {
  const auto pin = descriptor();
  if (!pin) return failure(pin.error());
  return {};
}

std::expected<FolderDescriptors::Pin, int> PosixOpenFolder::descriptor() {
  if (Pin pin = descriptors_.pin(slot_)) return pin;
  // Up to the nearest folder that is still open (the topmost always is), then down again, opening each on the way.
  std::vector<PosixOpenFolder*> closed = {this};
  Pin above;
  while (!(above = descriptors_.pin(closed.back()->parent_->slot_))) closed.push_back(closed.back()->parent_.get());
  for (PosixOpenFolder* folder : closed | std::views::reverse) {
    auto opened = folder->openIn(above.descriptor());
    if (!opened) return std::unexpected(opened.error());
    auto pin = descriptors_.adopt(folder->slot_, std::move(*opened));
    if (!pin) return pin;
    above = std::move(*pin);
  }
  return above;
}

std::expected<UniqueDescriptor, int> PosixOpenFolder::openIn(int folder) const {
  const auto open = [&](int flags) { return openAt(folder, name_.c_str(), flags | O_NOFOLLOW); };
  return descriptors_.openWithRetry([&] { return mayMountItself_ ? openWithoutMount(open) : open(kFolderFlags); });
}

FileUrl PosixOpenFolder::url() const {
  std::vector<const PosixOpenFolder*> below;
  const PosixOpenFolder* folder = this;
  for (; folder->parent_; folder = folder->parent_.get()) below.push_back(folder);
  std::string path = folder->name_;
  for (const PosixOpenFolder* child : below | std::views::reverse) {
    if (!path.ends_with('/')) path += '/';
    path += child->name_;
  }
  return FileUrl(std::move(path));
}

std::unexpected<SweepError> PosixOpenFolder::failure(int error) const {
  return openFailure(url(), error);
}

}  // namespace dunmere
