#include "engine/folder_reading.h"

#include <algorithm>
#include <utility>

#include "engine/package_names.h"
#include "engine/packed_files.h"

namespace dunmere {

namespace {

bool isPackage(std::string_view name, const EntryAttributes& attributes) {
  return attributes.isPackage || isPackageName(name);
}

}  // namespace

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
}

void FolderReading::begin(OpenFolder& parent, std::string_view name) {
  auto opened = parent.openChild(name);
  begin(opened ? std::move(*opened) : nullptr);
}

FolderReading::Progress FolderReading::readBatch() {
  files_.clear();
  folderNames_.clear();
  if (!folder_ || !folder_->readEntries(batch_)) return Progress::failed;
  if (batch_.empty()) return Progress::ended;
  keepEntries();
  return Progress::more;
}

void FolderReading::keepEntries() {
  for (const EntryBatch::Entry& entry : batch_.entries()) {
    const std::string_view name = batch_.name(entry);
    switch (entry.attributes.kind) {
      case EntryKind::regularFile:
        // A file system may report any size; less than nothing is none.
        appendPackedFile(files_, name, std::max<std::int64_t>(entry.attributes.countedBytes(), 0));
        break;
      case EntryKind::folder:
        if (!isPackage(name, entry.attributes)) (folderNames_ += name) += '/';
        break;
      case EntryKind::symbolicLink:
      case EntryKind::other:
        break;
    }
  }
  if (!folderNames_.empty()) subfolders_.add(std::string(folderNames_));
}

}  // namespace dunmere
