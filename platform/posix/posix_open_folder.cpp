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

}  // namespace

PosixOpenFolder::PosixOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent,
                                 std::string name)
    : descriptors_(descriptors), parent_(std::move(parent)), name_(std::move(name)), slot_(descriptors) {}

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
  auto opened = descriptors_.openWithRetry([this] { return openPath(name_, kFolderFlags); });
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
    auto opened = openEntry(above.descriptor(), folder->name_);
    if (!opened) return std::unexpected(opened.error());
    auto pin = descriptors_.adopt(folder->slot_, std::move(*opened));
    if (!pin) return pin;
    above = std::move(*pin);
  }
  return above;
}

std::expected<UniqueDescriptor, int> PosixOpenFolder::openEntry(int folder, const std::string& name) const {
  return descriptors_.openWithRetry([&]() -> std::expected<UniqueDescriptor, int> {
    UniqueDescriptor opened(::openat(folder, name.c_str(), kFolderFlags | O_NOFOLLOW));
    if (!opened) return std::unexpected(errno);
    return opened;
  });
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
