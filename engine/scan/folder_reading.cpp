#include "engine/scan/folder_reading.h"

#include <algorithm>
#include <utility>

#include "engine/ascii.h"
#include "engine/inventory/packed_files.h"

namespace dunmere {
namespace {

/// Whether the folder was removed meanwhile: then it holds nothing, which is no failure to read it.
bool isGone(const SweepError& error) {
  return error.code == std::errc::no_such_file_or_directory;
}

}  // namespace

bool isPackageName(std::string_view name) {
  return hasExtension(name, ".app.appex.bundle.kext.mdimporter.plugin.prefpane.qlgenerator.saver.scptd.wdgt.xpc.");
}

void FolderNames::add(std::string names) {
  bytes_ += names.size();
  chunks_.push_back(std::move(names));
}

std::string FolderNames::take() {
  std::string& chunk = chunks_[chunk_];
  const std::size_t slash = chunk.find('/', offset_);
  std::string name = chunk.substr(offset_, slash - offset_);
  offset_ = slash + 1;
  if (offset_ == chunk.size()) {
    std::string().swap(chunk);
    ++chunk_;
    offset_ = 0;
  }
  return name;
}

void FolderReading::begin(std::shared_ptr<OpenFolder> folder) {
  folder_ = std::move(folder);
  subfolders_ = {};
  failed_ = false;
  read(chunk_);
}

void FolderReading::begin(OpenFolder& parent, std::string_view name) {
  auto opened = parent.openChild(name);
  begin(opened ? std::move(*opened) : nullptr);
  if (!opened && !isGone(opened.error())) fail(parent);
}

void FolderReading::begin(FolderRest rest) {
  folder_ = std::move(rest.folder);
  subfolders_ = std::move(rest.subfolders);
  failed_ = false;
  chunk_ = std::move(rest.next);
}

bool FolderReading::readOn() {
  next_.clear();
  if (chunk_.empty()) return false;
  keepSubfolders();
  read(next_);
  return !next_.empty();
}

FolderRest FolderReading::takeRest() {
  return {folder_, std::exchange(next_, {}), takeSubfolders()};
}

void FolderReading::measure() {
  files_.clear();
  if (chunk_.empty()) return;
  if (folder_->measure(chunk_)) {
    keepFiles();
  } else {
    fail(*folder_);
  }
}

void FolderReading::read(EntryBatch& batch) {
  if (folder_ && folder_->readEntries(batch)) return;
  if (folder_) fail(*folder_);
  batch.clear();
}

/// Notes that something in `where` could not be read.
void FolderReading::fail(OpenFolder& where) {
  failed_ = failed_ || where.takesDiskSpace();
}

void FolderReading::keepSubfolders() {
  std::string names;
  for (const EntryBatch::Entry& entry : chunk_.entries()) {
    if (entry.attributes.kind != EntryKind::folder || entry.attributes.isPackage) continue;
    const std::string_view name = chunk_.name(entry);
    if (!isPackageName(name)) (names += name) += '/';
  }
  if (!names.empty()) subfolders_.add(std::move(names));
}

void FolderReading::keepFiles() {
  for (const EntryBatch::Entry& entry : chunk_.entries()) {
    if (entry.attributes.kind != EntryKind::regularFile) continue;
    // A file system may report any size, even a negative one.
    appendPackedFile(files_, chunk_.name(entry), std::max<std::int64_t>(entry.attributes.countedBytes(), 0));
  }
}

}  // namespace dunmere
