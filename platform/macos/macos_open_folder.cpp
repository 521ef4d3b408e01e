#include "platform/macos/macos_open_folder.h"

#include <array>
#include <cerrno>
#include <cstddef>
#include <utility>

#include "platform/macos/attribute_records.h"
#include "platform/macos/attribute_request.h"

namespace dunmere {
namespace {

/// What the system answers instead of fetching a file or folder from the cloud, see MacosFileSystem.
constexpr int kContentIsElsewhere = EDEADLK;

}  // namespace

std::expected<std::shared_ptr<OpenFolder>, SweepError> MacosOpenFolder::open(FolderDescriptors& descriptors,
                                                                             const FileUrl& url, EntryDetail detail) {
  auto folder = std::make_shared<MacosOpenFolder>(descriptors, nullptr, url.bytes(), detail);
  if (auto opened = folder->openByPath(); !opened) return std::unexpected(std::move(opened.error()));
  return folder;
}

MacosOpenFolder::MacosOpenFolder(FolderDescriptors& descriptors, std::shared_ptr<PosixOpenFolder> parent,
                                 std::string name, EntryDetail detail)
    : PosixOpenFolder(descriptors, std::move(parent), std::move(name)), detail_(detail) {}

std::expected<void, SweepError> MacosOpenFolder::acceptUnlessElsewhere(std::expected<void, SweepError> opened) {
  if (opened || opened.error().code.value() != kContentIsElsewhere) return opened;
  return end(kContentIsElsewhere);
}

std::expected<void, SweepError> MacosOpenFolder::end(int error) {
  ended_ = true;
  // ENOENT: the folder was removed while it was open, so it is empty.
  if (error == 0 || error == ENOENT || error == kContentIsElsewhere) return {};
  return failure(error);
}

std::expected<FolderDescriptors::Pin, int> MacosOpenFolder::readingDescriptor() {
  auto pin = descriptor();
  if (!pin || pin->generation() == readGeneration_) return pin;
  // A new descriptor starts at the first entry, and macOS cannot seek in a folder.
  readGeneration_ = pin->generation();
  toSkip_ = recordsRead_;
  return pin;
}

std::expected<void, SweepError> MacosOpenFolder::readEntries(EntryBatch& batch) {
  batch.clear();
  if (ended_) return {};
  const auto pin = readingDescriptor();
  if (!pin) return acceptUnlessElsewhere(failure(pin.error()));

  constexpr std::size_t kBufferBytes = 64 * 1024;  // a thread's stack may be as small as 512 KiB
  alignas(8) std::array<std::byte, kBufferBytes> buffer;
  while (batch.empty()) {  // a buffer may hold nothing but left-out entries
    const auto count = readAttributeRecords(pin->descriptor(), detail_, buffer);
    if (!count) return end(count.error());
    if (*count == 0) return end(0);
    if (!addRecords(buffer, *count, batch)) return end(EIO);
  }
  return {};
}

bool MacosOpenFolder::addRecords(std::span<const std::byte> records, std::size_t count, EntryBatch& batch) {
  for (; toSkip_ > 0 && count > 0; --toSkip_, --count) {
    if (!takeAttributeRecord(records)) return false;
  }
  recordsRead_ += count;
  return addAttributeRecords(records, count, detail_, batch);
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> MacosOpenFolder::openChild(std::string_view name) {
  auto child =
      std::make_shared<MacosOpenFolder>(descriptors(), shared_from_this(), std::string(name), EntryDetail::sizes);
  if (auto opened = child->acceptUnlessElsewhere(child->openBelowParent()); !opened) {
    return std::unexpected(std::move(opened.error()));
  }
  return child;
}

std::optional<EntryAttributes> MacosOpenFolder::attributes(std::string_view name) {
  const auto pin = descriptor();
  if (!pin || name.empty()) return std::nullopt;
  return entryAttributes(pin->descriptor(), std::string(name));
}

LinkTarget MacosOpenFolder::resolveLink(std::string_view name) {
  LinkTarget target{.url = url().appending(name).standardized(), .attributes = std::nullopt};
  const auto pin = descriptor();
  if (!pin) return target;
  const auto followed = followedEntry(pin->descriptor(), std::string(name));
  if (!followed) return target;
  target.attributes = followed->attributes;
  if (!followed->fullPath.empty()) target.url = FileUrl(followed->fullPath).standardized();
  return target;
}

}  // namespace dunmere
