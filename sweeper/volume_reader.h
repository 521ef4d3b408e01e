// VolumeReader: lists the drives in the background, each as soon as it answers.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "engine/file_system.h"
#include "engine/sweeper_values.h"
#include "sweeper/answer_queue.h"
#include "sweeper/background.h"

namespace dunmere {

/// One listing of the drives; an answer that comes after it is gone is dropped. Main thread.
class VolumeReader : public std::enable_shared_from_this<VolumeReader> {
 public:
  /// The file system and the background must outlive every question.
  static std::shared_ptr<VolumeReader> start(FileSystem& fileSystem, Background& background,
                                             const std::shared_ptr<AnswerQueue>& answers);

  /// What is known by now, sorted by name: a drive that has not answered yet has the name that the table of mounts
  /// tells, and 0 total bytes.
  std::optional<std::vector<SweeperVolume>> takeNews();
  /// Whether all have answered.
  bool isDone() const { return open_ == 0; }

 private:
  struct Drive {
    VolumeMount candidate;
    bool hasAnswered = false;
    std::optional<SweeperVolume> volume;
  };

  VolumeReader(FileSystem& fileSystem, Background& background, std::shared_ptr<AnswerQueue> answers);

  template <typename Result>
  void ask(const std::string& place, std::function<Result(FileSystem&)> question,
           void (VolumeReader::*apply)(std::size_t, Result), std::size_t drive = 0);
  void readTable();
  void applyTable(std::size_t, std::optional<std::vector<VolumeMount>> candidates);
  void applyVolume(std::size_t drive, std::optional<SweeperVolume> volume);
  void applyFallback(std::size_t, std::vector<SweeperVolume> volumes);
  void fallBackIfEmpty();

  FileSystem& fileSystem_;
  Background& background_;
  const std::shared_ptr<AnswerQueue> answers_;
  std::vector<Drive> drives_;
  std::optional<std::vector<SweeperVolume>> fallback_;
  bool hasNews_ = false;
  std::size_t open_ = 0;  // questions
};

}  // namespace dunmere
