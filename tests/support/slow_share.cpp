#include "tests/support/slow_share.h"

#include <dirent.h>
#include <linux/fuse.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <climits>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "tests/support/dead_share.h"

namespace dunmere::test {

namespace {

constexpr std::uint32_t kMostWritten = 1U << 16;
constexpr std::size_t kLongestQuestion = kMostWritten + 4096;

template <typename Value>
void append(std::vector<std::byte>& bytes, const Value& value) {
  const auto view = std::as_bytes(std::span(&value, 1));
  bytes.insert(bytes.end(), view.begin(), view.end());
}

fuse_attr attributesOf(const struct stat& status) {
  fuse_attr attributes{};
  attributes.ino = status.st_ino;
  attributes.size = static_cast<std::uint64_t>(status.st_size);
  attributes.blocks = static_cast<std::uint64_t>(status.st_blocks);
  attributes.mtime = static_cast<std::uint64_t>(status.st_mtim.tv_sec);
  attributes.ctime = static_cast<std::uint64_t>(status.st_ctim.tv_sec);
  attributes.mode = status.st_mode;
  attributes.nlink = static_cast<std::uint32_t>(status.st_nlink);
  attributes.blksize = static_cast<std::uint32_t>(status.st_blksize);
  return attributes;
}

/// As the kernel writes it: a header, and what belongs to the kind of question.
struct Question {
  std::array<std::byte, kLongestQuestion + 1> bytes;  // ended by a zero

  fuse_in_header header() const { return as<fuse_in_header>(0); }

  template <typename Value>
  Value as(std::size_t offset = sizeof(fuse_in_header)) const {
    Value value;
    std::memcpy(&value, bytes.data() + offset, sizeof value);
    return value;
  }

  std::string text() const { return std::string(reinterpret_cast<const char*>(bytes.data() + sizeof(fuse_in_header))); }
};

/// Negative: the error.
std::vector<std::byte> answer(std::uint64_t unique, int error, const std::vector<std::byte>& content = {}) {
  std::vector<std::byte> bytes;
  const auto length = static_cast<std::uint32_t>(sizeof(fuse_out_header) + content.size());
  append(bytes, fuse_out_header{.len = length, .error = error, .unique = unique});
  bytes.insert(bytes.end(), content.begin(), content.end());
  return bytes;
}

template <typename Value>
std::vector<std::byte> answerWith(std::uint64_t unique, const Value& value) {
  std::vector<std::byte> content;
  append(content, value);
  return answer(unique, 0, content);
}

class Server {
 public:
  Server(const std::string& folder, UniqueDescriptor device, SlowShareOptions options,
         std::atomic<std::size_t>& questions)
      : options_(options), device_(std::move(device)), questions_(questions), paths_{"", folder} {}

  /// Serves until the share is unmounted.
  void run() {
    std::thread([this] { send(); }).detach();
    receive();
  }

 private:
  using Clock = std::chrono::steady_clock;
  using Bytes = std::vector<std::byte>;
  struct Answer {
    Clock::time_point due;
    Bytes bytes;
  };

  void receive();
  void send();
  Bytes answerTo(const Question& question);
  Bytes lookUp(const Question& question);
  Bytes openFolder(const Question& question);
  Bytes readFolder(const Question& question);
  const std::string& pathOf(std::uint64_t node) const { return paths_.at(node); }
  std::uint64_t nodeOf(const std::string& path);

  const SlowShareOptions options_;
  const UniqueDescriptor device_;
  std::atomic<std::size_t>& questions_;
  // The receiving thread's alone:
  std::vector<std::string> paths_;  // by node; the first one stands for none
  std::map<std::string, std::uint64_t> nodes_;
  std::vector<Bytes> folders_;  // by handle: entries as they are sent
  Clock::time_point lastDue_;

