// FileSystem: the small interface through which the engine asks the operating system for anything.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/file_url.h"
#include "engine/sweep_error.h"

namespace dunmere {

enum class EntryKind : std::uint8_t { regularFile, folder, symbolicLink, other };

/// What is known of one entry. A size is absent when the file system reports none; a reported 0 is a value.
struct EntryAttributes {
  static constexpr std::int64_t kAbsent = -1;

  EntryKind kind = EntryKind::other;
  bool isPackage = false;                 ///< the system marks this folder as one document, whatever its name
  std::int64_t allocatedBytes = kAbsent;  ///< disk space in bytes
  std::int64_t logicalBytes = kAbsent;    ///< length in bytes

  /// The bytes that this entry counts: allocated size, else logical size, else 0.
  std::int64_t countedBytes() const {
    if (allocatedBytes != kAbsent) return allocatedBytes;
    return logicalBytes != kAbsent ? logicalBytes : 0;
  }

  bool hasSize() const { return allocatedBytes != kAbsent || logicalBytes != kAbsent; }

  friend bool operator==(const EntryAttributes&, const EntryAttributes&) = default;
};

/// Some entries of one folder in the order of the directory read, names side by side in one buffer, each ended by a
/// NUL.
class EntryBatch {
 public:
  struct Entry {
    std::uint32_t nameOffset = 0;
    std::uint32_t nameLength = 0;
    EntryAttributes attributes;
  };

  void add(std::string_view name, const EntryAttributes& attributes) {
    entries_.push_back(
        {static_cast<std::uint32_t>(names_.size()), static_cast<std::uint32_t>(name.size()), attributes});
    names_.append(name).push_back('\0');
  }
  /// Of the entry at `position`, counted from 0.
  void setAttributes(std::size_t position, const EntryAttributes& attributes) {
    entries_[position].attributes = attributes;
  }
  void clear() {
    entries_.clear();
    names_.clear();
  }
  const std::vector<Entry>& entries() const { return entries_; }
  std::string_view name(const Entry& entry) const {
    return std::string_view(names_).substr(entry.nameOffset, entry.nameLength);
  }
  const char* nameText(const Entry& entry) const { return names_.data() + entry.nameOffset; }
  std::size_t size() const { return entries_.size(); }
  bool empty() const { return entries_.empty(); }
  /// Memory that the entries take, in bytes.
  std::size_t heldBytes() const { return names_.size() + entries_.size() * sizeof(Entry); }

 private:
  std::vector<Entry> entries_;
  std::string names_;
};

/// How much of each entry a folder read must find out.
enum class EntryDetail {
  kinds,  ///< name and kind only: for a listing, whose sizes come from an inventory
  sizes,  ///< also the sizes of regular files, if need be by measure(): for a walk
};

/// A resolved symbolic link: what it leads to in the end.
struct LinkTarget {
  FileUrl url;  ///< all links in the path resolved, then standardized; a link that cannot be resolved yields its own
                ///< standardized path
  std::optional<EntryAttributes> attributes;  ///< none when the target cannot be read
};

/// Tells one state of a folder's entries from another.
struct FolderStamp {
  std::uint64_t mount = 0;  ///< where its file system is mounted
  std::uint64_t device = 0;
  std::uint64_t folder = 0;             ///< its number on the device
  std::chrono::nanoseconds changed{0};  ///< when it was last changed, by the system's clock

  friend bool operator==(const FolderStamp&, const FolderStamp&) = default;
};

/// One folder held open for reading. Everything goes by the open folder and one name, never by a path, so that a
/// tree may be deeper than the system's longest path and a folder swapped for a link is not followed.
/// readEntries() is called by one thread at a time; the other functions by any thread at any time, also meanwhile.
class OpenFolder {
 public:
  virtual ~OpenFolder() = default;

  /// Replaces `batch` by the next entries, without "." and "..", in directory order. A batch that stays empty ends
  /// the folder. Kinds are final; the sizes of regular files may still be absent. With EntryDetail::sizes an entry
  /// whose kind cannot be told is left out (it may just have vanished); with EntryDetail::kinds such an entry has the
  /// kind `other`. An error ends the folder; entries handed out before it stay valid.
  virtual std::expected<void, SweepError> readEntries(EntryBatch& batch) = 0;

