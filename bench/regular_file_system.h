// RegularFileSystem: a made-up tree that costs next to nothing to read, so that a benchmark times the engine alone.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <vector>

#include "engine/file_system.h"

namespace dunmere::bench {

/// Every folder above the last level holds the same sub-folders and every folder the same files. Knows no volumes and
/// no links.
class RegularFileSystem : public FileSystem {
 public:
  struct Shape {
    std::int64_t levels = 0;            ///< folder levels below the root
    std::int64_t foldersPerFolder = 0;  ///< in each folder above the last level
    std::int64_t filesPerFolder = 0;
  };

  explicit RegularFileSystem(const Shape& shape);

  std::int64_t fileCount() const;  ///< files in the whole tree

  /// From now on each asking of the clock moves it on by `step`.
  void setClockStep(Instant step) { step_ = step.count(); }

  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override;
  std::optional<std::vector<VolumeMount>> mountedVolumes() override { return std::nullopt; }
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override;
  FileUrl homeFolder() override { return FileUrl("/"); }
  Instant now() override { return Instant(now_ += step_); }
  std::string nameSortKey(std::string_view name) override { return std::string(name); }
  void enterUtilityPriority() noexcept override {}

 private:
  Shape shape_;
  EntryBatch files_;
  EntryBatch filesAndFolders_;
  std::atomic<Instant::rep> now_{0};
  std::atomic<Instant::rep> step_{0};
};

}  // namespace dunmere::bench
