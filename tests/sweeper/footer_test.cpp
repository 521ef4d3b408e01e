// The footer: its status texts, and what reveal and the trash question are about.

#include <gmock/gmock.h>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr const char* kIndexing =
    "Indexing… folder sizes with + grow as more files are found. If large folders stay at zero, check Full Disk Access "
    "for this app in Settings (other users’ homes and some system paths).";
constexpr const char* kUnread =
    "Some folders could not be read (permissions). Sizes may be low—enable Full Disk Access in Settings, or use Reveal "
    "in Finder.";

class Footer : public PaneTest {
 protected:
  Footer() {
    fileSystem_.addFile("/Users/me/Movies/film", 900);
    fileSystem_.addFile("/Users/me/Library/Caches/a", 3'200'000'000);
    fileSystem_.addFile("/Users/me/Library/Mail/b", 800'000'000);
    fileSystem_.addFile("/Users/me/notes.txt", 5);
    fileSystem_.addFolder("/Applications");
  }

  bool reveals(const std::string& path) const { return pane().revealURL() && *pane().revealURL() == FileUrl(path); }
};

TEST_F(Footer, NothingToTellWithoutATarget) {
  EXPECT_EQ(pane().footerStatus(), "Select an item.");
  EXPECT_EQ(pane().revealURL(), nullptr);
  EXPECT_FALSE(pane().canTrashSelection());
}

TEST_F(Footer, IndexingHintWhileTheScanRuns) {
  pane().beginBrowsing(FileUrl("/Users/me"));
  EXPECT_EQ(pane().footerStatus(), kIndexing);
  click(0, "notes.txt");
  EXPECT_EQ(pane().footerStatus(), kIndexing);
}

TEST_F(Footer, ErrorComesBeforeEverything) {
  pane().beginBrowsing(FileUrl("/Users/me"));
  fileSystem_.makeUnreadable("/Users/me/Movies");
  click(0, "Movies");
  EXPECT_EQ(pane().footerStatus(),
            "The file “Movies” couldn’t be opened because you don’t have permission to view it.");
}

TEST_F(Footer, IndexingHintComesBeforeReadErrors) {
  fileSystem_.makeUnreadable("/Users/me/Movies");
  world_.holdScansAt("/Users/me/Library/Mail");
  pane().beginBrowsing(FileUrl("/Users/me"));
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().inventory()->hadReadErrors; }));
  EXPECT_EQ(pane().footerStatus(), kIndexing);
}

TEST_F(Footer, ReadErrorsHintWhenSomeFolderWasNotRead) {
  fileSystem_.makeUnreadable("/Users/me/Movies");
  sweep("/Users/me");
  EXPECT_EQ(pane().footerStatus(), kUnread);
  click(0, "notes.txt");
  EXPECT_EQ(pane().footerStatus(), kUnread);
}

TEST_F(Footer, ReadErrorsHintComesBeforeTheMissingTarget) {
  fileSystem_.makeUnreadable("/Users/me/Movies");
  pane().beginBrowsing(FileUrl("/Users/me"));
  pane().backToVolumes();
  runUntilComplete();
  EXPECT_EQ(pane().revealURL(), nullptr);
  EXPECT_EQ(pane().footerStatus(), kUnread);
}

TEST_F(Footer, CompleteItemIsToldWithItsParent) {
  sweep("/Users/me");
  click(0, "Movies");
  EXPECT_EQ(pane().footerStatus(), "Movies / /Users/me");
  click(1, "film");
  EXPECT_EQ(pane().footerStatus(), "film / /Users/me/Movies");
}

TEST_F(Footer, SweptFolderIsToldWhenNothingIsClicked) {
  sweep("/Users/me");
  EXPECT_EQ(pane().footerStatus(), "me / /Users");
}

TEST_F(Footer, ItemBelowTheRootFolderHasTheRootAsParent) {
  sweep("/");
  click(0, "Applications");
  EXPECT_EQ(pane().footerStatus(), "Applications / /");
}

TEST_F(Footer, RootFolderHasNoParent) {
  sweep("/");
  EXPECT_EQ(pane().footerStatus(), "/");
}

