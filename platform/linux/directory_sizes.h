// The file "directorysizes" of a Trash, from which file managers tell its size without looking through its folders.
#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <string>
#include <string_view>

#include "platform/linux/trash_folder.h"

namespace dunmere {

/// One line of the file.
struct DirectorySize {
  std::int64_t bytes = 0;    ///< the space that the folder takes
  std::time_t recorded = 0;  ///< when its record was last changed; the line counts for that record alone
  std::string name;          ///< in the Trash
};

/// What the file shall say after `text`: the same without what is no line of a folder that `isThere`, and `added`.
/// `text` may be any bytes. Any thread.
std::string directorySizesWith(std::string_view text, const DirectorySize& added,
                               const std::function<bool(const std::string& name)>& isThere);

/// Notes that the folder `name` in the Trash takes `bytes`. Where that fails nothing is noted: who needs the size then
/// counts by himself. Any thread.
void noteDirectorySize(const TrashFolder& trash, const std::string& name, std::int64_t bytes);

}  // namespace dunmere
