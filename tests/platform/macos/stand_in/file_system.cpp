// The platform's file system for tests that read folders as on macOS: folders are macOS's, over the calls acted out in
// attribute_calls.cpp; all else is left out.
#include <algorithm>
#include <cerrno>

#include "platform/macos/macos_open_folder.h"
#include "platform/platform_file_system.h"

namespace dunmere {

namespace {

class StandInFileSystem final : public FileSystem {
 public:
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openFolder(const FileUrl& url, EntryDetail detail) override {
    return MacosOpenFolder::open(descriptors_, url, detail);
  }
  std::optional<std::vector<VolumeMount>> mountedVolumes() override { return std::nullopt; }
  std::expected<VolumeValues, SweepError> volumeValues(const FileUrl& url) override {
    return std::unexpected(
        SweepError{SweepAttempt::openFolder, url, std::make_error_code(std::errc::not_supported), {}});
  }
  FileUrl homeFolder() override { return FileUrl("/"); }
  Instant now() override { return std::chrono::steady_clock::now().time_since_epoch(); }
  std::string nameSortKey(std::string_view name) override { return std::string(name); }
  void enterUtilityPriority() noexcept override {}

 private:
  FolderDescriptors descriptors_{FolderDescriptors::budgetOfProcess()};
};

}  // namespace

std::unique_ptr<FileSystem> makePlatformFileSystem() {
  return std::make_unique<StandInFileSystem>();
}

}  // namespace dunmere
