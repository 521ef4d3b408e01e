#include "engine/scan/folder_reading.h"

#include <algorithm>
#include <utility>

#include "engine/inventory/packed_files.h"
#include "engine/scan/package_names.h"

namespace dunmere {

namespace {

bool isPackage(std::string_view name, const EntryAttributes& attributes) {
  return attributes.isPackage || isPackageName(name);
}

}  // namespace

void FolderNames::add(std::string piece) {
  bytes_ += piece.size();
  pieces_.push_back(std::move(piece));
}

std::string FolderNames::take() {
  std::string& piece = pieces_[piece_];
  const std::size_t slash = piece.find('/', offset_);
  std::string name = piece.substr(offset_, slash - offset_);
  offset_ = slash + 1;
  if (offset_ == piece.size()) {
    std::string().swap(piece);
    ++piece_;
    offset_ = 0;
  }
  return name;
}

void FolderReading::begin(std::shared_ptr<OpenFolder> folder) {
  folder_ = std::move(folder);
  subfolders_ = {};
  failed_ = false;
  read(part_);
}

void FolderReading::begin(OpenFolder& parent, std::string_view name) {
  auto opened = parent.openChild(name);
  begin(opened ? std::move(*opened) : nullptr);
}

void FolderReading::begin(FolderRest rest) {
  folder_ = std::move(rest.folder);
  subfolders_ = std::move(rest.subfolders);
  failed_ = false;
  part_ = std::move(rest.next);
}

bool FolderReading::readOn() {
  next_.clear();
  if (part_.empty()) return false;
  keepSubfolders();
  read(next_);
  return !next_.empty();
}

FolderRest FolderReading::takeRest() {
  return {folder_, std::exchange(next_, {}), takeSubfolders()};
}

void FolderReading::measure() {
  files_.clear();
  if (part_.empty()) return;
  if (folder_->measure(part_)) {
    keepFiles();
  } else {
    failed_ = true;
  }
}

void FolderReading::read(EntryBatch& batch) {
  if (folder_ && folder_->readEntries(batch)) return;
  failed_ = true;
  batch.clear();
}

void FolderReading::keepSubfolders() {
  std::string names;
  for (const EntryBatch::Entry& entry : part_.entries()) {
    const std::string_view name = part_.name(entry);
    if (entry.attributes.kind == EntryKind::folder && !isPackage(name, entry.attributes)) (names += name) += '/';
  }
  if (!names.empty()) subfolders_.add(std::move(names));
}

void FolderReading::keepFiles() {
  for (const EntryBatch::Entry& entry : part_.entries()) {
    if (entry.attributes.kind != EntryKind::regularFile) continue;
    // A file system may report any size; less than nothing is none.
    appendPackedFile(files_, part_.name(entry), std::max<std::int64_t>(entry.attributes.countedBytes(), 0));
  }
}

}  // namespace dunmere
