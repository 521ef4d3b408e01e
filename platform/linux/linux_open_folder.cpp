#include "platform/linux/linux_open_folder.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/linux/entry_status.h"

namespace dunmere {
namespace {

/// The kind by the directory record, or all attributes where it has none. None when they cannot be read.
std::optional<EntryAttributes> recordAttributes(int folder, const char* name, unsigned char type) {
  switch (type) {
    case DT_REG:
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

bool needsMeasuring(const EntryBatch::Entry& entry) {
  return entry.attributes.kind == EntryKind::regularFile && !entry.attributes.hasSize();
}

bool isDots(std::string_view name) {
  return name == "." || name == "..";
}

}  // namespace

std::expected<std::shared_ptr<LinuxOpenFolder>, SweepError> LinuxOpenFolder::open(FolderDescriptors& descriptors,
                                                                                  const FileUrl& url,
                                                                                  EntryDetail detail,
                                                                                  Automounts automounts) {
  auto folder =
      std::make_shared<LinuxOpenFolder>(descriptors, nullptr, url.bytes(), detail, std::move(automounts), true);
  if (auto opened = folder->openByPath(); !opened) return std::unexpected(std::move(opened.error()));
  return folder;
}

LinuxOpenFolder::LinuxOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent,
                                 std::string name, EntryDetail detail, Automounts automounts, bool mayMountItself)
    : PosixOpenFolder(descriptors, std::move(parent), std::move(name), mayMountItself),
      detail_(detail),
      automounts_(std::move(automounts)) {}

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
  if (!pin) return failure(pin.error());
  // Who may not search the folder cannot read the attributes of its entries, and shows none.
  if (nextOffset_ == 0 && detail_ == EntryDetail::kinds)
    isSearchable_ = entryStatus(pin->descriptor(), ".").has_value();

  constexpr std::size_t kBufferBytes = 64 * 1024;
  alignas(dirent64) char buffer[kBufferBytes];
  while (batch.empty()) {  // a buffer may hold nothing but left-out entries
    const ssize_t length = ::getdents64(pin->descriptor(), buffer, sizeof buffer);
    if (length < 0 && errno == EINTR) continue;
    // ENOENT: the folder was removed while it was open, so it is empty.
    // EBADF: only held, since it is an automount point where nothing is mounted.
    if (length == 0 || (length < 0 && (errno == ENOENT || errno == EBADF))) {
      ended_ = true;
      return {};
    }
    if (length < 0) {
      const int error = errno;
      ended_ = true;
      return failure(error);
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
    const auto attributes = isSearchable_ ? recordAttributes(folder, record->d_name, record->d_type) : std::nullopt;
    if (attributes) {
      batch.add(name, *attributes);
    } else if (detail_ == EntryDetail::kinds) {
      batch.add(name, EntryAttributes{.kind = EntryKind::other});
    }
  }
}

std::optional<FolderStamp> LinuxOpenFolder::stamp() {
  const auto pin = descriptor();
  return pin ? folderStamp(pin->descriptor()) : std::nullopt;
}

std::expected<void, SweepError> LinuxOpenFolder::measure(EntryBatch& batch) {
  const std::vector<EntryBatch::Entry>& entries = batch.entries();
  if (std::ranges::none_of(entries, needsMeasuring)) return {};
  const auto pin = descriptor();
  if (!pin) return failure(pin.error());
  for (std::size_t position = 0; position < entries.size(); ++position) {
    const EntryBatch::Entry& entry = entries[position];
    if (!needsMeasuring(entry)) continue;
    const auto attributes = entryStatus(pin->descriptor(), batch.nameText(entry));
    const bool isFile = attributes && attributes->kind == EntryKind::regularFile;
    batch.setAttributes(position, isFile ? *attributes : EntryAttributes{.kind = EntryKind::other});
  }
  return {};
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> LinuxOpenFolder::openChild(std::string_view name) {
  const bool mayMountItself = isAutomounter_ || (automounts_ && automounts_->contains(name));
  auto child = std::make_shared<LinuxOpenFolder>(descriptors(), shared_from_this(), std::string(name),
                                                 EntryDetail::sizes, automounts_, mayMountItself);
  if (auto opened = child->openBelowParent(); !opened) return std::unexpected(std::move(opened.error()));
  if (mayMountItself) child->isAutomounter_ = child->isAutomounter();
  return child;
}

std::optional<EntryAttributes> LinuxOpenFolder::attributes(std::string_view name) {
  const auto pin = descriptor();
  if (!pin || name.empty()) return std::nullopt;
  return entryStatus(pin->descriptor(), std::string(name).c_str());
}

LinkTarget LinuxOpenFolder::resolveLink(std::string_view name) {
  FileUrl ownUrl = url().appending(name).standardized();
  const auto pin = descriptor();
  if (!pin) return {.url = std::move(ownUrl), .attributes = std::nullopt};
  const auto target = descriptors().openWithRetry([&] { return findTarget(pin->descriptor(), std::string(name)); });
  if (!target) return {.url = std::move(ownUrl), .attributes = std::nullopt};
  return describeTarget(*target, std::move(ownUrl));
}

bool LinuxOpenFolder::isAutomounter() {
  const auto pin = descriptor();
  return pin && dunmere::isAutomounter(pin->descriptor());
}

bool LinuxOpenFolder::takesDiskSpace() {
  const auto pin = descriptor();
  return !pin || dunmere::takesDiskSpace(pin->descriptor());
}

}  // namespace dunmere
