#include "platform/linux/held_item.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <cstdio>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

class HeldItemTest : public TrashRoom {
 protected:
  HeldItemTest() {
    makeFolder(path("folder"));
    makeFolder(path("elsewhere"));
    makeFile(path("folder/item"), "content");
  }

  HeldItem hold() const {
    auto held = holdItem(FileUrl(path("folder/item")));
    EXPECT_TRUE(held.has_value());
    return std::move(*held);
  }
  void rename(const std::string& from, const std::string& to) const {
    ASSERT_EQ(std::rename(path(from).c_str(), path(to).c_str()), 0);
  }
  UniqueDescriptor open(const std::string& folder) const {
    return UniqueDescriptor(::open(path(folder).c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
};

TEST_F(HeldItemTest, IsAtItsPlaceUntilItIsMovedOrReplaced) {
  const HeldItem held = hold();
  EXPECT_EQ(isHeldItem(held, held.folder, held.name), true);
  rename("folder/item", "elsewhere/other");
  EXPECT_EQ(isHeldItem(held, held.folder, held.name),
            std::unexpected(std::error_code(ENOENT, std::generic_category())));
  makeFile(path("folder/item"), "somebody else's");
  EXPECT_EQ(isHeldItem(held, held.folder, held.name), false);
  EXPECT_EQ(isHeldItem(held, open("elsewhere"), "other"), true);
}

TEST_F(HeldItemTest, ADeletedItemsNumberIsNotGivenToItsSuccessor) {
  const HeldItem held = hold();
  // Without the hold most file systems give the number of the last deleted file to the next new one.
  for (int i = 0; i < 100; ++i) {
    ASSERT_EQ(std::remove(path("folder/item").c_str()), 0);
    makeFile(path("folder/item"), "content");
    ASSERT_EQ(isHeldItem(held, held.folder, held.name), false);
  }
}

TEST_F(HeldItemTest, StaysInItsFolderWhenThatIsRenamedAndReplaced) {
  const HeldItem held = hold();
  rename("folder", "renamed");
  makeFolder(path("folder"));
  makeFile(path("folder/item"), "somebody else's");
  EXPECT_EQ(isHeldItem(held, held.folder, held.name), true);
  EXPECT_EQ(currentPath(held.folder), path("renamed"));
}

TEST_F(HeldItemTest, ADeletedFolderHasNoPath) {
  const HeldItem held = hold();
  rename("folder/item", "item");
  ASSERT_EQ(std::remove(path("folder").c_str()), 0);
  EXPECT_EQ(currentPath(held.folder), std::unexpected(std::error_code(ENOENT, std::generic_category())));
  // Nor does it get one from a folder that has the name which the kernel shows for it.
  makeFolder(path("folder (deleted)"));
  EXPECT_EQ(currentPath(held.folder), std::unexpected(std::error_code(ENOENT, std::generic_category())));
}

TEST_F(HeldItemTest, AFileOfAnOverlaysLowerLayerIsKnownAfterItsMove) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountNew(path("elsewhere"), "tmpfs");
    for (const char* layer : {"elsewhere/upper", "elsewhere/work", "volume"}) makeFolder(path(layer));
    mountNew(
        path("volume"), "overlay",
        "lowerdir=" + path("folder") + ",upperdir=" + path("elsewhere/upper") + ",workdir=" + path("elsewhere/work"));
    makeFolder(path("volume/inner"));
    const auto held = holdItem(FileUrl(path("volume/item")));
    ASSERT_TRUE(held.has_value());
    EXPECT_EQ(isHeldItem(*held, held->folder, held->name), true);
    rename("volume/item", "volume/inner/other");
    EXPECT_EQ(isHeldItem(*held, open("volume/inner"), "other"), true);
    makeFile(path("volume/item"), "somebody else's");
    EXPECT_EQ(isHeldItem(*held, held->folder, held->name), false);
  });
}

}  // namespace
}  // namespace dunmere::test