  /// Two equal stamps prove that from the first to the second the folder kept the same entries, of the same kinds and
  /// in the same order. None when the system cannot promise that, or not yet: a folder that changed just now may change
  /// once more within the same tick of the clock.
  virtual std::optional<FolderStamp> stamp() { return std::nullopt; }

  /// Asks for the sizes that `batch`, which holds names of this folder, leaves open for regular files. One whose sizes
  /// cannot be read (it may just have vanished), or that is no regular file any more, gets the kind `other`. Fails when
  /// the folder itself is out of reach. The default implementation calls attributes() for each file.
  virtual std::expected<void, SweepError> measure(EntryBatch& batch) {
    for (std::size_t position = 0; position < batch.size(); ++position) {
      const EntryBatch::Entry& entry = batch.entries()[position];
      if (entry.attributes.kind != EntryKind::regularFile || entry.attributes.hasSize()) continue;
      const auto found = attributes(batch.name(entry));
      const bool isFile = found && found->kind == EntryKind::regularFile;
      batch.setAttributes(position, isFile ? *found : EntryAttributes{.kind = EntryKind::other});
    }
    return {};
  }

  /// Opens the folder `name` inside this one for EntryDetail::sizes; a symbolic link is never followed.
  virtual std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) = 0;

  /// Attributes of the entry `name` itself, links not followed; none when they cannot be read. Nothing is opened.
  virtual std::optional<EntryAttributes> attributes(std::string_view name) = 0;

  /// Where the symbolic link `name` leads. Nothing is opened for reading.
  virtual LinkTarget resolveLink(std::string_view name) = 0;

  /// Whether files here take space on a disk: false for the system's views of itself (/proc, /sys).
  virtual bool takesDiskSpace() { return true; }
};

/// What the system knows of one mounted volume. Each value may be absent.
struct VolumeValues {
  std::optional<std::string> name;                              ///< label
  std::optional<std::int64_t> totalBytes;                       ///< capacity in bytes
  std::optional<std::int64_t> availableBytes;                   ///< available to this user, in bytes
  std::optional<std::int64_t> availableForImportantUsageBytes;  ///< including what the system would clear, in bytes
  std::optional<bool> isBrowsable;                              ///< false: the system hides it from users
};

/// A mounted volume as the mount table has it, without asking its file system.
struct VolumeMount {
  FileUrl url;         ///< mount point
  std::string name;    ///< to show as long as nothing better is known
  std::string source;  ///< device or share; empty where the system has no use for it
};

/// The operating system as the engine sees it. Implementations are thread-safe and outlive every scan.
class FileSystem {
 public:
  using Instant = std::chrono::nanoseconds;  ///< since an arbitrary fixed moment

  virtual ~FileSystem() = default;

  /// Opens a folder by its path. A link to a folder is followed here (and only here). Fails with the system's code
  /// when the path does not exist, is not a folder or may not be read. Any length of path is accepted.
  virtual std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) = 0;

  /// All mounted volumes, in the system's order; none when the list cannot be had. Waits for none of them.
  virtual std::optional<std::vector<VolumeMount>> mountedVolumes() = 0;

  /// The values of the volume that `url` lies on; fails when they cannot be read. Waits as long as its file system.
  virtual std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) = 0;
  /// The same for a volume from mountedVolumes(), without looking it up again.
  virtual std::expected<VolumeValues, SweepError> volumeValues(const VolumeMount& volume) {
    return volumeValues(volume.url);
  }

  /// The current user's home folder.
  virtual FileUrl homeFolder() = 0;

  /// The current instant of a monotonic clock; cheap enough to be asked after every file. Millisecond precision
  /// suffices.
  virtual Instant now() = 0;

  /// A sort key of `name` in the user's locale, case-insensitive: a name orders before another exactly when its key
  /// is less by bytes; names that compare equal have equal keys. Any bytes have a key (invalid UTF-8 included).
  virtual std::string nameSortKey(std::string_view name) = 0;

  /// Lowers the calling thread's processor and disk priority below the interface's. Best effort.
  virtual void enterUtilityPriority() noexcept = 0;
};

}  // namespace dunmere
