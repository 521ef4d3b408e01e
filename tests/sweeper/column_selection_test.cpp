// The columns: what a click changes, which row is highlighted, which item the footer describes.

#include <gmock/gmock.h>

#include "tests/sweeper/pane_test.h"

namespace dunmere::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class ColumnSelection : public PaneTest {
 protected:
  ColumnSelection() {
    fileSystem_.addFile("/r/a/b/c/d/leaf", 100);
    fileSystem_.addFile("/r/a/b/other/x", 50);
    fileSystem_.addFile("/r/a/second", 30);
    fileSystem_.addFile("/r/file", 10);
    fileSystem_.addFolder("/r/empty");
  }

  /// Opens /r, then a, b, c, d as far as `columns` go.
  void open(std::size_t columns) {
    sweep("/r");
    const std::vector<std::string> path = {"a", "b", "c", "d"};
    for (std::size_t column = 0; column + 1 < columns; ++column) click(column, path[column]);
    ASSERT_EQ(pane().pathDirectories().size(), columns);
  }

  void expectAligned(std::size_t columns) const {
    EXPECT_EQ(pane().pathDirectories().size(), columns);
    EXPECT_EQ(pane().columnChildren().size(), columns);
    EXPECT_EQ(pane().columnLoadIDs().size(), columns);
  }
};

TEST_F(ColumnSelection, FileInTheFirstOfThreeColumnsLeavesOneColumn) {
  open(3);
  const ColumnLoadId token = pane().columnLoadIDs()[0];
  const std::size_t listings = world_.listings().size();
  world_.notifications = 0;
  click(0, "file");
  expectAligned(1);
  EXPECT_EQ(pane().pathDirectories(), urls({"/r"}));
  EXPECT_EQ(pane().selectedLeafURL(), FileUrl("/r/file"));
  EXPECT_EQ(pane().columnLoadIDs()[0], token);
  EXPECT_TRUE(pane().isRowSelected(row(0, "file"), 0));
  EXPECT_EQ(world_.listings().size(), listings);
  EXPECT_EQ(world_.notifications, 1);
}

TEST_F(ColumnSelection, FileInTheLastColumnClosesNothing) {
  open(3);
  click(1, "second");
  expectAligned(2);
  click(1, "second");
  expectAligned(2);
  EXPECT_EQ(pane().selectedLeafURL(), FileUrl("/r/a/second"));
}

TEST_F(ColumnSelection, FolderInTheSecondOfFiveColumnsLeavesThree) {
  open(5);
  const auto rows = pane().columnChildren();
  const auto tokens = pane().columnLoadIDs();
  const std::size_t listings = world_.listings().size();
  click(1, "b");
  expectAligned(3);
  EXPECT_EQ(pane().pathDirectories(), urls({"/r", "/r/a", "/r/a/b"}));
  EXPECT_EQ(pane().columnChildren()[0], rows[0]);
  EXPECT_EQ(pane().columnChildren()[1], rows[1]);
  EXPECT_EQ(pane().columnLoadIDs()[0], tokens[0]);
  EXPECT_EQ(pane().columnLoadIDs()[1], tokens[1]);
  EXPECT_THAT(tokens, ::testing::Not(::testing::Contains(pane().columnLoadIDs()[2])));
  EXPECT_THAT(names(2), ElementsAre("c", "other"));
  EXPECT_EQ(world_.listings().size(), listings + 1);
  EXPECT_EQ(world_.listings().back(), "/r/a/b");
}

TEST_F(ColumnSelection, OpenFolderSelectedAgainGetsANewToken) {
  open(2);
  const ColumnLoadId token = pane().columnLoadIDs()[1];
  click(0, "a");
  expectAligned(2);
  EXPECT_NE(pane().columnLoadIDs()[1], token);
}

TEST_F(ColumnSelection, FolderSelectionClearsTheLeaf) {
  open(1);
  click(0, "file");
  click(0, "a");
  EXPECT_EQ(pane().selectedLeafURL(), std::nullopt);
}

TEST_F(ColumnSelection, EmptyFolderOpensAnEmptyColumn) {
  open(1);
  click(0, "empty");
  expectAligned(2);
  EXPECT_THAT(pane().columnChildren()[1], IsEmpty());
}

