#include "tests/support/plain_count.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <utility>

#include "engine/scan/folder_reading.h"
#include "platform/posix/unique_descriptor.h"

namespace dunmere::test {

namespace {

constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// Holds one folder open at a time, so that no depth is too deep.
class Walk {
 public:
  explicit Walk(const std::string& root) : path_(root) {
    enter(UniqueDescriptor(::open(root.c_str(), kFolderFlags)), "");
    while (!levels_.empty()) {
      std::vector<std::string>& left = levels_.back().foldersLeft;
      if (left.empty()) {
        leave();
      } else {
        const std::string name = std::exchange(left.back(), {});
        left.pop_back();
        enter(UniqueDescriptor(::openat(folder_.get(), name.c_str(), kFolderFlags)), "/" + name);
      }
    }
  }

  PlainCount count;

 private:
  struct Level {
    std::size_t pathLength = 0;  // of the folder above
    std::vector<std::string> foldersLeft;
    std::int64_t bytes = 0;
    bool holdsFiles = false;  // counted ones, at any depth
  };

  void enter(UniqueDescriptor folder, const std::string& step) {
    if (!folder) {
      count.hadReadErrors = true;
      return;
    }
    folder_ = std::move(folder);
    levels_.push_back({path_.size(), {}, 0, false});
    path_ += step;
    count.folders.push_back(path_);
    DIR* const stream = ::fdopendir(::dup(folder_.get()));
    while (const dirent* entry = ::readdir(stream)) see(*entry);
    ::closedir(stream);
  }

  void see(const dirent& entry) {
    const std::string name = entry.d_name;
    if (name == "." || name == "..") return;
    if (entry.d_type == DT_DIR) {
      if (!isPackageName(name)) levels_.back().foldersLeft.push_back(name);
      return;
    }
    struct stat status{};
    if (::fstatat(folder_.get(), name.c_str(), &status, AT_SYMLINK_NOFOLLOW) != 0 || !S_ISREG(status.st_mode)) return;
    const std::int64_t size = std::int64_t{512} * status.st_blocks;
    ++count.fileCount;
    count.totalBytes += size;
    count.bytes[path_ + "/" + name] = size;
    levels_.back().bytes += size;
    levels_.back().holdsFiles = true;
  }

  void leave() {
    const Level left = std::move(levels_.back());
    levels_.pop_back();
    if (left.holdsFiles) count.bytes[path_] = left.bytes;
    path_.resize(left.pathLength);
    if (levels_.empty()) return;
    levels_.back().bytes += left.bytes;
    levels_.back().holdsFiles |= left.holdsFiles;
    // A folder without the right to be entered does not lead back up either.
    UniqueDescriptor above(::openat(folder_.get(), "..", kFolderFlags));
    folder_ = above ? std::move(above) : UniqueDescriptor(::open(path_.c_str(), kFolderFlags));
  }

  std::string path_;
  UniqueDescriptor folder_;
  std::vector<Level> levels_;
};

}  // namespace

PlainCount plainCount(const std::string& root) {
  return Walk(root).count;
}

}  // namespace dunmere::test
