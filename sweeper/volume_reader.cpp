#include "sweeper/volume_reader.h"

#include <algorithm>
#include <string>
#include <utility>

#include "engine/disk_sweeper_scan.h"
#include "sweeper/memory_retry.h"

namespace dunmere {

std::shared_ptr<VolumeReader> VolumeReader::start(FileSystem& fileSystem, Background& background,
                                                  const std::shared_ptr<AnswerQueue>& answers) {
  const std::shared_ptr<VolumeReader> reader(new VolumeReader(fileSystem, background, answers));
  reader->readTable();
  return reader;
}

VolumeReader::VolumeReader(FileSystem& fileSystem, Background& background, std::shared_ptr<AnswerQueue> answers)
    : fileSystem_(fileSystem), background_(background), answers_(std::move(answers)) {}

/// Has `apply` called with the answer, unless this listing is gone by then.
template <typename Result>
void VolumeReader::ask(const std::string& place, std::function<Result(FileSystem&)> question,
                       void (VolumeReader::*apply)(std::size_t, Result), std::size_t drive) {
  ++open_;
  background_.run(place, [&fileSystem = fileSystem_, question = std::move(question), apply, drive, answers = answers_,
                          reader = weak_from_this()] {
    Result result;
    untilMemoryAllows([&] { result = question(fileSystem); });
    answers->put([reader, apply, drive, result = std::move(result)]() mutable {
      const std::shared_ptr<VolumeReader> asker = reader.lock();
      if (!asker) return;
      --asker->open_;
      (*asker.*apply)(drive, std::move(result));
      asker->hasNews_ = true;
    });
  });
}

void VolumeReader::readTable() {
  ask<std::optional<std::vector<VolumeMount>>>("", &DiskSweeperScan::volumeCandidates, &VolumeReader::applyTable);
}

void VolumeReader::applyTable(std::size_t, std::optional<std::vector<VolumeMount>> candidates) {
  if (candidates) {
    for (VolumeMount& candidate : *candidates) drives_.push_back({std::move(candidate), false, {}});
  }
  for (std::size_t drive = 0; drive < drives_.size(); ++drive) {
    const VolumeMount& candidate = drives_[drive].candidate;
    const auto measure = [candidate](FileSystem& files) { return DiskSweeperScan::measureVolume(files, candidate); };
    ask<std::optional<SweeperVolume>>(candidate.url.bytes(), measure, &VolumeReader::applyVolume, drive);
  }
  fallBackIfEmpty();
}

void VolumeReader::applyVolume(std::size_t drive, std::optional<SweeperVolume> volume) {
  drives_[drive].hasAnswered = true;
  drives_[drive].volume = std::move(volume);
  fallBackIfEmpty();
}

void VolumeReader::fallBackIfEmpty() {
  const auto isNone = [](const Drive& drive) { return drive.hasAnswered && !drive.volume; };
  if (!std::ranges::all_of(drives_, isNone)) return;
  ask<std::vector<SweeperVolume>>("home", &DiskSweeperScan::fallbackVolumes, &VolumeReader::applyFallback);
}

void VolumeReader::applyFallback(std::size_t, std::vector<SweeperVolume> volumes) {
  fallback_ = std::move(volumes);
}

std::optional<std::vector<SweeperVolume>> VolumeReader::takeNews() {
  if (!std::exchange(hasNews_, false)) return std::nullopt;
  if (fallback_) return fallback_;
  std::vector<SweeperVolume> volumes;
  for (const Drive& drive : drives_) {
    if (drive.volume) volumes.push_back(*drive.volume);
    if (!drive.hasAnswered) volumes.push_back({drive.candidate.url, drive.candidate.name, 0, 0});
  }
  DiskSweeperScan::arrangeVolumes(fileSystem_, volumes);
  return volumes;
}

}  // namespace dunmere
