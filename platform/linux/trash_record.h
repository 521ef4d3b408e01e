// TrashRecord: the record of one item's origin in a Trash, which also reserves the item's name there.
#pragma once

#include <ctime>
#include <expected>
#include <string>
#include <string_view>
#include <system_error>

#include "platform/linux/trash_folder.h"

namespace dunmere {

/// Written before the item is moved, so that no item is ever in the Trash without its origin. The destructor removes it
/// unless keep() was called. Its folder must outlive it.
class TrashRecord {
 public:
  /// Writes `text` for an item that is to be called `name` in the Trash, down to the disk. Fails with the system's code
  /// (EEXIST when the name is taken) and leaves nothing behind.
  static std::expected<TrashRecord, std::error_code> write(const TrashFolder& trash, const std::string& name,
                                                           const std::string& text);

  TrashRecord(TrashRecord&& other) noexcept;
  TrashRecord& operator=(TrashRecord&&) = delete;
  ~TrashRecord();

  void keep() { folder_ = nullptr; }

 private:
  TrashRecord(const UniqueDescriptor& folder, std::string fileName);

  const UniqueDescriptor* folder_;  ///< null once the record is kept
  std::string fileName_;
};

/// The file name of the record of the item `name` in the Trash.
std::string recordName(const std::string& name);

/// Writes all of `text` to the open file, down to the disk. Fails with the system's code.
std::error_code writeToDisk(int file, std::string_view text);

/// What a record says: the place of the item, an absolute path without links, and the time in the user's time zone.
std::string trashRecordText(const TrashFolder& trash, const std::string& itemPath, std::time_t now);

/// The name that an item gets in the Trash at the `attempt`-th try, from 1 on: its own name, then with a number. Cut
/// between characters where the name of its record would not fit otherwise; the record has the whole one.
std::string nameInTrash(const std::string& itemName, int attempt);

}  // namespace dunmere