TEST_F(Footer, PartialItemIsToldWithItsLeastSize) {
  world_.holdScansAt("/Users/me/Library/Mail");
  pane().beginBrowsing(FileUrl("/Users/me"));
  ASSERT_TRUE(mainThread_.runUntil([this] { return row(0, "Library").sizeBytes > 0; }));
  const SweepInventory partial = *pane().inventory();
  world_.releaseScans();
  runUntilComplete();
  pane().applyColumn(0, pane().columnLoadIDs()[0], partial);
  click(0, "Library");
  EXPECT_EQ(pane().footerStatus(), "Library / at least 3.2 GB (partial scan)");
}

TEST_F(Footer, ItemWithoutARowIsToldWithItsParent) {
  sweep("/Users/me");
  click(0, "Movies");
  click(1, "film");
  fileSystem_.remove("/Users/me/Movies/film");
  pane().reloadVisibleColumns();
  EXPECT_EQ(pane().footerStatus(), "film / /Users/me/Movies");
}

TEST_F(Footer, NameIsToldSafely) {
  fileSystem_.addFile("/Users/me/caf\xE9\n", 1);
  sweep("/Users/me");
  click(0, "caf\xE9\n");
  EXPECT_EQ(pane().footerStatus(), "caf\uFFFD[U+000A] / /Users/me");
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “caf\uFFFD[U+000A]” to Trash?");
}

TEST_F(Footer, RightToLeftNamesAreIsolatedOneByOne) {
  fileSystem_.addFile("/Users/me/ספר/שלום/12", 1);
  sweep("/Users/me");
  click(0, "ספר");
  EXPECT_EQ(pane().footerStatus(), "\u2066ספר\u2069 / /Users/me");
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “\u2066ספר\u2069” to Trash?");
  click(1, "שלום");
  EXPECT_EQ(pane().footerStatus(), "\u2066שלום\u2069 / /Users/me/\u2066ספר\u2069");
}

TEST_F(Footer, TargetIsTheLeafElseTheDeepestOpenFolder) {
  sweep("/Users/me");
  EXPECT_TRUE(reveals("/Users/me"));
  click(0, "Movies");
  EXPECT_TRUE(reveals("/Users/me/Movies"));
  click(1, "film");
  EXPECT_TRUE(reveals("/Users/me/Movies/film"));
  click(0, "notes.txt");
  EXPECT_TRUE(reveals("/Users/me/notes.txt"));
  pane().backToVolumes();
  EXPECT_EQ(pane().revealURL(), nullptr);
}

TEST_F(Footer, SweptFolderMayBeTrashed) {
  sweep("/Users/me");
  EXPECT_TRUE(pane().canTrashSelection());
}

TEST_F(Footer, RootFolderMayNotBeTrashed) {
  for (const char* root : {"/", "//"}) {
    sweep(root);
    EXPECT_FALSE(pane().canTrashSelection());
  }
}

TEST_F(Footer, AnythingBelowTheRootFolderMayBeTrashed) {
  sweep("/");
  click(0, "Applications");
  EXPECT_TRUE(pane().canTrashSelection());
}

TEST_F(Footer, EmptyPathMayNotBeTrashed) {
  pane().beginBrowsing(FileUrl(""));
  EXPECT_TRUE(reveals(""));
  EXPECT_FALSE(pane().canTrashSelection());
}

TEST_F(Footer, QuestionNamesTheTarget) {
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “item” to Trash?");
  fileSystem_.addFolder("/Users/me/Photos");
  sweep("/Users/me");
  click(0, "Photos");
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “Photos” to Trash?");
  click(0, "notes.txt");
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “notes.txt” to Trash?");
}

TEST_F(Footer, RevealShowsExactlyTheTarget) {
  sweep("/Users/me");
  click(0, "notes.txt");
  pane().reveal();
  EXPECT_THAT(desktop_.revealed, ElementsAre(FileUrl("/Users/me/notes.txt")));
}

TEST_F(Footer, RevealWithoutATargetShowsNothing) {
  pane().reveal();
  EXPECT_THAT(desktop_.revealed, IsEmpty());
}

}  // namespace
}  // namespace dunmere::test
