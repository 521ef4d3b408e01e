#include "platform/linux/linux_open_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstddef>
#include <cstring>
#include <ranges>
#include <utility>
#include <vector>

#include "platform/linux/entry_status.h"
#include "platform/linux/link_resolution.h"
#include "platform/posix/open_path.h"

namespace dunmere {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK;

/// Gives up one folder's share of its parent. A chain of ten thousand folders must not end in as many nested
/// destructors: a destructor that runs inside another one only leaves its parent for the outermost one to release.
void releaseInTurn(std::shared_ptr<LinuxOpenFolder> parent) noexcept {
  thread_local std::shared_ptr<LinuxOpenFolder>* next = nullptr;
  if (next != nullptr) {
    *next = std::move(parent);
    return;
  }
  next = &parent;
  while (parent) {
    std::shared_ptr<LinuxOpenFolder> current = std::move(parent);
    current.reset();  // may set `parent` through `next`
  }
  next = nullptr;
}

/// Attributes of one directory record as far as `detail` asks for them; none when they cannot be read.
std::optional<EntryAttributes> recordAttributes(int folder, const char* name, unsigned char type, EntryDetail detail) {
  switch (type) {
    case DT_REG:
      if (detail == EntryDetail::sizes) return regularFileStatus(folder, name);
      return EntryAttributes{.kind = EntryKind::regularFile};
    case DT_DIR:
      return EntryAttributes{.kind = EntryKind::folder};
    case DT_LNK:
      return EntryAttributes{.kind = EntryKind::symbolicLink};
    case DT_UNKNOWN:
      return entryStatus(folder, name);
    default:
      return EntryAttributes{.kind = EntryKind::other};
  }
}

bool isDots(std::string_view name) {
  return name == "." || name == "..";
}

}  // namespace

std::expected<std::shared_ptr<OpenFolder>, SweepError> LinuxOpenFolder::open(FolderDescriptors& descriptors,
                                                                             const FileUrl& url, EntryDetail detail) {
  auto folder = std::make_shared<LinuxOpenFolder>(descriptors, nullptr, url.bytes(), detail);
  auto opened = openPath(url.bytes(), kFolderFlags);
  if (!opened && (opened.error() == EMFILE || opened.error() == ENFILE)) {
    descriptors.closeIdle();
    opened = openPath(url.bytes(), kFolderFlags);
  }
  if (!opened) return std::unexpected(folder->failure(url, opened.error()));
  auto pin = descriptors.adopt(folder->slot_, std::move(*opened));
  if (!pin) return std::unexpected(folder->failure(url, pin.error()));
  folder->rootPin_ = std::move(*pin);
  return folder;
}

LinuxOpenFolder::LinuxOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<LinuxOpenFolder> parent,
                                 std::string name, EntryDetail detail)
    : descriptors_(descriptors),
      parent_(std::move(parent)),
      name_(std::move(name)),
      detail_(detail),
      slot_(descriptors) {}

LinuxOpenFolder::~LinuxOpenFolder() {
  releaseInTurn(std::move(parent_));
}

std::expected<FolderDescriptors::Pin, int> LinuxOpenFolder::descriptor() {
  if (Pin pin = descriptors_.pin(slot_)) return pin;
  return reopen();
}

std::expected<FolderDescriptors::Pin, int> LinuxOpenFolder::reopen() {
  // Up to the nearest folder that is still open (the topmost always is), then down again, opening each on the way.
  std::vector<LinuxOpenFolder*> closed;
  Pin above;
  for (LinuxOpenFolder* folder = this; !(above = descriptors_.pin(folder->slot_)); folder = folder->parent_.get()) {
    closed.push_back(folder);
  }
  for (LinuxOpenFolder* folder : closed | std::views::reverse) {
    auto opened = openEntry(above.descriptor(), folder->name_);
    if (!opened) return std::unexpected(opened.error());
    auto pin = descriptors_.adopt(folder->slot_, std::move(*opened));
    if (!pin) return pin;
    above = std::move(*pin);
  }
  return above;
}