TEST_F(ColumnSelection, FolderThatCannotBeListedOpensAnEmptyColumnWithAnError) {
  open(1);
  fileSystem_.makeUnreadable("/r/a");
  click(0, "a");
  expectAligned(2);
  EXPECT_THAT(pane().columnChildren()[1], IsEmpty());
  EXPECT_EQ(pane().loadError(), "The file “a” couldn’t be opened because you don’t have permission to view it.");
}

TEST_F(ColumnSelection, SelectionClearsTheError) {
  open(2);
  fileSystem_.makeUnreadable("/r/a");
  for (const char* name : {"file", "empty"}) {
    click(0, "a");
    ASSERT_TRUE(pane().loadError());
    click(0, name);
    EXPECT_EQ(pane().loadError(), std::nullopt);
  }
}

TEST_F(ColumnSelection, WithoutAnInventoryAClickOnlyClearsTheError) {
  world_.holdScansAt("/r");
  pane().beginBrowsing(FileUrl("/r"));
  click(0, "a");
  const SweeperItem folder = row(0, "a");
  const SweeperItem file = row(1, "second");
  fileSystem_.remove("/r");
  world_.releaseScans();
  ASSERT_TRUE(mainThread_.runUntil([this] { return !pane().inventory(); }));
  ASSERT_TRUE(pane().loadError());
  auto expected = state();
  std::get<10>(expected) = std::nullopt;
  pane().selectItem(folder, 0);
  EXPECT_EQ(state(), expected);
  pane().selectItem(file, 1);
  EXPECT_EQ(state(), expected);
}

TEST_F(ColumnSelection, RowOfAColumnThatGoesMayBeSelected) {
  open(3);
  pane().selectItem(pane().columnChildren()[2][0], 0);
  expectAligned(2);
  EXPECT_EQ(pane().pathDirectories(), urls({"/r", "/r/a/b/c"}));
  EXPECT_THAT(names(1), ElementsAre("d"));
}

TEST_F(ColumnSelection, NothingIsHighlightedAtFirst) {
  open(1);
  for (const SweeperItem& item : pane().columnChildren()[0].items()) EXPECT_FALSE(pane().isRowSelected(item, 0));
}

TEST_F(ColumnSelection, OpenFoldersAreHighlightedInTheirColumns) {
  open(3);
  EXPECT_TRUE(pane().isRowSelected(row(0, "a"), 0));
  EXPECT_FALSE(pane().isRowSelected(row(0, "empty"), 0));
  EXPECT_TRUE(pane().isRowSelected(row(1, "b"), 1));
  EXPECT_FALSE(pane().isRowSelected(row(1, "second"), 1));
  EXPECT_FALSE(pane().isRowSelected(row(2, "c"), 2));
}

TEST_F(ColumnSelection, FolderIsHighlightedInItsOwnColumnOnly) {
  open(3);
  EXPECT_FALSE(pane().isRowSelected(row(0, "a"), 1));
  EXPECT_FALSE(pane().isRowSelected(row(0, "a"), 2));
  EXPECT_FALSE(pane().isRowSelected(row(0, "a"), 3));
}

TEST_F(ColumnSelection, LeafIsHighlightedInTheLastColumnOnly) {
  open(2);
  click(1, "second");
  const SweeperItem leaf = row(1, "second");
  EXPECT_FALSE(pane().isRowSelected(leaf, 0));
  EXPECT_TRUE(pane().isRowSelected(leaf, 1));
  EXPECT_FALSE(pane().isRowSelected(leaf, 2));
  EXPECT_FALSE(pane().isRowSelected(row(1, "b"), 1));
  EXPECT_TRUE(pane().isRowSelected(row(0, "a"), 0));
}

TEST_F(ColumnSelection, HighlightGoesByTheUrlAlone) {
  open(2);
  SweeperItem grown = row(0, "a");
  grown.sizeBytes += 1;
  grown.sizeIsPartialMinimum = true;
  EXPECT_TRUE(pane().isRowSelected(grown, 0));
}

TEST_F(ColumnSelection, NothingIsHighlightedWithoutColumns) {
  open(2);
  const SweeperItem item = row(0, "a");
  pane().backToVolumes();
  EXPECT_FALSE(pane().isRowSelected(item, 0));
}

