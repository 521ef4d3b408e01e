#include "bench/regular_file_system.h"

#include <algorithm>
#include <cerrno>
#include <string>

namespace dunmere::bench {
namespace {

constexpr std::int64_t kFileBytes = 4096;

/// A folder of the tree: two templates and how many levels of folders follow below it.
class RegularFolder : public OpenFolder {
 public:
  RegularFolder(const EntryBatch& withFolders, const EntryBatch& filesOnly, std::int64_t levelsBelow)
      : withFolders_(withFolders), filesOnly_(filesOnly), levelsBelow_(levelsBelow) {}

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override {
    batch.clear();
    if (!read_) batch = levelsBelow_ > 0 ? withFolders_ : filesOnly_;
    read_ = true;
    return {};
  }

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view) override {
    return std::make_shared<RegularFolder>(withFolders_, filesOnly_, levelsBelow_ - 1);
  }

  std::optional<EntryAttributes> attributes(std::string_view) override { return std::nullopt; }

  LinkTarget resolveLink(std::string_view) override { return {}; }

 private:
  const EntryBatch& withFolders_;
  const EntryBatch& filesOnly_;
  std::int64_t levelsBelow_;
  bool read_ = false;
};

}  // namespace

RegularFileSystem::RegularFileSystem(const Shape& shape) : shape_(shape) {
  for (std::int64_t number = 0; number < shape.filesPerFolder; ++number) {
    const EntryAttributes file{.kind = EntryKind::regularFile, .allocatedBytes = kFileBytes * (number % 7)};
    files_.add("ordinary file " + std::to_string(number), file);
  }
  filesAndFolders_ = files_;
  for (std::int64_t number = 0; number < shape.foldersPerFolder; ++number) {
    filesAndFolders_.add("folder " + std::to_string(number), {.kind = EntryKind::folder});
  }
}

std::int64_t RegularFileSystem::fileCount() const {
  std::int64_t folders = 0;
  std::int64_t onLevel = 1;
  for (std::int64_t level = 0; level <= shape_.levels; ++level) {
    folders += onLevel;
    onLevel *= shape_.foldersPerFolder;
  }
  return folders * shape_.filesPerFolder;
}

std::expected<std::shared_ptr<OpenFolder>, SweepError> RegularFileSystem::openFolder(const FileUrl& url, EntryDetail) {
  const std::string key = url.key();
  const std::int64_t depth = key == "/" ? 0 : std::count(key.begin(), key.end(), '/');
  return std::make_shared<RegularFolder>(filesAndFolders_, files_, shape_.levels - depth);
}

std::expected<VolumeValues, SweepError> RegularFileSystem::volumeValues(const FileUrl& url) {
  return std::unexpected(
      SweepError{SweepAttempt::openFolder, url, std::error_code(ENOTSUP, std::generic_category()), {}});
}

}  // namespace dunmere::bench
