#include "tests/platform/linux/trash_room.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <climits>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string_view>

#include "platform/trash.h"

namespace dunmere::test {

TrashRoom::TrashRoom() {
  umask(022);  // some tests look at it as another user
  std::string pattern = testing::TempDir() + "dunmere-trash-XXXXXX";
  if (mkdtemp(pattern.data()) == nullptr) throw std::runtime_error("no private folder for the test");
  // Without links, since records name the physical place.
  root_ = std::filesystem::canonical(pattern).native();
  chmod(root_.c_str(), 0755);
  makeFolder(home());
}

TrashRoom::~TrashRoom() {
  removeTree(root_);
}

void TrashRoom::inRoom(const std::function<void()>& body) const {
  inChildProcess([&] {
    setenv("HOME", home().c_str(), 1);
    setenv("XDG_DATA_HOME", dataHome().c_str(), 1);
    body();
  });
}

int TrashRoom::moveToTrash(const std::string& itemPath) {
  const auto moved = Trash(fileSystem).hold(FileUrl(itemPath))->moveToTrash();
  if (moved) return 0;
  EXPECT_EQ(moved.error().attempt, SweepAttempt::moveToTrash);
  EXPECT_EQ(moved.error().path, FileUrl(itemPath));
  EXPECT_EQ(moved.error().code.category(), std::generic_category());
  volumeName = moved.error().volumeName;
  return moved.error().code.value();
}

std::string TrashRoom::volumeTrash(const std::string& name) const {
  return path(name) + "/.Trash-" + std::to_string(geteuid());
}

void makeFolder(const std::string& path) {
  ASSERT_EQ(mkdir(path.c_str(), 0755), 0) << path;
}

void makeFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary);
  file << content;
  ASSERT_TRUE(file.flush()) << path;
}

void makeLink(const std::string& path, const std::string& target) {
  ASSERT_EQ(symlink(target.c_str(), path.c_str()), 0) << path;
}

std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return std::string(std::istreambuf_iterator<char>(file), {});
}

std::string linkTargetOf(const std::string& path) {
  std::array<char, PATH_MAX> target;
  const ssize_t length = readlink(path.c_str(), target.data(), target.size());
  EXPECT_GE(length, 0) << path;
  return std::string(target.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
}

bool isThere(const std::string& path) {
  struct stat status{};
  return lstat(path.c_str(), &status) == 0;
}

std::vector<std::string> namesIn(const std::string& folder) {
  std::vector<std::string> names;
  DIR* const open = opendir(folder.c_str());
  if (open == nullptr) return names;
  while (const dirent* entry = readdir(open)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  closedir(open);
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> namesOfRecords(const std::string& trash) {
  constexpr std::string_view kSuffix = ".trashinfo";
  std::vector<std::string> names = namesIn(trash + "/info");
  for (std::string& name : names) {
    EXPECT_TRUE(name.ends_with(kSuffix)) << name;
    name.resize(name.size() - std::min(name.size(), kSuffix.size()));
  }
  std::sort(names.begin(), names.end());
  return names;
}

void removeTree(const std::string& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  EXPECT_FALSE(error) << path << ": " << error.message();
}

std::string recordValue(const std::string& record, const std::string& key) {
  std::vector<std::string> values;
  std::istringstream lines(record);
  for (std::string line; std::getline(lines, line);) {
    if (line.starts_with(key + "=")) values.push_back(line.substr(key.size() + 1));
  }
  EXPECT_EQ(values.size(), 1U) << key << " in:\n" << record;
  return values.empty() ? std::string() : values.front();
}

std::string percentDecoded(const std::string& text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const bool escape = text[i] == '%' && i + 2 < text.size();
    bytes += escape ? static_cast<char>(std::stoi(text.substr(i + 1, 2), nullptr, 16)) : text[i];
    if (escape) i += 2;
  }
  return bytes;
}

}  // namespace dunmere::test
