// floor: reads a tree with getdents64 and one statx a file, and nothing else: the least time that any scan of it takes.
//
// Each folder is opened by name inside its parent, read with a buffer of 64 KiB, and each regular file in it is asked
// for its size. Threads share whole folders: the sub-folders that a folder was found to hold go onto one stack, from
// which every thread takes. Nothing is kept but the three sums that are printed.
#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <condition_variable>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <system_error>
#include <thread>
#include <vector>

namespace {

constexpr int kBadUsage = 2;
constexpr std::size_t kBufferBytes = 64 * 1024;
constexpr unsigned kMostThreads = 256;

struct Sums {
  std::int64_t files = 0;
  std::int64_t bytes = 0;  // of disk space
  std::int64_t unreadFolders = 0;
};

/// An open folder, kept while sub-folders of it wait.
class OpenFolder {
 public:
  explicit OpenFolder(int descriptor) : descriptor_(descriptor) {}
  ~OpenFolder() { close(descriptor_); }
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  int descriptor() const { return descriptor_; }

 private:
  int descriptor_;
};

/// The sub-folders of one folder: their names side by side, each ended by a NUL.
struct Subfolders {
  std::shared_ptr<const OpenFolder> parent;
  std::string names;
  std::size_t next = 0;
};

/// What waits to be read. The sub-folders found last are read first, so that few folders stay open.
class Waiting {
 public:
  struct Folder {
    std::shared_ptr<const OpenFolder> parent;
    std::string name;
  };

  void add(Subfolders subfolders) {
    const std::lock_guard lock(mutex_);
    stack_.push_back(std::move(subfolders));
    if (idle_ > 0) changed_.notify_all();
  }

  /// Waits for a folder; false when all threads wait, so that none can come any more.
  bool take(Folder& folder, unsigned threads) {
    std::unique_lock lock(mutex_);
    if (++idle_ == threads) changed_.notify_all();
    changed_.wait(lock, [&] { return !stack_.empty() || idle_ == threads; });
    if (stack_.empty()) return false;
    --idle_;
    Subfolders& last = stack_.back();
    folder.name = last.names.c_str() + last.next;
    last.next += folder.name.size() + 1;
    if (last.next < last.names.size()) {
      folder.parent = last.parent;
    } else {
      folder.parent = std::move(last.parent);
      stack_.pop_back();
    }
    return true;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<Subfolders> stack_;
  unsigned idle_ = 0;
};

class Reader {
 public:
  Reader(Waiting& waiting, unsigned threads) : waiting_(waiting), threads_(threads), buffer_(kBufferBytes) {}

  void run() {
    Waiting::Folder folder;
    while (waiting_.take(folder, threads_)) {
      const int descriptor = openat(folder.parent->descriptor(), folder.name.c_str(),
                                    O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
      folder.parent.reset();
      read(descriptor);
    }
  }

  /// Reads a folder to its end and closes it once its sub-folders have been opened.
  void read(int descriptor) {
    if (descriptor < 0) {
      ++sums_.unreadFolders;
      return;
    }
    const auto folder = std::make_shared<const OpenFolder>(descriptor);
    std::string subfolders;
    ssize_t length = 0;
    while ((length = getdents64(descriptor, buffer_.data(), buffer_.size())) > 0) {
      for (ssize_t offset = 0; offset < length;) {
        const auto* record = reinterpret_cast<const dirent64*>(buffer_.data() + offset);
        offset += record->d_reclen;
        see(descriptor, *record, subfolders);
      }
    }
    if (length < 0) ++sums_.unreadFolders;
    if (!subfolders.empty()) waiting_.add({folder, std::move(subfolders)});
  }

  const Sums& sums() const { return sums_; }

 private:
  void see(int folder, const dirent64& record, std::string& subfolders) {
    if (record.d_type == DT_DIR) {
      if (std::strcmp(record.d_name, ".") == 0 || std::strcmp(record.d_name, "..") == 0) return;
      subfolders.append(record.d_name, std::strlen(record.d_name) + 1);
    } else if (record.d_type == DT_REG) {
      struct statx status;
      constexpr int kFlags = AT_SYMLINK_NOFOLLOW | AT_NO_AUTOMOUNT | AT_STATX_DONT_SYNC;
      if (statx(folder, record.d_name, kFlags, STATX_BLOCKS | STATX_SIZE, &status) != 0) return;
      ++sums_.files;
      sums_.bytes += static_cast<std::int64_t>(status.stx_blocks) * 512;
    }
  }

  Waiting& waiting_;
  const unsigned threads_;
  std::vector<char> buffer_;
  Sums sums_;
};

[[noreturn]] void badUsage() {
  std::fprintf(stderr, "usage: floor ROOT [--threads N]\n  --threads N  1 to %u, 1 without it\n", kMostThreads);
  std::exit(kBadUsage);
}

unsigned parseThreads(std::string_view text) {
  unsigned threads = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), threads);
  if (error != std::errc() || end != text.data() + text.size() || threads == 0 || threads > kMostThreads) badUsage();
  return threads;
}

/// A folder stays open for every level above the one being read.
void allowManyDescriptors() {
  rlimit limit{};
  if (getrlimit(RLIMIT_NOFILE, &limit) != 0) return;
  limit.rlim_cur = limit.rlim_max;
  setrlimit(RLIMIT_NOFILE, &limit);
}

Sums readTree(int root, unsigned threads) {
  Waiting waiting;
  std::vector<std::unique_ptr<Reader>> readers;
  for (unsigned i = 0; i < threads; ++i) readers.push_back(std::make_unique<Reader>(waiting, threads));
  readers.front()->read(root);
  std::vector<std::thread> others;
  for (unsigned i = 1; i < threads; ++i) others.emplace_back([&reader = *readers[i]] { reader.run(); });
  readers.front()->run();
  for (std::thread& other : others) other.join();
  Sums total;
  for (const auto& reader : readers) {
    total.files += reader->sums().files;
    total.bytes += reader->sums().bytes;
    total.unreadFolders += reader->sums().unreadFolders;
  }
  return total;
}

}  // namespace

int main(int argc, char** argv) {
  const bool withThreads = argc == 4 && std::strcmp(argv[2], "--threads") == 0;
  if (argc != 2 && !withThreads) badUsage();
  const unsigned threads = withThreads ? parseThreads(argv[3]) : 1;
  allowManyDescriptors();
  const int root = open(argv[1], O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (root < 0) {
    std::fprintf(stderr, "floor: cannot open %s: %s\n", argv[1], std::strerror(errno));
    return 1;
  }
  const Sums sums = readTree(root, threads);
  std::printf("{\"fileCount\":%lld,\"totalFileBytes\":%lld,\"unreadFolders\":%lld}\n",
              static_cast<long long>(sums.files), static_cast<long long>(sums.bytes),
              static_cast<long long>(sums.unreadFolders));
  return 0;
}
