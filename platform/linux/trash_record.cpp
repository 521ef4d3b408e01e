#include "platform/linux/trash_record.h"

#include <fcntl.h>
#include <limits.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string_view>
#include <utility>

#include "platform/posix/paths.h"
#include "platform/posix/system_values.h"

namespace dunmere {

namespace {

constexpr std::string_view kRecordSuffix = ".trashinfo";

bool continuesCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

std::string cutTo(const std::string& name, std::size_t length) {
  constexpr std::size_t kLongestCharacter = 4;
  if (name.size() <= length) return name;
  std::size_t end = length;
  while (continuesCharacter(name[end]) && length - end < kLongestCharacter) --end;
  return name.substr(0, end);
}

/// In the user's time zone, "2024-12-31T23:59:59".
std::string dateText(std::time_t now) {
  std::tm local{};
  localtime_r(&now, &local);
  std::array<char, 32> text;
  return std::string(text.data(), std::strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &local));
}

}  // namespace

std::expected<TrashRecord, std::error_code> TrashRecord::write(const TrashFolder& trash, const std::string& name,
                                                               const std::string& text) {
  const std::string fileName = recordName(name);
  const UniqueDescriptor file(
      openat(trash.info.get(), fileName.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!file) return systemFailure(errno);
  TrashRecord record(trash.info, fileName);
  if (const auto code = writeToDisk(file.get(), text)) return std::unexpected(code);
  return record;
}

TrashRecord::TrashRecord(const UniqueDescriptor& folder, std::string fileName)
    : folder_(&folder), fileName_(std::move(fileName)) {}

TrashRecord::TrashRecord(TrashRecord&& other) noexcept
    : folder_(std::exchange(other.folder_, nullptr)), fileName_(std::move(other.fileName_)) {}

TrashRecord::~TrashRecord() {
  // If this fails, a record without an item stays, which does no harm.
  if (folder_ != nullptr) unlinkat(folder_->get(), fileName_.c_str(), 0);
}

std::string recordName(const std::string& name) {
  return name + std::string(kRecordSuffix);
}

std::error_code writeToDisk(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return systemCode(errno);
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  // Otherwise a power failure could keep the move and lose the record. EINVAL: the file system has no fsync.
  if (fsync(file) != 0 && errno != EINVAL) return systemCode(errno);
  return {};
}

std::string trashRecordText(const TrashFolder& trash, const std::string& itemPath, std::time_t now) {
  std::string_view origin = itemPath;
  if (!trash.top.empty()) origin.remove_prefix(trash.top == "/" ? 1 : trash.top.size() + 1);
  return "[Trash Info]\nPath=" + percentEncoded(origin) + "\nDeletionDate=" + dateText(now) + "\n";
}

std::string nameInTrash(const std::string& itemName, int attempt) {
  const std::string number = attempt == 1 ? "" : "." + std::to_string(attempt);
  return cutTo(itemName, NAME_MAX - kRecordSuffix.size() - number.size()) + number;
}

}  // namespace dunmere