TEST_F(ColumnSelection, NoCurrentItemAtTheRoot) {
  EXPECT_EQ(pane().currentSelectedItem(), std::nullopt);
  open(1);
  EXPECT_EQ(pane().currentSelectedItem(), std::nullopt);
}

TEST_F(ColumnSelection, CurrentItemIsTheLeaf) {
  open(2);
  click(1, "second");
  ASSERT_TRUE(pane().currentSelectedItem());
  EXPECT_EQ(*pane().currentSelectedItem(), row(1, "second"));
  click(0, "file");
  ASSERT_TRUE(pane().currentSelectedItem());
  EXPECT_EQ(*pane().currentSelectedItem(), row(0, "file"));
}

TEST_F(ColumnSelection, CurrentItemIsTheDeepestOpenFolder) {
  open(3);
  ASSERT_TRUE(pane().currentSelectedItem());
  EXPECT_EQ(*pane().currentSelectedItem(), row(1, "b"));
}

TEST_F(ColumnSelection, LeafThatIsGoneIsNoItem) {
  open(2);
  click(1, "second");
  fileSystem_.remove("/r/a/second");
  pane().reloadVisibleColumns();
  EXPECT_EQ(pane().currentSelectedItem(), std::nullopt);
}

TEST_F(ColumnSelection, FolderThatIsGoneIsNoItem) {
  open(3);
  fileSystem_.remove("/r/a/b");
  pane().reloadVisibleColumns();
  EXPECT_EQ(pane().currentSelectedItem(), std::nullopt);
}

TEST_F(ColumnSelection, NoCurrentItemAfterTheWayBack) {
  open(3);
  pane().backToVolumes();
  EXPECT_EQ(pane().currentSelectedItem(), std::nullopt);
}

TEST_F(ColumnSelection, LinkToAFolderOpensUnderItsOwnName) {
  fileSystem_.addLink("/r/link", "/r/a");
  open(1);
  ASSERT_TRUE(row(0, "link").isDirectory);
  click(0, "link");
  EXPECT_EQ(pane().pathDirectories(), urls({"/r", "/r/link"}));
  EXPECT_TRUE(pane().isRowSelected(row(0, "link"), 0));
  EXPECT_FALSE(pane().isRowSelected(row(0, "a"), 0));
}

TEST_F(ColumnSelection, NameOfAnyBytesIsOpened) {
  fileSystem_.addFile("/r/bad\xFF\n/inside", 1);
  open(1);
  click(0, "bad\xFF\n");
  EXPECT_EQ(pane().pathDirectories().back(), FileUrl("/r/bad\xFF\n"));
  EXPECT_THAT(names(1), ElementsAre("inside"));
}

TEST(SizeLabel, LowerBoundHasAPlus) {
  SweeperItem item;
  item.sizeBytes = 1'200'000'000;
  EXPECT_EQ(DiskSweeperPane::sizeLabel(item), "1.2 GB");
  item.sizeIsPartialMinimum = true;
  EXPECT_EQ(DiskSweeperPane::sizeLabel(item), "1.2 GB+");
}

TEST(SizeLabel, ZeroMayBeALowerBound) {
  SweeperItem item;
  EXPECT_EQ(DiskSweeperPane::sizeLabel(item), "Zero KB");
  item.sizeIsPartialMinimum = true;
  EXPECT_EQ(DiskSweeperPane::sizeLabel(item), "Zero KB+");
}

TEST_F(ColumnSelection, StatusStripShowsWhileIndexing) {
  EXPECT_FALSE(pane().showsStatusStrip());
  pane().beginBrowsing(FileUrl("/r"));
  EXPECT_TRUE(pane().showsStatusStrip());
  runUntilComplete();
  EXPECT_FALSE(pane().showsStatusStrip());
}

TEST_F(ColumnSelection, StatusStripTellsTheScanStatus) {
  EXPECT_EQ(pane().statusStripText(), "Indexing…");
  pane().beginBrowsing(FileUrl("/r"));
  EXPECT_EQ(pane().statusStripText(), "Starting…");
  runUntilComplete();
  EXPECT_EQ(pane().statusStripText(), pane().scanStatus());
}

}  // namespace
}  // namespace dunmere::test
