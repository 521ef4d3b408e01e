// Links that lead where nobody answers.

#include "sweeper/link_looks.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "tests/support/background_queue.h"
#include "tests/support/memory_file_system.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::UnorderedElementsAre;

class LinkLooksTest : public ::testing::Test {
 protected:
  LinkLooksTest() {
    fileSystem_.addFile("/root/file", 7);
    for (const char* link : {"a", "b", "c"}) fileSystem_.addLink("/root/" + std::string(link), "file");
    folder_ = fileSystem_.openFolder(FileUrl("/root"), EntryDetail::kinds).value();
  }

  std::vector<std::string> look(const std::vector<std::string>& names) {
    std::vector<std::string> found;
    for (const auto& [name, target] : looks_->look(folder_, names)) {
      EXPECT_EQ(target.url, FileUrl(name.starts_with("dead") ? "/root/" + name : "/root/file"));
      found.push_back(name);
    }
    return found;
  }

  MemoryFileSystem fileSystem_;
  BackgroundQueue background_;
  std::shared_ptr<OpenFolder> folder_;
  int late_ = 0;
  std::shared_ptr<LinkLooks> looks_ = std::make_shared<LinkLooks>(background_, "/root", [this] { ++late_; });
};

TEST_F(LinkLooksTest, LinksThatAnswerAtOnceAreToldAtOnce) {
  EXPECT_THAT(look({"a", "b", "c"}), UnorderedElementsAre("a", "b", "c"));
  EXPECT_EQ(late_, 0);
  EXPECT_THAT(look({}), IsEmpty());
  EXPECT_THAT(look({"a"}), ElementsAre("a")) << "as often as it is asked";
}

TEST_F(LinkLooksTest, TheFolderIsNotKeptOpen) {
  look({"a", "b", "c"});
  look({});
  EXPECT_EQ(folder_.use_count(), 1);
}

TEST_F(LinkLooksTest, LinksThatAnswerLateAreToldByTheNextCallAndSayThatTheyCame) {
  background_.hold();
  EXPECT_THAT(look({"a"}), IsEmpty());
  EXPECT_THAT(look({"a", "b"}), IsEmpty());
  while (background_.runNext()) continue;
  EXPECT_EQ(late_, 1);
  EXPECT_THAT(look({}), UnorderedElementsAre("a", "b"));
}

TEST_F(LinkLooksTest, ALinkThatIsBeingLookedAtIsNotAskedForAgain) {
  background_.hold();
  for (int i = 0; i < 100; ++i) look({"a", "b"});
  EXPECT_LE(background_.waiting(), LinkLooks::kMostThreads + 1);
}

TEST_F(LinkLooksTest, LinksBehindThoseThatNeverAnswerAreLookedAtByMoreThreads) {
  std::vector<std::string> names;
  for (int i = 0; i < 8; ++i) names.push_back("dead " + std::to_string(i));
  names.push_back("a");
  // Nothing that was begun ever ends: the first four links are with four threads.
  background_.hold();
  look(names);
  EXPECT_EQ(background_.waiting(), LinkLooks::kUsualThreads + 1);
  EXPECT_TRUE(background_.runPlace("links of /root"));
  EXPECT_EQ(background_.waiting(), LinkLooks::kMostThreads);
  // One of those that came to help.
  EXPECT_TRUE(background_.runPlace("links " + std::to_string(LinkLooks::kMostThreads - 1) + " of /root"));
  EXPECT_THAT(look({}), ::testing::Contains("a"));
}

TEST_F(LinkLooksTest, NothingIsBegunOnceTheColumnIsClosed) {
  background_.hold();
  look({"a", "b"});
  looks_->close();
  while (background_.runNext()) continue;
  EXPECT_EQ(late_, 0);
  EXPECT_THAT(look({}), IsEmpty());
}

}  // namespace
}  // namespace dunmere::test
