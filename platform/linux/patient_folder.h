// PatientFolder: an open folder that lets nobody wait long for an answer.
#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "engine/file_system.h"
#include "platform/linux/linux_open_folder.h"
#include "platform/linux/local_mounts.h"
#include "platform/posix/patience.h"

namespace dunmere {

/// A folder for the thread that must not freeze: one whose file system may stop answering, as a share does when its
/// server goes away, is asked with patience, and so is a link that may lead into such a one. No answer in time is
/// ETIMEDOUT, missing attributes, or a link that cannot be resolved; further questions then fail at once, as long as
/// the one before is still stuck. Must not outlive `patience`.
class PatientFolder final : public OpenFolder {
 public:
  /// Opens `url` for a listing, without asking anybody to wait when it lies on one of `localMounts`, to which the mount
  /// is added if it is local. `descriptors` and `localMounts` must outlive the folder and every question that is stuck.
  static std::expected<std::shared_ptr<OpenFolder>, SweepError> open(FolderDescriptors& descriptors, Patience& patience,
                                                                     LocalMounts& localMounts, const FileUrl& url);

  std::expected<void, SweepError> readEntries(EntryBatch& batch) override;
  std::optional<FolderStamp> stamp() override;
  std::expected<void, SweepError> measure(EntryBatch& batch) override;
  std::expected<std::shared_ptr<OpenFolder>, SweepError> openChild(std::string_view name) override;
  std::optional<EntryAttributes> attributes(std::string_view name) override;
  LinkTarget resolveLink(std::string_view name) override;

  PatientFolder(Patience& patience, FileUrl url, std::shared_ptr<LinuxOpenFolder> folder, bool isLocal)
      : patience_(patience), url_(std::move(url)), folder_(std::move(folder)), isLocal_(isLocal) {}

 private:
  using Fill = std::expected<void, SweepError> (OpenFolder::*)(EntryBatch&);

  std::expected<void, SweepError> askToFill(Fill fill, EntryBatch& batch);
  template <typename Answer>
  std::expected<Answer, int> askPatiently(const std::string& place, std::function<Answer()> question);
  template <typename Answer>
  std::expected<Answer, int> ask(std::function<Answer()> question);

  Patience& patience_;
  const FileUrl url_;
  const std::shared_ptr<LinuxOpenFolder> folder_;
  const bool isLocal_;
};

}  // namespace dunmere
