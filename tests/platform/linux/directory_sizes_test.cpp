// What a Trash tells of the space that its folders take.
#include "platform/linux/directory_sizes.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;

std::string sizesWith(const std::string& text, const std::vector<std::string>& folders) {
  return directorySizesWith(text, {4096, 1735689599, "new"},
                            [&](const std::string& name) { return std::ranges::find(folders, name) != folders.end(); });
}

TEST(DirectorySizesText, HasALineForEachFolder) {
  EXPECT_EQ(sizesWith("", {}), "4096 1735689599 new\n");
  EXPECT_EQ(sizesWith("16384 15803468 Documents\n8192 15803582 a%20b\n", {"Documents", "a b"}),
            "16384 15803468 Documents\n8192 15803582 a%20b\n4096 1735689599 new\n");
}

TEST(DirectorySizesText, ForgetsWhatIsNotThereAnyMore) {
  EXPECT_EQ(sizesWith("1 2 gone\n3 4 here\n", {"here"}), "3 4 here\n4096 1735689599 new\n");
}

TEST(DirectorySizesText, ReplacesAnEarlierFolderOfTheName) {
  EXPECT_EQ(sizesWith("1 2 new\n3 4 here\n5 6 n%65w\n", {"here", "new"}), "3 4 here\n4096 1735689599 new\n");
}

TEST(DirectorySizesText, KeepsNoLineThatIsNone) {
  const auto isAnything = [](const std::string&) { return true; };
  for (const std::string_view text : {"", "\n", " ", "1 2\n", "1 2 \n", "1 here\n", "x 2 here\n", "1 -2 here\n",
                                      "1  here\n", "1 2 a%2Fb\n", "1 2 %00\n", "here\n"}) {
    EXPECT_EQ(directorySizesWith(text, {1, 2, "new"}, isAnything), "1 2 new\n") << text;
  }
}

TEST(DirectorySizesText, ALastLineWithoutEndGetsOne) {
  EXPECT_EQ(sizesWith("3 4 here", {"here"}), "3 4 here\n4096 1735689599 new\n");
}

TEST(DirectorySizesText, NamesAreAnyBytes) {
  EXPECT_EQ(directorySizesWith("", {1, 2, "a b\n%/\xff"}, [](const std::string&) { return true; }),
            "1 2 a%20b%0A%25/%FF\n");
  const std::string odd = "1 2 100%\n1 2 %4\n1 2 %zz\n1 2 a b\n";
  std::vector<std::string> asked;
  directorySizesWith(odd, {1, 2, "new"}, [&](const std::string& name) {
    asked.push_back(name);
    return true;
  });
  EXPECT_THAT(asked, ElementsAre("100%", "%4", "%zz", "a b"));
}

class DirectorySizes : public TrashRoom {
 protected:
  std::string sizes() const { return contentOf(trash() + "/directorysizes"); }

  /// What the file should say of the folder, by du and by the record itself.
  static std::string lineOf(const std::string& trashFolder, const std::string& name, const std::string& encoded) {
    struct stat record{};
    EXPECT_EQ(stat((trashFolder + "/info/" + name + ".trashinfo").c_str(), &record), 0);
    return duOf(trashFolder + "/files/" + name) + " " + std::to_string(record.st_mtime) + " " + encoded + "\n";
  }

  static std::string duOf(const std::string& folder) {
    FILE* const du = popen(("du --summarize --block-size=1 '" + folder + "'").c_str(), "r");
    char digits[32] = "";
    EXPECT_EQ(std::fscanf(du, "%31[0-9]", digits), 1);
    pclose(du);
    return digits;
  }

