// A folder that is listed again and again asks no other thread once its file system is known to answer.
#include "platform/linux/patient_folder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <cerrno>
#include <chrono>
#include <future>

#include "platform/linux/entry_status.h"
#include "tests/platform/folder_contents.h"
#include "tests/support/machine.h"
#include "tests/support/own_mounts.h"
#include "tests/support/temporary_tree.h"

namespace dunmere::test {
namespace {

class PatientFolderTest : public testing::Test {
 protected:
  PatientFolderTest() {
    tree.folder("folder");
    tree.file("folder/file", 10);
  }
  ~PatientFolderTest() override { answer.set_value(); }

  auto open(const FileUrl& url) { return PatientFolder::open(descriptors, patience, mounts, url); }

  /// From now on a question about `url` finds the one before still unanswered.
  void letQuestionsHang(const FileUrl& url) {
    const auto asked = patience.ask<int>(url.bytes(), [answered = answered] {
      answered.wait();
      return 0;
    });
    ASSERT_FALSE(asked);
  }

  bool mountsHaveUniqueNumbers() const {
    const UniqueDescriptor place(::open(tree.path().c_str(), O_PATH));
    return uniqueMountNumber(place.get()).has_value();
  }

  TemporaryTree tree{fastFolder()};
  FolderDescriptors descriptors{8};
  Patience patience{std::chrono::milliseconds(500)};  // enough for the questions that are answered, however busy
  LocalMounts mounts;
  std::promise<void> answer;
  std::shared_future<void> answered = answer.get_future();
};

TEST_F(PatientFolderTest, OnAKnownMountIsOpenedAtOnce) {
  ASSERT_TRUE(open(tree.url()));
  letQuestionsHang(tree.url("folder"));
  auto folder = open(tree.url("folder"));
  // The system knows no way for certain while something anywhere is being renamed, as other tests do all the time.
  for (int attempt = 1; !folder && attempt < 1000; ++attempt) folder = open(tree.url("folder"));
  if (!mountsHaveUniqueNumbers()) {
    EXPECT_FALSE(folder) << "a mount that is not known for certain";
    return;
  }
  ASSERT_TRUE(folder);
  EXPECT_TRUE((*folder)->attributes("file"));
}

TEST_F(PatientFolderTest, OnAMountThatIsNotKnownYetIsAskedFor) {
  letQuestionsHang(tree.url("folder"));
  const auto folder = open(tree.url("folder"));
  ASSERT_FALSE(folder);
  EXPECT_EQ(folder.error().code.value(), ETIMEDOUT);
}

TEST_F(PatientFolderTest, OnAnotherMountIsAskedFor) {
  DUNMERE_NEEDS(Feature::privateMounts);
  const auto result = runWithOwnMounts([this] {
    EXPECT_TRUE(open(tree.url()));
    EXPECT_EQ(::mount("none", tree.path("folder").c_str(), "tmpfs", 0, nullptr), 0);
    letQuestionsHang(tree.url("folder"));
    EXPECT_FALSE(open(tree.url("folder")));
    return 0;
  });
  EXPECT_EQ(result.exitCode, 0) << result.output;
}

TEST_F(PatientFolderTest, OnAFileSystemThatMayStopAnsweringIsAskedForEveryTime) {
  DUNMERE_NEEDS(Feature::sys);
  const FileUrl sys("/sys");
  ASSERT_TRUE(open(sys));
  letQuestionsHang(sys);
  EXPECT_FALSE(open(sys));
}

TEST_F(PatientFolderTest, ThatIsNoneFailsAsItWouldWithoutKnowingTheMount) {
  ASSERT_TRUE(open(tree.url()));
  const auto codeOf = [this](const FileUrl& url) { return open(url).error().code.value(); };
  EXPECT_EQ(codeOf(tree.url("folder/file")), ENOTDIR);
  EXPECT_EQ(codeOf(tree.url("missing")), ENOENT);
  EXPECT_EQ(codeOf(FileUrl(tree.path("folder") + std::string("\0x", 2))), EINVAL);
}

}  // namespace
}  // namespace dunmere::test