std::expected<UniqueDescriptor, int> LinuxOpenFolder::openEntry(int folder, const std::string& name) const {
  const auto open = [&] { return UniqueDescriptor(::openat(folder, name.c_str(), kFolderFlags | O_NOFOLLOW)); };
  UniqueDescriptor opened = open();
  if (!opened && (errno == EMFILE || errno == ENFILE)) {
    descriptors_.closeIdle();
    opened = open();
  }
  if (!opened) return std::unexpected(errno);
  return opened;
}

std::expected<FolderDescriptors::Pin, int> LinuxOpenFolder::readingDescriptor() {
  auto pin = descriptor();
  if (!pin || pin->generation() == readGeneration_) return pin;
  // A new descriptor starts at the first entry.
  if (nextOffset_ != 0 && ::lseek(pin->descriptor(), nextOffset_, SEEK_SET) < 0) return std::unexpected(errno);
  readGeneration_ = pin->generation();
  return pin;
}

std::expected<void, SweepError> LinuxOpenFolder::readEntries(EntryBatch& batch) {
  batch.clear();
  if (ended_) return {};
  auto pin = readingDescriptor();
  if (!pin) return std::unexpected(failure(url(), pin.error()));

  constexpr std::size_t kBufferBytes = 64 * 1024;
  alignas(dirent64) char buffer[kBufferBytes];
  while (batch.empty()) {  // a whole buffer may turn out to hold nothing to hand out
    const ssize_t length = ::getdents64(pin->descriptor(), buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    // A folder removed while it is open reads as ENOENT: it has vanished, and all it held with it.
    if (length == 0 || (length < 0 && errno == ENOENT)) {
      ended_ = true;
      return {};
    }
    if (length < 0) {
      const int error = errno;
      ended_ = true;
      return std::unexpected(failure(url(), error));
    }
    addEntries(pin->descriptor(), std::string_view(buffer, static_cast<std::size_t>(length)), batch);
  }
  return {};
}

void LinuxOpenFolder::addEntries(int folder, std::string_view records, EntryBatch& batch) {
  while (!records.empty()) {
    const auto* record = reinterpret_cast<const dirent64*>(records.data());
    nextOffset_ = record->d_off;
    records.remove_prefix(record->d_reclen);
    const std::string_view name = record->d_name;
    if (isDots(name)) continue;
    const auto attributes = recordAttributes(folder, record->d_name, record->d_type, detail_);
    if (attributes) {
      batch.add(name, *attributes);
    } else if (detail_ == EntryDetail::kinds) {
      batch.add(name, EntryAttributes{.kind = EntryKind::other});
    }
  }
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> LinuxOpenFolder::openChild(std::string_view name) {
  auto child =
      std::make_shared<LinuxOpenFolder>(descriptors_, shared_from_this(), std::string(name), EntryDetail::sizes);
  const auto pin = child->descriptor();
  if (!pin) return std::unexpected(failure(url().appending(name), pin.error()));
  return child;
}

std::optional<EntryAttributes> LinuxOpenFolder::attributes(std::string_view name) {
  const auto pin = descriptor();
  if (!pin || name.empty()) return std::nullopt;
  return entryStatus(pin->descriptor(), std::string(name).c_str());
}

LinkTarget LinuxOpenFolder::resolveLink(std::string_view name) {
  LinkTarget target{.url = url().appending(name).standardized(), .attributes = std::nullopt};
  const auto pin = descriptor();
  if (!pin) return target;
  return resolvedLink(pin->descriptor(), std::string(name), std::move(target.url));
}

FileUrl LinuxOpenFolder::url() const {
  std::vector<const LinuxOpenFolder*> below;
  const LinuxOpenFolder* folder = this;
  for (; folder->parent_; folder = folder->parent_.get()) below.push_back(folder);
  std::string path = folder->name_;
  for (const LinuxOpenFolder* child : below | std::views::reverse) {
    if (!path.ends_with('/')) path += '/';
    path += child->name_;
  }
  return FileUrl(std::move(path));
}

SweepError LinuxOpenFolder::failure(FileUrl path, int error) const {
  return {.attempt = SweepAttempt::openFolder,
          .path = std::move(path),
          .code = std::error_code(error, std::generic_category()),
          .volumeName = {}};
}

}  // namespace dunmere
