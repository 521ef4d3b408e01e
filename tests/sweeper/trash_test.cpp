// The trash: the question, the move, what it leaves open.

#include <gmock/gmock.h>

#include <cerrno>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Not;

class Trash : public PaneTest {
 protected:
  Trash() {
    fileSystem_.addFile("/home/me/Photos/2020/one.jpg", 500);
    fileSystem_.addFile("/home/me/Photos/two.jpg", 300);
    fileSystem_.addFile("/home/me/notes.txt", 5);
    desktop_.onTrash = [this](const FileUrl& url) { fileSystem_.remove(url.path()); };
    sweep("/home/me");
    world_.notifications = 0;
  }

  std::vector<std::string> trashAndSeeListings() {
    const std::size_t before = world_.listings().size();
    pane().performTrash();
    return {world_.listings().begin() + static_cast<std::ptrdiff_t>(before), world_.listings().end()};
  }

  static SweepError refusal(int code) {
    return {
        SweepAttempt::moveToTrash, FileUrl("/home/me/notes.txt"), std::error_code(code, std::generic_category()), {}};
  }
};

TEST_F(Trash, ButtonOnlyAsksTheQuestion) {
  auto expected = state();
  std::get<14>(expected) = true;
  pane().requestTrash();
  EXPECT_EQ(state(), expected);
  EXPECT_EQ(world_.notifications, 1);
  EXPECT_THAT(desktop_.trashed, IsEmpty());
}

TEST_F(Trash, DismissalOnlyLowersTheQuestion) {
  const auto before = state();
  pane().requestTrash();
  world_.notifications = 0;
  pane().dismissTrash();
  EXPECT_EQ(state(), before);
  EXPECT_EQ(world_.notifications, 1);
  EXPECT_THAT(desktop_.trashed, IsEmpty());
}

TEST_F(Trash, TheItemIsHeldWhileTheQuestionIsOpenAndNoLonger) {
  click(0, "notes.txt");
  EXPECT_THAT(desktop_.held, IsEmpty());
  pane().requestTrash();
  EXPECT_THAT(desktop_.held, ElementsAre(FileUrl("/home/me/notes.txt")));
  EXPECT_EQ(desktop_.heldNow, 1);
  pane().dismissTrash();
  EXPECT_EQ(desktop_.heldNow, 0);
}

TEST_F(Trash, TheItemIsHeldBeforeTheViewsLearnOfTheQuestion) {
  int heldWhenTold = 0;
  pane().setListener([&] { heldWhenTold = desktop_.heldNow; });
  pane().requestTrash();
  EXPECT_EQ(heldWhenTold, 1);
}

TEST_F(Trash, ConfirmationMovesTheItemThatWasHeldWhenTheQuestionWasAsked) {
  click(0, "notes.txt");
  pane().requestTrash();
  pane().reloadVisibleColumns();
  pane().confirmedTrash();
  EXPECT_EQ(desktop_.held.size(), 1U);
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/notes.txt")));
  EXPECT_EQ(desktop_.heldNow, 0);
}

TEST_F(Trash, AQuestionThatComesToNameAnotherItemHoldsThatOne) {
  click(0, "notes.txt");
  pane().requestTrash();
  click(0, "Photos");
  EXPECT_EQ(pane().trashConfirmTitle(), "Move “Photos” to Trash?");
  EXPECT_THAT(desktop_.held, ElementsAre(FileUrl("/home/me/notes.txt"), FileUrl("/home/me/Photos")));
  EXPECT_EQ(desktop_.heldNow, 1);
  pane().confirmedTrash();
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/Photos")));
}

TEST_F(Trash, TheWayBackToTheDrivesLetsTheItemGo) {
  pane().requestTrash();
  pane().backToVolumes();
  EXPECT_EQ(desktop_.heldNow, 0);
}

