// make_tree: makes the same tree of folders and small files every time, to measure walkers on.
//
// The folders form a tree filled level by level, `--fan-out` folders in each folder, at most `--depth` levels. The
// files are dealt out evenly. Names, name lengths and sizes come from a fixed generator, so two runs with the same
// options make trees that are equal but for their time stamps.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace {

constexpr int kFailed = 1;
constexpr int kBadUsage = 2;
constexpr std::int64_t kLongestName = 255;      // bytes, what Linux file systems take
constexpr std::int64_t kLargestFile = 1 << 20;  // bytes; more would measure the disk, not the walk

struct Options {
  std::string root;
  std::int64_t files = 1000;
  std::int64_t folders = 80;
  std::int64_t depth = 16;
  std::int64_t fanOut = 8;
  std::int64_t nameLength = 17;  // average, in bytes
  std::int64_t size = 4096;      // largest file, in bytes; sizes are spread evenly from 0 to here
  std::int64_t seed = 1;
};

struct OptionRule {
  std::string_view flag;
  std::int64_t Options::* value;
  std::int64_t least;
  std::int64_t most;
};

constexpr std::array kRules = {
    OptionRule{"--files", &Options::files, 0, 100'000'000},
    OptionRule{"--folders", &Options::folders, 0, 10'000'000},
    OptionRule{"--depth", &Options::depth, 1, 64},
    OptionRule{"--fan-out", &Options::fanOut, 1, 10'000'000},
    OptionRule{"--name-length", &Options::nameLength, 8, kLongestName / 2},
    OptionRule{"--size", &Options::size, 0, kLargestFile},
    OptionRule{"--seed", &Options::seed, 0, INT64_MAX},
};

[[noreturn]] void badUsage(const std::string& why) {
  std::cerr << "make_tree: " << why << "\nusage: make_tree ROOT";
  for (const OptionRule& rule : kRules) std::cerr << " [" << rule.flag << " N]";
  std::cerr << "\nROOT must not exist yet or be an empty folder.\n";
  std::exit(kBadUsage);
}

[[noreturn]] void fail(const std::string& doing, const std::string& path) {
  const std::error_code code(errno, std::generic_category());
  std::cerr << "make_tree: cannot " << doing << " " << path << ": " << code.message() << "\n";
  std::exit(kFailed);
}

std::int64_t parseValue(const OptionRule& rule, std::string_view text) {
  std::int64_t value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size() || value < rule.least || value > rule.most) {
    badUsage(std::string(rule.flag) + " takes a number from " + std::to_string(rule.least) + " to " +
             std::to_string(rule.most) + ", not “" + std::string(text) + "”");
  }
  return value;
}

Options parseOptions(const std::vector<std::string_view>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const auto rule = std::find_if(kRules.begin(), kRules.end(),
                                   [&](const OptionRule& candidate) { return candidate.flag == arguments[i]; });
    if (rule != kRules.end()) {
      if (i + 1 == arguments.size()) badUsage(std::string(rule->flag) + " needs a number");
      options.*(rule->value) = parseValue(*rule, arguments[++i]);
    } else if (arguments[i].starts_with("--")) {
      badUsage("unknown option " + std::string(arguments[i]));
    } else if (!options.root.empty()) {
      badUsage("more than one ROOT");
    } else {
      options.root = arguments[i];
    }
  }
  if (options.root.empty()) badUsage("ROOT is missing");
  return options;
}

/// Names that differ within one folder by their leading number and vary in length around the average.
class NameMaker {
 public:
  NameMaker(std::int64_t averageLength, std::int64_t seed)
      : random_(static_cast<std::uint64_t>(seed)), shortest_(averageLength / 2), longest_(averageLength * 3 / 2) {}

  std::string next(char kind, std::int64_t number) {
    std::string name = kind + std::to_string(number) + "-";
    const std::int64_t length = between(shortest_, longest_);
    while (static_cast<std::int64_t>(name.size()) < length) name += static_cast<char>('a' + between(0, 25));
    return name;
  }

  /// Evenly spread. Written out because the standard distributions differ between libraries.
  std::int64_t between(std::int64_t least, std::int64_t most) {
    return least + static_cast<std::int64_t>(random_() % static_cast<std::uint64_t>(most - least + 1));
  }

 private:
  std::mt19937_64 random_;
  std::int64_t shortest_;
  std::int64_t longest_;
};

class TreeMaker {
 public:
  explicit TreeMaker(const Options& options)
      : options_(options),
        names_(options.nameLength, options.seed),
        content_(static_cast<std::size_t>(options.size), 'x') {}

  void run() {
    openEmptyRoot();
    makeFolders();
    for (std::size_t folder = 0; folder < paths_.size(); ++folder) makeFiles(folder);
    close(root_);
  }

 private:
  void openEmptyRoot() {
    if (mkdir(options_.root.c_str(), 0755) != 0 && errno != EEXIST) fail("make", options_.root);
    // An empty folder has no child to remove, so that rmdir is the shortest test for "empty" there is.
    if (rmdir(options_.root.c_str()) != 0 || mkdir(options_.root.c_str(), 0755) != 0) fail("start from", options_.root);
    root_ = open(options_.root.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root_ < 0) fail("open", options_.root);
  }

  /// Folder 0 is the root; the parent of folder n is folder (n - 1) / fanOut, which fills the tree level by level.
  void makeFolders() {
    paths_.emplace_back(".");
    std::vector<std::int64_t> levels = {0};
    for (std::int64_t number = 1; number <= options_.folders; ++number) {
      const auto parent = static_cast<std::size_t>((number - 1) / options_.fanOut);
      if (levels[parent] == options_.depth) badUsage("so many folders need a larger --depth or --fan-out");
      levels.push_back(levels[parent] + 1);
      paths_.push_back(paths_[parent] + "/" + names_.next('d', (number - 1) % options_.fanOut));
      if (mkdirat(root_, paths_.back().c_str(), 0755) != 0) fail("make", paths_.back());
    }
  }

  void makeFiles(std::size_t folder) {
    const auto folders = static_cast<std::int64_t>(paths_.size());
    const std::int64_t extra = static_cast<std::int64_t>(folder) < options_.files % folders ? 1 : 0;
    const std::int64_t count = options_.files / folders + extra;
    const int descriptor = openat(root_, paths_[folder].c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) fail("open", paths_[folder]);
    for (std::int64_t number = 0; number < count; ++number) makeFile(descriptor, names_.next('f', number));
    close(descriptor);
  }

  void makeFile(int folder, const std::string& name) {
    const int file = openat(folder, name.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (file < 0) fail("make", name);
    const auto size = static_cast<std::size_t>(names_.between(0, options_.size));
    if (size > 0 && write(file, content_.data(), size) != static_cast<ssize_t>(size)) fail("fill", name);
    if (close(file) != 0) fail("close", name);
  }

  const Options& options_;
  NameMaker names_;
  std::string content_;
  std::vector<std::string> paths_;  // of the folders, relative to the root
  int root_ = -1;
};

}  // namespace

int main(int argc, char** argv) {
  const Options options = parseOptions({argv + 1, argv + argc});
  TreeMaker(options).run();
  return 0;
}
