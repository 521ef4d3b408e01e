#include "tests/support/hostile_trees.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>

#include "platform/posix/unique_descriptor.h"
#include "tests/support/own_mounts.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {

namespace {

void check(bool succeeded, const std::string& what) {
  if (!succeeded) throw std::system_error(errno, std::generic_category(), what);
}

// ---- Ordinary ----

void basic(const TemporaryTree& tree) {
  for (const std::string folder : {"", "a/", "a/b/", "a/b/c/", ".hidden/"}) {
    if (!folder.empty()) tree.folder(folder);
    tree.file(folder + "empty");
    tree.file(folder + "one", 1);
    tree.file(folder + "large", 300'000);
    tree.file(folder + ".hidden file", 5000);
  }
  tree.folder("empty folder");
}

// ---- Links ----

void links(const TemporaryTree& tree) {
  tree.folder("inside/deeper");
  tree.file("inside/file", 10'000);
  tree.link("to file", "inside/file");
  tree.link("to folder", "inside");
  tree.link("to itself", "to itself");
  tree.link("to parent", "..");
  tree.link("to own folder", ".");
  tree.link("to root", "/");
  tree.link("to nothing", "missing");
  tree.link("to below a file", "inside/file/x");
  tree.link("to link", "to folder");
  tree.link("loop 1", "loop 2");
  tree.link("loop 2", "loop 3");
  tree.link("loop 3", "loop 1");
  tree.link("inside/deeper/up", "../..");
  tree.link("inside/deeper/absolute", tree.path("inside"));
  // As long as a target may be, and a chain as long as the system follows, and one longer.
  tree.link("long", std::string(4000, '/') + tree.path("inside").substr(1));
  tree.link("chain 0", "inside");
  for (int i = 1; i <= 45; ++i) tree.link("chain " + std::to_string(i), "chain " + std::to_string(i - 1));
}

void hardLinks(const TemporaryTree& tree) {
  tree.folder("a/b");
  tree.file("a/file", 70'000);
  for (int i = 0; i < 100; ++i) tree.hardLink("a/file", "a/b/link " + std::to_string(i));
  tree.hardLink("a/file", "again");
}

// ---- Shapes ----

UniqueDescriptor openFolder(int above, const char* name) {
  UniqueDescriptor folder(::openat(above, name, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  check(static_cast<bool>(folder), name);
  return folder;
}

void deep(const TemporaryTree& tree) {
  constexpr int kLevels = 10'000;
  tree.chain("", kLevels, "d");
  tree.file("top", 4096);
  UniqueDescriptor folder = openFolder(AT_FDCWD, tree.path().c_str());
  for (int level = 0; level < kLevels; ++level) folder = openFolder(folder.get(), "d");
  const UniqueDescriptor file(::openat(folder.get(), "bottom", O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644));
  check(file && ::write(file.get(), "x", 1) == 1, "the file at the bottom");
}

void longPaths(const TemporaryTree& tree) {
  tree.chain("", 40, std::string(255, 'n'), 3);
}

std::int64_t wideEntries() {
  return rounds(1'000'000);
}

void wide(const TemporaryTree& tree) {
  constexpr int kDifferent = 100;
  tree.folder("wide");
  tree.folder("files");
  for (int i = 0; i < kDifferent; ++i) tree.file("files/" + std::to_string(i), static_cast<std::size_t>(i) * 1000);
  const UniqueDescriptor files = openFolder(AT_FDCWD, tree.path("files").c_str());
  const UniqueDescriptor folder = openFolder(AT_FDCWD, tree.path("wide").c_str());
  for (std::int64_t i = 0; i < wideEntries(); ++i) {
    const std::string file = std::to_string(i % kDifferent);
    const std::string entry = "entry " + std::to_string(i);
    check(::linkat(files.get(), file.c_str(), folder.get(), entry.c_str(), 0) == 0, entry);
  }
}

constexpr int kWideFolders = 20'000;

void wideInFolders(const TemporaryTree& tree) {
  const UniqueDescriptor root = openFolder(AT_FDCWD, tree.path().c_str());
  for (int i = 0; i < kWideFolders; ++i) {
    check(::mkdirat(root.get(), std::to_string(i).c_str(), 0755) == 0, "a folder of many");
  }
  tree.file("19999/file", 1);
}

// ---- Names ----

std::vector<std::string> oddNames() {
  std::vector<std::string> names;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte != '/' && byte != '.') names.push_back(std::string(1, static_cast<char>(byte)));
  }
  for (const char* name : {"...",
                           "..a",
                           ". ",
                           " .",
                           "-rf",
                           "--",
                           "a\nb",
                           "a\r",
                           "\xff\xfe",
                           "a\xcc\x81",
                           "\xcc\x81",
                           "\xc3\xa1",
                           "\xe2\x80\xaegpj.exe",
                           "\xe2\x80\x8b",
                           "\xed\xa0\x80",
                           "\xf4\x90\x80\x80",
                           "\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d",
                           "%2F",
                           "%00",
                           "<b>bold",
                           "&amp;",
                           "$(id)",
                           "file:",
                           "\xef\xbb\xbf",
                           "NUL",
                           "con.txt",
                           "\xf0\x9f\x92\xbe"}) {
    names.push_back(name);
  }
  names.push_back(std::string(255, 'w'));
  names.push_back(std::string(255, '\xff'));
  return names;
}

void oddlyNamed(const TemporaryTree& tree) {
  tree.folder("files");
  tree.folder("folders");
  tree.folder("links");
  for (const std::string& name : oddNames()) {
    tree.file("files/" + name, 100);
    tree.folder("folders/" + name);
    tree.file("folders/" + name + "/" + name, 100);
    tree.link("links/" + name, name);
  }
}

/// How a package's name may be spelled, and names that only look like one's.
const std::vector<std::string> kPackages = {"Program.app", "PROGRAM.APP",      "x.ApP",  "a b.c.bundle", ".hidden.kext",
                                            "\xff.plugin", "Colours.prefPane", "\n.xpc", "..app"};
const std::vector<std::string> kNoPackages = {
    "Photos.photoslibrary", ".app", "app", "x.app ", "x.apps", "x.app.d", "x.framework", "x.\xc3\xa0pp", "xapp"};

void packages(const TemporaryTree& tree) {
  for (const std::vector<std::string>& names : {kPackages, kNoPackages}) {
    for (const std::string& name : names) {
      tree.folder(name + "/Contents/Inner.app");
      tree.file(name + "/file", 10'000);
      tree.file(name + "/Contents/file", 10'000);
      tree.file(name + "/Contents/Inner.app/file", 10'000);
    }
  }
  tree.file("file.app", 10'000);
  tree.link("link.app", "xapp");
}

// ---- Kinds and sizes ----

void specialFiles(const TemporaryTree& tree) {
  for (const std::string folder : {"", "below/"}) {
    if (!folder.empty()) tree.folder(folder);
    tree.fifo(folder + "fifo");
    tree.socket(folder + "socket");
    tree.device(folder + "device");
    tree.link(folder + "to fifo", "fifo");
    tree.link(folder + "to device", "device");
    tree.file(folder + "file", 1000);
  }
}

void sparse(const TemporaryTree& tree) {
  tree.sparseFile("length only", std::int64_t{1} << 42);
  tree.file("both", 100'000);
  check(::truncate(tree.path("both").c_str(), std::int64_t{1} << 40) == 0, "both");
  tree.file("empty");
  const UniqueDescriptor file(::open(tree.path("more than its length").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0644));
  check(file && ::fallocate(file.get(), FALLOC_FL_KEEP_SIZE, 0, 1 << 20) == 0, "more blocks than its length");
}

// ---- Closed folders ----

void closedFolders(const TemporaryTree& tree) {
  std::string folder;
  for (int level = 0; level < 20; ++level) {
    tree.file(folder + "open", 10'000);
    for (const auto& [name, mode] : {std::pair("closed", 0u), {"listed only", 0444u}, {"entered only", 0111u}}) {
      tree.folder(folder + name + "/inside");
      tree.file(folder + name + "/file", 10'000);
      tree.file(folder + name + "/inside/file", 10'000);
      tree.link(folder + std::string("into ") + name, std::string(name) + "/inside/file");
      tree.mode(folder + name, mode);
    }
    tree.file(folder + "unreadable file", 10'000);
    tree.mode(folder + "unreadable file", 0);
    folder += "next/";
    tree.folder(folder);
  }
}

void closedRoot(const TemporaryTree& tree) {
  tree.folder("inside");
  tree.file("inside/file", 10'000);
  tree.mode("", 0);
}

// ---- Mounts ----

void mountAt(const TemporaryTree& tree, const std::string& from, const std::string& at, const char* type,
             unsigned long how) {
  tree.folder(at);
  check(::mount(from.c_str(), tree.path(at).c_str(), type, how, nullptr) == 0, "mount at " + at);
}

void mounts(const TemporaryTree& tree) {
  enterPrivateMounts();
  tree.folder("under/b");
  tree.file("under/a", 10'000);
  tree.file("under/b/c", 20'000);
  tree.folder("memory");
  tree.file("memory/covered", 50'000);  // by the mount: not to be seen
  mountAt(tree, "memory", "memory", "tmpfs", 0);
  tree.folder("memory/inside");
  tree.file("memory/inside/file", 30'000);
  mountAt(tree, "memory", "memory/inside/again", "tmpfs", 0);
  tree.file("memory/inside/again/file", 40'000);
  mountAt(tree, tree.path("under"), "bind", nullptr, MS_BIND);
  // The whole tree inside itself, once: what is mounted in it does not come along.
  mountAt(tree, tree.path(), "self", nullptr, MS_BIND);
  // A single file can be a mount as well.
  tree.file("bound file");
  check(::mount(tree.path("under/a").c_str(), tree.path("bound file").c_str(), nullptr, MS_BIND, nullptr) == 0,
        "bound file");
}

void loopMount(const TemporaryTree& tree) {
  enterPrivateMounts();
  tree.sparseFile("image", 8 << 20);
  tree.folder("disk");
  mountImage(tree.path("image"), tree.path("disk"));
  tree.folder("disk/folder");
  tree.file("disk/folder/file", 100'000);
  tree.file("disk/file", 1);
}

}  // namespace

const std::vector<HostileTree>& hostileTrees() {
  static const auto odd = static_cast<std::int64_t>(oddNames().size());
  // Of a package nothing counts; of what only looks like one all but the package inside it.
  static const auto inNoPackages = static_cast<std::int64_t>(2 * kNoPackages.size());
  static const std::vector<HostileTree> trees = {
      {.name = "basic", .build = basic, .fileCount = 5 * 4},
      {.name = "empty", .build = [](const TemporaryTree&) {}, .fileCount = 0},
      {.name = "links", .build = links, .fileCount = 1},
      {.name = "hardLinks", .build = hardLinks, .fileCount = 102},
      {.name = "deep", .build = deep, .fileCount = 2, .isLarge = true},
      {.name = "longPaths", .build = longPaths, .fileCount = 0},
      {.name = "wide", .build = wide, .fileCount = wideEntries() + 100, .isLarge = true},
      {.name = "wideInFolders", .build = wideInFolders, .fileCount = 1, .isLarge = true},
      {.name = "oddlyNamed", .build = oddlyNamed, .fileCount = 2 * odd},
      {.name = "packages", .build = packages, .fileCount = inNoPackages + 1},
      {.name = "specialFiles", .build = specialFiles, .fileCount = 2, .needs = Feature::deviceFiles},
      {.name = "sparse", .build = sparse, .fileCount = 4},
      {.name = "closedFolders", .build = closedFolders, .fileCount = 20 * 2, .readByNobody = true},
      {.name = "closedRoot", .build = closedRoot, .fileCount = 0, .readByNobody = true},
      {.name = "mounts", .build = mounts, .fileCount = 11, .needs = Feature::privateMounts},
      {.name = "loopMount", .build = loopMount, .fileCount = 3, .needs = Feature::loopDevices},
  };
  return trees;
}

}  // namespace dunmere::test