TEST_F(Trash, ConfirmationLowersTheQuestionAndMoves) {
  bool asking = true;
  desktop_.onTrash = [&](const FileUrl&) { asking = pane().confirmTrash(); };
  click(0, "notes.txt");
  pane().requestTrash();
  world_.notifications = 0;
  pane().confirmedTrash();
  EXPECT_FALSE(asking);
  EXPECT_FALSE(pane().confirmTrash());
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/notes.txt")));
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Trash, ConfirmationWithoutATargetStillLowersTheQuestion) {
  pane().requestTrash();
  pane().backToVolumes();
  world_.notifications = 0;
  pane().confirmedTrash();
  EXPECT_FALSE(pane().confirmTrash());
  EXPECT_THAT(desktop_.trashed, IsEmpty());
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(Trash, WithoutATargetNothingHappens) {
  fileSystem_.makeUnreadable("/home/me");
  pane().backToVolumes();
  pane().beginBrowsing(FileUrl("/gone"));
  pane().backToVolumes();
  ASSERT_TRUE(mainThread_.runUntil([this] { return pane().loadError().has_value(); }));
  const auto before = state();
  pane().performTrash();
  EXPECT_EQ(state(), before);
  EXPECT_THAT(desktop_.trashed, IsEmpty());
}

TEST_F(Trash, TrashedFileLeavesItsFolderOpenAndListedAgain) {
  click(0, "Photos");
  click(1, "two.jpg");
  const auto tokens = pane().columnLoadIDs();
  EXPECT_THAT(trashAndSeeListings(), ElementsAre("/home/me", "/home/me/Photos"));
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/Photos/two.jpg")));
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
  EXPECT_EQ(pane().pathDirectories(), urls({"/home/me", "/home/me/Photos"}));
  EXPECT_EQ(pane().columnLoadIDs(), tokens);
  EXPECT_THAT(names(1), ElementsAre("2020"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_EQ(world_.notifications, 3);
}

TEST_F(Trash, TrashedOpenFolderLosesItsColumn) {
  click(0, "Photos");
  click(1, "2020");
  const auto tokens = pane().columnLoadIDs();
  EXPECT_THAT(trashAndSeeListings(), ElementsAre("/home/me", "/home/me/Photos"));
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/Photos/2020")));
  EXPECT_EQ(pane().pathDirectories(), urls({"/home/me", "/home/me/Photos"}));
  EXPECT_EQ(pane().columnChildren().size(), 2u);
  EXPECT_EQ(pane().columnLoadIDs(), std::vector(tokens.begin(), tokens.begin() + 2));
  EXPECT_THAT(names(1), ElementsAre("two.jpg"));
  EXPECT_EQ(pane().loadError(), std::nullopt);
}

TEST_F(Trash, TrashedRootKeepsItsColumnAndIsListedAgain) {
  EXPECT_THAT(trashAndSeeListings(), ElementsAre("/home/me"));
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me")));
  EXPECT_EQ(pane().pathDirectories(), urls({"/home/me"}));
  ASSERT_EQ(pane().columnChildren().size(), 1u);
  EXPECT_THAT(pane().columnChildren()[0], IsEmpty());
  EXPECT_EQ(pane().loadError(), "The file “me” couldn’t be opened because there is no such file.");
}

TEST_F(Trash, TotalsOfTheScanStay) {
  click(0, "Photos");
  pane().performTrash();
  EXPECT_EQ(pane().inventory()->fileCount, 3);
  EXPECT_EQ(pane().inventory()->totalFileBytes, 805);
  EXPECT_EQ(pane().inventory()->pathBytes.find("/home/me/Photos"), 800);
  EXPECT_EQ(pane().scanStatus(), "3 files · 805 bytes");
  EXPECT_THAT(names(0), ElementsAre("notes.txt"));
}

TEST_F(Trash, RefusalIsShownAndChangesNothingElse) {
  click(0, "Photos");
  click(1, "two.jpg");
  desktop_.nextTrashError = refusal(EACCES);
  auto expected = state();
  std::get<10>(expected) = "“notes.txt” couldn’t be moved to the trash because you don’t have permission to access it.";
  EXPECT_THAT(trashAndSeeListings(), IsEmpty());
  EXPECT_EQ(state(), expected);
  EXPECT_EQ(pane().footerStatus(), *pane().loadError());
}

TEST_F(Trash, RefusalReplacesAnEarlierOne) {
  click(0, "notes.txt");
  desktop_.nextTrashError = refusal(EACCES);
  pane().performTrash();
  desktop_.nextTrashError = refusal(ENOENT);
  pane().performTrash();
  EXPECT_EQ(pane().loadError(), "The file “notes.txt” doesn’t exist.");
}

TEST_F(Trash, SuccessClearsAnEarlierRefusal) {
  click(0, "notes.txt");
  desktop_.nextTrashError = refusal(EACCES);
  pane().performTrash();
  desktop_.nextTrashError.reset();
  pane().performTrash();
  EXPECT_EQ(pane().loadError(), std::nullopt);
  EXPECT_THAT(names(0), Not(Contains("notes.txt")));
}

TEST_F(Trash, SelectionClearsARefusal) {
  click(0, "notes.txt");
  desktop_.nextTrashError = refusal(EACCES);
  pane().performTrash();
  click(0, "Photos");
  EXPECT_EQ(pane().loadError(), std::nullopt);
}

TEST_F(Trash, ExactBytesAreMoved) {
  fileSystem_.addFile("/home/me/bad\xFF\n", 1);
  pane().reloadVisibleColumns();
  click(0, "bad\xFF\n");
  pane().performTrash();
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/bad\xFF\n")));
}

TEST_F(Trash, LinkItselfIsMoved) {
  fileSystem_.addLink("/home/me/link", "/home/me/Photos");
  pane().reloadVisibleColumns();
  click(0, "link");
  pane().performTrash();
  EXPECT_THAT(desktop_.trashed, ElementsAre(FileUrl("/home/me/link")));
  EXPECT_EQ(pane().pathDirectories(), urls({"/home/me"}));
}

}  // namespace
}  // namespace dunmere::test
