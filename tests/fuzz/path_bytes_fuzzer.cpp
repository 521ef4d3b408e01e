// Any tree that a scan could count: its inventory answers as a plain map of the same paths does.
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/inventory/packed_files.h"
#include "engine/inventory/path_bytes.h"
#include "engine/inventory/path_tree.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

using PlainMap = std::map<std::string, std::int64_t>;

std::optional<std::int64_t> lookUp(const PlainMap& map, const std::string& key) {
  const auto entry = map.find(key);
  return entry == map.end() ? std::nullopt : std::optional(entry->second);
}

std::string below(const std::string& folder, const std::string& name) {
  return folder == "/" ? "/" + name : folder + "/" + name;
}

/// Reads an input as a list of steps: a kind, and a name with two bytes for its length.
class Steps {
 public:
  Steps(const std::uint8_t* data, std::size_t size) : rest_(reinterpret_cast<const char*>(data), size) {}

  bool atEnd() const { return rest_.empty(); }
  unsigned take() {
    if (rest_.empty()) return 0;
    const auto byte = static_cast<unsigned char>(rest_.front());
    rest_.remove_prefix(1);
    return byte;
  }
  /// Never empty, and without a slash. Now and then longer than its bytes, to get past the storage's pieces.
  std::string takeName() {
    const std::size_t length = 1 + take() % 16;
    std::string name(rest_.substr(0, length));
    rest_.remove_prefix(name.size());
    for (char& c : name) {
      if (c == '/' || c == '\0') c = '_';
    }
    if (name.ends_with('+')) name.append(std::size_t{take()} * 16, '+');
    return name.empty() ? "_" : name;
  }

 private:
  std::string_view rest_;
};

class CountedTree {
 public:
  explicit CountedTree(std::string root) {
    writer_.openFolder(root);
    open_.push_back({std::move(root), {}, false});
  }

  void addFile(const std::string& name, std::int64_t bytes) {
    if (open_.back().hasFolders || !open_.back().names.insert(name).second) return;
    std::string packed;
    appendPackedFile(packed, name, bytes);
    writer_.addFiles(packed, 1, bytes);
    plain_[below(open_.back().path, name)] = bytes;
    for (const Folder& folder : open_) {
      std::int64_t& sum = plain_[folder.path];
      sum = bytes > kLargest - sum ? kLargest : sum + bytes;
    }
  }

  void openFolder(const std::string& name) {
    if (!open_.back().names.insert(name).second) return;
    open_.back().hasFolders = true;
    writer_.openFolder(name);
    open_.push_back({below(open_.back().path, name), {}, false});
  }

  void closeFolder() {
    if (open_.size() == 1) return;
    writer_.closeFolder();
    open_.pop_back();
  }

  void closeAll() {
    while (open_.size() > 1) closeFolder();
    writer_.closeFolder();
  }

  /// The scan takes one only after a file was counted, or in the end.
  bool maySnapshot() const { return plain_.contains(open_.back().path); }
  std::pair<PathBytes, PlainMap> snapshot() const { return {writer_.snapshot(), plain_}; }

 private:
  static constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();

  struct Folder {
    std::string path;
    std::set<std::string> names;
    bool hasFolders;
  };

  PathTreeWriter writer_;
  std::vector<Folder> open_;
  PlainMap plain_;
};

// ---- Comparing ----

void compareEntries(const PathBytes& counted, const PlainMap& plain) {
  require(counted.size() == static_cast<std::int64_t>(plain.size()), "as many entries");
  PlainMap visited;
  counted.forEach([&visited](std::string_view key, std::int64_t bytes) {
    require(visited.emplace(key, bytes).second, "no entry twice");
  });
  require(visited == plain, "the same entries");
}

/// The keys of the map, in an order that depends on the input, and others that differ in little.
std::vector<std::string> questionsAbout(const PlainMap& plain, unsigned choice) {
  std::vector<std::string> keys = {"", "/", "//"};
  for (const auto& [key, bytes] : plain) {
    const std::vector<std::string> some = {key, key + "/", key + "/x", key + "x", key.substr(0, key.size() - 1)};
    keys.push_back(key);
    keys.push_back(some[(choice + keys.size()) % some.size()]);
  }
  for (std::size_t i = 0; i < keys.size(); ++i) std::swap(keys[i], keys[(i * 7 + choice) % keys.size()]);
  return keys;
}

void compareLookUps(const PathBytes& counted, const PlainMap& plain, const std::vector<std::string>& keys) {
  const auto found = counted.findAll(keys);
  for (std::size_t i = 0; i < keys.size(); ++i) {
    require(counted.find(keys[i]) == lookUp(plain, keys[i]), "find");
    require(found[i] == lookUp(plain, keys[i]), "findAll");
  }
}

void compareChildren(const PathBytes& counted, const PlainMap& plain) {
  std::map<std::string, PlainMap> children = {{"/", {}}, {"/q", {}}};
  for (const auto& [key, bytes] : plain) {
    const std::size_t slash = key.rfind('/');
    if (key != "/") children[slash == 0 ? "/" : key.substr(0, slash)][key] = bytes;
    children[key];
  }
  for (const auto& [folder, expected] : children) {
    PlainMap visited;
    counted.forEachChild(folder, [&](std::string_view name, bool, std::int64_t bytes) {
      require(visited.emplace(below(folder, std::string(name)), bytes).second, "no child twice");
    });
    require(visited == expected, "the children of a folder");
  }
}

void compare(const std::pair<PathBytes, PlainMap>& snapshot, unsigned choice) {
  const auto& [counted, plain] = snapshot;
  compareEntries(counted, plain);
  const std::vector<std::string> keys = questionsAbout(plain, choice);
  compareLookUps(counted, plain, keys);
  compareChildren(counted, plain);
}

void check(Steps steps) {
  constexpr std::size_t kMostSnapshots = 4;
  const std::string root = steps.take() % 4 == 0 ? "/" : "/r";
  CountedTree tree(root);
  std::vector<std::pair<PathBytes, PlainMap>> snapshots;
  while (!steps.atEnd()) {
    const unsigned step = steps.take();
    switch (step % 8) {
      case 0:
      case 1:
        tree.openFolder(steps.takeName());
        break;
      case 2:
        tree.closeFolder();
        break;
      case 3:
        if (tree.maySnapshot() && snapshots.size() < kMostSnapshots) snapshots.push_back(tree.snapshot());
        break;
      default:
        tree.addFile(steps.takeName(), std::int64_t{steps.take()} << (steps.take() % 56));
        break;
    }
  }
  tree.closeAll();
  snapshots.push_back(tree.snapshot());
  // All of them at the end: what was counted later does not show in those taken before.
  for (std::size_t i = 0; i < snapshots.size(); ++i) compare(snapshots[i], static_cast<unsigned>(i * 5 + 1));
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check(dunmere::test::Steps(data, size));
  return 0;
}