  std::mutex mutex_;
  std::condition_variable came_;
  std::deque<Answer> answers_;  // under mutex_
};

void Server::receive() {
  const auto question = std::make_unique<Question>();
  for (;;) {
    const ssize_t length = ::read(device_.get(), question->bytes.data(), kLongestQuestion);
    if (length < 0 && (errno == EINTR || errno == EAGAIN || errno == ENOENT)) continue;
    if (length < static_cast<ssize_t>(sizeof(fuse_in_header))) return;  // unmounted
    question->bytes[static_cast<std::size_t>(length)] = std::byte{0};
    ++questions_;
    const Clock::time_point now = Clock::now();
    Bytes bytes = answerTo(*question);
    if (bytes.empty()) continue;
    lastDue_ = options_.isSerial ? std::max(now, lastDue_) + options_.delay : now + options_.delay;
    const std::lock_guard lock(mutex_);
    answers_.push_back({lastDue_, std::move(bytes)});
    came_.notify_one();
  }
}

void Server::send() {
  std::unique_lock lock(mutex_);
  for (;;) {
    came_.wait(lock, [this] { return !answers_.empty(); });
    const Answer next = std::move(answers_.front());
    answers_.pop_front();
    lock.unlock();
    std::this_thread::sleep_until(next.due);
    // Nobody may be waiting for it any more.
    [[maybe_unused]] const ssize_t written = ::write(device_.get(), next.bytes.data(), next.bytes.size());
    lock.lock();
  }
}

/// Empty for a question that wants no answer.
Server::Bytes Server::answerTo(const Question& question) {
  const fuse_in_header header = question.header();
  switch (header.opcode) {
    case FUSE_INIT: {
      fuse_init_out values{};
      values.major = FUSE_KERNEL_VERSION;
      values.minor = FUSE_KERNEL_MINOR_VERSION;
      values.max_readahead = kMostWritten;
      values.flags = FUSE_ASYNC_READ | FUSE_PARALLEL_DIROPS;
      values.max_background = 512;
      values.congestion_threshold = 512;
      values.max_write = kMostWritten;
      values.time_gran = 1'000'000'000;
      return answerWith(header.unique, values);
    }
    case FUSE_FORGET:
    case FUSE_BATCH_FORGET:
    case FUSE_INTERRUPT:
      return {};
    case FUSE_LOOKUP:
      return lookUp(question);
    case FUSE_GETATTR: {
      struct stat status{};
      if (::lstat(pathOf(header.nodeid).c_str(), &status) != 0) return answer(header.unique, -errno);
      return answerWith(header.unique, fuse_attr_out{.attr_valid = options_.trustsNames ? 0U : 1U,
                                                     .attr_valid_nsec = 0,
                                                     .dummy = 0,
                                                     .attr = attributesOf(status)});
    }
    case FUSE_OPENDIR:
      return openFolder(question);
    case FUSE_READDIR:
      return readFolder(question);
    case FUSE_RELEASEDIR:
      folders_.at(question.as<fuse_release_in>().fh) = {};
      return answer(header.unique, 0);
    case FUSE_READLINK: {
      std::vector<std::byte> target(PATH_MAX);
      const ssize_t length =
          ::readlink(pathOf(header.nodeid).c_str(), reinterpret_cast<char*>(target.data()), target.size());
      if (length < 0) return answer(header.unique, -errno);
      target.resize(static_cast<std::size_t>(length));
      return answer(header.unique, 0, target);
    }
    case FUSE_STATFS: {
      struct statvfs space{};
      if (::statvfs(pathOf(header.nodeid).c_str(), &space) != 0) return answer(header.unique, -errno);
      fuse_statfs_out values{};
      values.st.blocks = space.f_blocks;
      values.st.bfree = space.f_bfree;
      values.st.bavail = space.f_bavail;
      values.st.bsize = static_cast<std::uint32_t>(space.f_bsize);
      values.st.frsize = static_cast<std::uint32_t>(space.f_frsize);
      values.st.namelen = NAME_MAX;
      if (options_.claimedBlocks > 0) {
        values.st.blocks = options_.claimedBlocks;
        values.st.frsize = 4096;
      }
      return answerWith(header.unique, values);
    }
    default:
      return answer(header.unique, -ENOSYS);
  }
}

Server::Bytes Server::lookUp(const Question& question) {
  const fuse_in_header header = question.header();
  const std::string path = pathOf(header.nodeid) + "/" + question.text();
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return answer(header.unique, -errno);
  fuse_entry_out entry{};
  entry.nodeid = nodeOf(path);
  entry.entry_valid = options_.trustsNames ? 3600 : 1;
  entry.attr_valid = options_.trustsNames ? 0 : 1;
  entry.attr = attributesOf(status);
  return answerWith(header.unique, entry);
}

std::uint64_t Server::nodeOf(const std::string& path) {
  const auto [node, isNew] = nodes_.try_emplace(path, paths_.size());
  if (isNew) paths_.push_back(path);
  return node->second;
}

Server::Bytes Server::openFolder(const Question& question) {
  const fuse_in_header header = question.header();
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir(pathOf(header.nodeid).c_str()), &::closedir);
  if (!folder) return answer(header.unique, -errno);
  Bytes entries;
  while (const dirent* entry = ::readdir(folder.get())) {
    const std::string_view name = entry->d_name;
    const std::size_t length = FUSE_DIRENT_ALIGN(FUSE_NAME_OFFSET + name.size());
    fuse_dirent head{};
    head.ino = entry->d_ino;
    head.off = entries.size() + length;
    head.namelen = static_cast<std::uint32_t>(name.size());
    head.type = options_.tellsKinds ? entry->d_type : static_cast<std::uint32_t>(DT_UNKNOWN);
    const std::size_t begin = entries.size();
    entries.resize(begin + length);
    std::memcpy(entries.data() + begin, &head, FUSE_NAME_OFFSET);
    std::memcpy(entries.data() + begin + FUSE_NAME_OFFSET, name.data(), name.size());
  }
  folders_.push_back(std::move(entries));
  return answerWith(header.unique, fuse_open_out{.fh = folders_.size() - 1, .open_flags = 0, .padding = 0});
}

Server::Bytes Server::readFolder(const Question& question) {
  const auto wanted = question.as<fuse_read_in>();
  const Bytes& entries = folders_.at(wanted.fh);
  std::size_t end = wanted.offset;
  while (end < entries.size()) {
    fuse_dirent head{};
    std::memcpy(&head, entries.data() + end, FUSE_NAME_OFFSET);
    if (head.off - wanted.offset > wanted.size) break;
    end = head.off;
  }
  const auto at = [&entries](std::size_t offset) { return entries.begin() + static_cast<std::ptrdiff_t>(offset); };
  return answer(question.header().unique, 0, Bytes(at(wanted.offset), at(end)));
}

}  // namespace

SlowShare::SlowShare(const std::string& folder, const std::string& mountPoint, const std::string& nodePath,
                     SlowShareOptions options) {
  void* const shared = ::mmap(nullptr, sizeof *questions_, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) throw std::system_error(errno, std::generic_category(), "mmap");
  questions_ = new (shared) std::atomic<std::size_t>(0);
  UniqueDescriptor device = mountShare(mountPoint, nodePath);
  server_ = ::fork();
  if (server_ < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (server_ > 0) return;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);
  Server(folder, std::move(device), options, *questions_).run();
  ::_exit(0);
}

SlowShare::~SlowShare() {
  ::kill(server_, SIGKILL);
  ::waitpid(server_, nullptr, 0);
}

}  // namespace dunmere::test
