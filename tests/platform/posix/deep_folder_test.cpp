// Trees deeper than the longest path and than a process may hold descriptors.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/platform_file_system.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/child_process.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

using Chain = std::vector<std::shared_ptr<OpenFolder>>;

void limitDescriptors(rlim_t count) {
  const rlimit limit{.rlim_cur = count, .rlim_max = count};
  ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0);
}

/// Has `check` done in a process that may open so many files.
void withFewDescriptors(rlim_t count, const std::function<void(FileSystem&)>& check) {
  const auto result = runInChild([&] {
    limitDescriptors(count);
    const auto files = makePlatformFileSystem();
    check(*files);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

std::ptrdiff_t openDescriptors() {
  const std::filesystem::directory_iterator all("/proc/self/fd");
  return std::distance(begin(all), end(all));
}

/// Opens `root` and the chain below it, at each level the child `name`.
Chain openChain(FileSystem& files, const FileUrl& root, std::size_t depth, std::string_view name) {
  Chain chain = {opened(files, root)};
  while (chain.size() <= depth) chain.push_back(chain.back()->openChild(name).value());
  return chain;
}

TEST(DeepFolder, PathLongerThanTheLimitOpens) {
  const TemporaryTree tree(fastFolder());
  tree.chain("", 3000, "folder");
  std::string path = tree.path();
  for (int i = 0; i < 3000; ++i) path += "/folder";
  ASSERT_GT(path.size(), std::size_t{5 * PATH_MAX});
  const auto files = makePlatformFileSystem();
  EXPECT_TRUE(contentsOf(*opened(*files, FileUrl(path))).empty());
  EXPECT_TRUE(contentsOf(*opened(*files, FileUrl(path + "/.."))).contains("folder"));
  EXPECT_EQ(errorOf(files->openFolder(FileUrl(path + "/missing"), EntryDetail::kinds)), ENOENT);
}

TEST(DeepFolder, LongPathMayGoThroughLinksAndManySlashes) {
  const TemporaryTree tree;
  tree.folder("real/inside");
  tree.link("link", "real");
  std::string path = tree.path("link");
  // The system follows forty links at most in one call, however it is cut into hops.
  for (int i = 0; i < 3000; ++i) path += "/../real";
  const auto files = makePlatformFileSystem();
  EXPECT_TRUE(contentsOf(*opened(*files, FileUrl(path))).contains("inside"));
  const FileUrl slashes(std::string(6000, '/') + tree.path("real") + std::string(9000, '/'));
  EXPECT_TRUE(contentsOf(*opened(*files, slashes)).contains("inside"));
}

TEST(DeepFolder, TenThousandLevelsWithSiblingsUnderATightLimit) {
  constexpr std::size_t kDepth = 10'000;
  const TemporaryTree tree(fastFolder());
  tree.chain("", kDepth, "d", 3);
  withFewDescriptors(200, [&tree](FileSystem& files) {
    Chain chain = openChain(files, tree.url(), kDepth, "d");
    EXPECT_LE(openDescriptors(), 120);
    // Back up, as a depth-first walk goes, with several sub-folders still to open on each level.
    for (; chain.size() > 1; chain.pop_back()) {
      OpenFolder& parent = *chain[chain.size() - 2];
      for (const char* sibling : {"s0", "s1", "s2"}) {
        const auto child = parent.openChild(sibling);
        if (!child) throw std::runtime_error(child.error().code.message());
        EXPECT_TRUE(contentsOf(**child).empty());
      }
    }
  });
}

TEST(DeepFolder, TopmostChildrenOpenAfterTheWholeDepthWasOpened) {
  const TemporaryTree tree;
  tree.chain("", 500, "d", 1);
  withFewDescriptors(32, [&tree](FileSystem& files) {
    const Chain chain = openChain(files, tree.url(), 500, "d");
    for (const std::size_t level : {0, 250, 499, 1, 498, 0}) EXPECT_TRUE(chain[level]->openChild("s0")) << level;
  });
}

TEST(DeepFolder, ReadingGoesOnWhereItWasWhenItsDescriptorWasClosed) {
  const TemporaryTree tree;
  tree.chain("", 100, "d");
  for (int i = 0; i < 6000; ++i) tree.file("d/a file with a name of middle length " + std::to_string(i));
  withFewDescriptors(32, [&tree](FileSystem& files) {
    const auto folder = opened(files, tree.url())->openChild("d").value();
    EntryBatch first;
    ASSERT_TRUE(folder->readEntries(first));
    Chain below = {folder};
    for (int i = 0; i < 99; ++i) below.push_back(below.back()->openChild("d").value());
    EXPECT_EQ(contentsOf(*folder).size() + first.size(), 6001u);
  });
}

TEST(DeepFolder, ClosedFolderReplacedByAnotherIsStale) {
  const TemporaryTree tree;
  tree.chain("", 100, "d");
  withFewDescriptors(32, [&tree](FileSystem& files) {
    const Chain chain = openChain(files, tree.url(), 100, "d");
    tree.rename("d", "moved");
    tree.folder("d/d");
    EXPECT_EQ(errorOf(chain[1]->openChild("d")), ESTALE);
    EXPECT_EQ(errorOf(chain[2]->openChild("d")), ESTALE);
    EXPECT_TRUE(chain[0]->openChild("moved"));
    EXPECT_TRUE(contentsOf(*chain[100]).empty());
  });
}

TEST(DeepFolder, ClosedFolderReplacedByALinkIsNotFollowed) {
  const TemporaryTree tree;
  tree.chain("", 100, "d");
  withFewDescriptors(32, [&tree](FileSystem& files) {
    const Chain chain = openChain(files, tree.url(), 100, "d");
    tree.rename("d", "moved");
    tree.link("d", "moved");
    EXPECT_EQ(errorOf(chain[1]->openChild("d")), ENOTDIR);
  });
}

TEST(DeepFolder, OtherFilesOfTheProcessMayTakeTheDescriptors) {
  const TemporaryTree tree;
  tree.chain("", 100, "d");
  withFewDescriptors(64, [&tree](FileSystem& files) {
    Chain chain = openChain(files, tree.url(), 50, "d");
    while (::open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) continue;
    EXPECT_EQ(errno, EMFILE);
    while (chain.size() < 100) chain.push_back(chain.back()->openChild("d").value());
  });
}

TEST(DeepFolder, DescriptorsGoWithTheirFolders) {
  const TemporaryTree tree;
  tree.chain("", 50, "d");
  const auto files = makePlatformFileSystem();
  const auto before = openDescriptors();
  {
    const Chain chain = openChain(*files, tree.url(), 50, "d");
    EXPECT_EQ(openDescriptors(), before + 51);
  }
  EXPECT_EQ(openDescriptors(), before);
}

TEST(DeepFolder, LongChainHeldByItsLastFolderAloneEndsWithoutDeepRecursion) {
  constexpr std::size_t kDepth = 10'000;
  const TemporaryTree tree(fastFolder());
  tree.chain("", kDepth, "d");
  const auto result = runInChild([&tree] {
    const auto files = makePlatformFileSystem();
    std::shared_ptr<OpenFolder> deepest = opened(*files, tree.url());
    for (std::size_t i = 0; i < kDepth; ++i) deepest = deepest->openChild("d").value();
    // Ten thousand nested destructors would need far more than this thread has.
    pthread_attr_t small;
    pthread_attr_init(&small);
    pthread_attr_setstacksize(&small, 256 * 1024);
    pthread_t thread;
    const auto release = [](void* folder) -> void* {
      static_cast<std::shared_ptr<OpenFolder>*>(folder)->reset();
      return nullptr;
    };
    if (::pthread_create(&thread, &small, release, &deepest) != 0) return 3;
    ::pthread_join(thread, nullptr);
    EXPECT_EQ(deepest, nullptr);
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

}  // namespace
}  // namespace dunmere::test