  /// A folder with files in folders, a large one, a sparse one, a link, and a file of two names.
  void makeTree(const std::string& name) const {
    for (const char* folder : {"", "/inner", "/inner/deep"}) makeFolder(path(name) + folder);
    makeFile(path(name) + "/inner/large", std::string(300'000, 'x'));
    makeFile(path(name) + "/inner/deep/small", "x");
    makeFile(path(name) + "/sparse", "");
    ASSERT_EQ(truncate((path(name) + "/sparse").c_str(), 100 << 20), 0);
    makeLink(path(name) + "/link", "/");
    ASSERT_EQ(link((path(name) + "/inner/large").c_str(), (path(name) + "/other name").c_str()), 0);
  }
};

TEST_F(DirectorySizes, HaveWhatDuTellsOfATrashedFolder) {
  makeTree("item");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("item")), 0);
    EXPECT_EQ(sizes(), lineOf(trash(), "item", "item"));
    EXPECT_THAT(namesIn(trash()), ElementsAre("directorysizes", "files", "info"));
  });
}

TEST_F(DirectorySizes, AreKeptOfAVolumesTrash) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeTree("volume/item");
    ASSERT_EQ(moveToTrash(path("volume/item")), 0);
    EXPECT_EQ(contentOf(volumeTrash("volume") + "/directorysizes"), lineOf(volumeTrash("volume"), "item", "item"));
  });
}

TEST_F(DirectorySizes, HaveTheNameInTheTrashEncoded) {
  for (const char* folder : {"one", "other"}) {
    makeFolder(path(folder));
    makeFolder(path(folder) + "/a b\n%\xff");
  }
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("one/a b\n%\xff")), 0);
    ASSERT_EQ(moveToTrash(path("other/a b\n%\xff")), 0);
    EXPECT_EQ(sizes(),
              lineOf(trash(), "a b\n%\xff", "a%20b%0A%25%FF") + lineOf(trash(), "a b\n%\xff.2", "a%20b%0A%25%FF.2"));
  });
}

TEST_F(DirectorySizes, HaveNoLineOfAFileNorOfWhatLeftTheTrash) {
  for (const char* folder : {"first", "second", "third"}) makeFolder(path(folder));
  makeFile(path("file"), "x");
  inRoom([&] {
    ASSERT_EQ(moveToTrash(path("file")), 0);
    EXPECT_FALSE(isThere(trash() + "/directorysizes"));
    ASSERT_EQ(moveToTrash(path("first")), 0);
    ASSERT_EQ(moveToTrash(path("second")), 0);
    removeTree(trash() + "/files/first");
    ASSERT_EQ(moveToTrash(path("third")), 0);
    EXPECT_EQ(sizes(), lineOf(trash(), "second", "second") + lineOf(trash(), "third", "third"));
  });
}

TEST_F(DirectorySizes, ThatCannotBeKeptHinderNoMove) {
  for (const char* folder : {"item", "home/data", "home/data/Trash", "home/data/Trash/directorysizes"}) {
    makeFolder(path(folder));
  }
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("item")), 0);
    EXPECT_THAT(namesIn(trash()), ElementsAre("directorysizes", "files", "info"));
  });
}

TEST_F(DirectorySizes, ALinkInTheirPlaceIsNotFollowed) {
  for (const char* folder : {"item", "home/data", "home/data/Trash"}) makeFolder(path(folder));
  makeFile(path("elsewhere"), "1 2 elsewhere\n");
  makeLink(trash() + "/directorysizes", path("elsewhere"));
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("item")), 0);
    EXPECT_EQ(sizes(), lineOf(trash(), "item", "item"));
    EXPECT_EQ(contentOf(path("elsewhere")), "1 2 elsewhere\n");
  });
}

TEST_F(DirectorySizes, HaveNoLineOfAFolderThatCouldNotBeMeasured) {
  DUNMERE_NEEDS(Feature::secondUser);
  makeFolder(path("item"));
  makeFolder(path("item/locked"));
  ASSERT_EQ(chmod(home().c_str(), 0777), 0);
  ASSERT_EQ(chmod(path("").c_str(), 0777), 0);
  ASSERT_EQ(chmod(path("item/locked").c_str(), 0), 0);
  for (const char* folder : {"item", "item/locked"}) ASSERT_EQ(chown(path(folder).c_str(), 65534, 65534), 0);
  inRoom([&] {
    becomeNobody();
    EXPECT_EQ(moveToTrash(path("item")), 0);
    EXPECT_THAT(namesIn(trash()), ElementsAre("files", "info"));
  });
}

}  // namespace
}  // namespace dunmere::test
