// When nothing may be moved: after each refusal the item is whole and where it was.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <fstream>
#include <system_error>

#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"

namespace dunmere::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class TrashRefusal : public TrashRoom {
 protected:
  /// Makes the folder `item` with one file and mounts a file system at its folder `below`.
  void makeItemWithMount(const std::string& item, const std::string& below) {
    makeFolder(path(item));
    makeFile(path(item + "/file"), "of the item");
    enterPrivateMounts();
    if (!below.empty()) makeFolder(path(item + "/" + below));
    mountNew(path(item + "/" + below), "ramfs");
    makeFile(path(item + "/" + below + "/mounted"), "of the mount");
  }
};

VolumeValues labelled(const std::string& name) {
  VolumeValues values;
  values.name = name;
  return values;
}

/// Fills the volume at `folder` to its last block.
void fillVolume(const std::string& folder) {
  const int file = open((folder + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  ASSERT_GE(file, 0);
  const std::string block(4096, 'f');
  while (write(file, block.data(), block.size()) > 0) continue;
  EXPECT_EQ(errno, ENOSPC);
  close(file);
}

TEST_F(TrashRefusal, TheRootFolderStays) {
  inRoom([&] {
    EXPECT_EQ(moveToTrash("/"), EBUSY);
    EXPECT_EQ(moveToTrash("//"), EBUSY);
    EXPECT_FALSE(isThere(trash()));
  });
}

TEST_F(TrashRefusal, PathsThatNameNoItemAreInvalid) {
  makeFolder(path("folder"));
  inRoom([&] {
    EXPECT_EQ(moveToTrash(""), EINVAL);
    EXPECT_EQ(moveToTrash("relative/path"), EINVAL);
    EXPECT_EQ(moveToTrash(path("folder/.")), EINVAL);
    EXPECT_EQ(moveToTrash(path("folder/..")), EINVAL);
    EXPECT_TRUE(isThere(path("folder")));
  });
}

TEST_F(TrashRefusal, AMissingItemIsSaidToBeMissing) {
  makeFile(path("file"), "x");
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("missing")), ENOENT);
    EXPECT_EQ(moveToTrash(path("missing/item")), ENOENT);
    EXPECT_EQ(moveToTrash(path("file/item")), ENOTDIR);
    EXPECT_FALSE(isThere(trash()));
    EXPECT_EQ(contentOf(path("file")), "x");
  });
}

TEST_F(TrashRefusal, AMountPointStays) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    makeItemWithMount("item", "");
    EXPECT_EQ(moveToTrash(path("item")), EBUSY);
    EXPECT_EQ(contentOf(path("item/mounted")), "of the mount");
  });
}

TEST_F(TrashRefusal, AnItemWithAMountBelowStaysWithAllOfIt) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    makeItemWithMount("item", "sub");
    EXPECT_EQ(moveToTrash(path("item")), EBUSY);
    EXPECT_EQ(contentOf(path("item/file")), "of the item");
    EXPECT_EQ(contentOf(path("item/sub/mounted")), "of the mount");
    EXPECT_FALSE(isThere(trash()));
  });
}

TEST_F(TrashRefusal, AMountBelowIsSeenWhateverTheItemsName) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    const std::string item = "a b\nc\\040\xff";
    makeItemWithMount(item, "sub");
    EXPECT_EQ(moveToTrash(path(item)), EBUSY);
    EXPECT_EQ(contentOf(path(item + "/sub/mounted")), "of the mount");
  });
}

TEST_F(TrashRefusal, AMountBelowIsSeenThroughALinkAboveTheItem) {
  DUNMERE_NEEDS(Feature::privateMounts);
  makeLink(path("detour"), ".");
  inRoom([&] {
    makeItemWithMount("item", "sub");
    EXPECT_EQ(moveToTrash(path("detour/item")), EBUSY);
    EXPECT_EQ(contentOf(path("item/sub/mounted")), "of the mount");
  });
}

TEST_F(TrashRefusal, AMountBesideTheItemDoesNotHinder) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    makeItemWithMount("item", "sub");
    makeFolder(path("item/su"));
    makeLink(path("link"), "item/sub");
    EXPECT_EQ(moveToTrash(path("item/su")), 0);
    EXPECT_EQ(moveToTrash(path("link")), 0);
    EXPECT_EQ(contentOf(path("item/sub/mounted")), "of the mount");
  });
}

TEST_F(TrashRefusal, AVolumeInMemoryHasNoTrashAndIsCalledByItsLabel) {
  DUNMERE_NEEDS(Feature::privateMounts);
  makeFolder(path("memory"));
  fileSystem.setVolumeValues(path("memory"), labelled("Scratch"));
  inRoom([&] {
    enterPrivateMounts();
    mountNew(path("memory"), "tmpfs");
    makeFolder(path("memory/folder"));
    makeFile(path("memory/folder/file"), "x");
    EXPECT_EQ(moveToTrash(path("memory/folder/file")), ENOTSUP);
    EXPECT_EQ(volumeName, "Scratch");
    EXPECT_EQ(contentOf(path("memory/folder/file")), "x");
    EXPECT_THAT(namesIn(path("memory")), ElementsAre("folder"));
  });
}

TEST_F(TrashRefusal, AVolumeWithoutLabelIsCalledByItsMountPoint) {
  DUNMERE_NEEDS(Feature::privateMounts);
  makeFolder(path("memory"));
  inRoom([&] {
    enterPrivateMounts();
    mountNew(path("memory"), "tmpfs");
    makeFile(path("memory/file"), "x");
    EXPECT_EQ(moveToTrash(path("memory/file")), ENOTSUP);  // the file system cannot measure it
    EXPECT_EQ(volumeName, "memory");
    fileSystem.setVolumeValues(path("memory"), labelled(""));
    EXPECT_EQ(moveToTrash(path("memory/file")), ENOTSUP);
    EXPECT_EQ(volumeName, "memory");
  });
}

TEST_F(TrashRefusal, TheRootVolumeWithoutALabelIsCalledFilesystemRoot) {
  DUNMERE_NEEDS(Feature::privateMounts);
  makeFolder(path("system"));
  inRoom([&] {
    // A small system of its own, whose root folder is a volume with something else in the place of its Trash.
    enterPrivateMounts();
    mountNew(path("system"), "ramfs");
    for (const char* folder : {"system/proc", "system/home"}) makeFolder(path(folder));
    mountAgain("/proc", path("system/proc"));
    mountNew(path("system/home"), "tmpfs");
    makeLink(path("system/.Trash-") + std::to_string(geteuid()), "home");
    makeFile(path("system/file"), "x");
    ASSERT_EQ(chroot(path("system").c_str()), 0);
    ASSERT_EQ(chdir("/"), 0);
    setenv("HOME", "/home", 1);
    setenv("XDG_DATA_HOME", "/home/data", 1);
    EXPECT_EQ(moveToTrash("/file"), ENOTSUP);
    EXPECT_EQ(volumeName, "Filesystem root");
    EXPECT_EQ(contentOf("/file"), "x");
  });
}

TEST_F(TrashRefusal, AFolderThatMayNotBeChangedKeepsItsItem) {
  makeFolder(path("locked"));
  makeFile(path("locked/file"), "x");
  ASSERT_EQ(chmod(home().c_str(), 0777), 0);
  ASSERT_EQ(chmod(path("locked").c_str(), 0555), 0);
  inRoom([&] {
    dropPrivileges();
    EXPECT_EQ(moveToTrash(path("locked/file")), EACCES);
    EXPECT_EQ(contentOf(path("locked/file")), "x");
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
    EXPECT_THAT(namesIn(trash() + "/info"), IsEmpty());
  });
  ASSERT_EQ(chmod(path("locked").c_str(), 0755), 0);
}

TEST_F(TrashRefusal, ANotSearchableFolderKeepsItsItem) {
  makeFolder(path("locked"));
  makeFile(path("locked/file"), "x");
  ASSERT_EQ(chmod(path("locked").c_str(), 0), 0);
  inRoom([&] {
    dropPrivileges();
    EXPECT_EQ(moveToTrash(path("locked/file")), EACCES);
  });
  ASSERT_EQ(chmod(path("locked").c_str(), 0755), 0);
  EXPECT_EQ(contentOf(path("locked/file")), "x");
}

TEST_F(TrashRefusal, AReadOnlyVolumeKeepsItsItem) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("frozen"));
    makeFile(path("frozen/file"), "x");
    remountReadOnly(path("frozen"));
    EXPECT_EQ(moveToTrash(path("frozen/file")), EROFS);
    EXPECT_EQ(contentOf(path("frozen/file")), "x");
  });
}

TEST_F(TrashRefusal, AVolumeWithoutFreeSpaceKeepsItsItem) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountNew(home(), "tmpfs", "size=64k");
    makeFile(home() + "/file", "x");
    fillVolume(home());
    EXPECT_EQ(moveToTrash(home() + "/file"), ENOSPC);
    EXPECT_EQ(contentOf(home() + "/file"), "x");
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
    EXPECT_THAT(namesIn(trash() + "/info"), IsEmpty());
  });
}

TEST_F(TrashRefusal, AVolumeWithoutFreeInodesKeepsItsItem) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountNew(home(), "tmpfs", "nr_inodes=2");
    makeFile(home() + "/file", "x");
    EXPECT_EQ(moveToTrash(home() + "/file"), ENOSPC);
    EXPECT_EQ(contentOf(home() + "/file"), "x");
    EXPECT_THAT(namesIn(home()), ElementsAre("file"));
  });
}

TEST_F(TrashRefusal, AnItemWhoseOriginCannotBeRecordedStays) {
  makeFolder(path("item"));
  makeFile(path("item/file"), "x");
  inRoom([&] {
    forbidWriting();
    EXPECT_EQ(moveToTrash(path("item")), EFBIG);
    EXPECT_EQ(contentOf(path("item/file")), "x");
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
    EXPECT_THAT(namesIn(trash() + "/info"), IsEmpty());
  });
}

TEST_F(TrashRefusal, APathBeyondTheSystemsLimitStays) {
  const std::string name(200, 'd');
  inRoom([&] {
    std::string deep = path("");
    ASSERT_EQ(chdir(deep.c_str()), 0);
    while (deep.size() < 4200) {
      makeFolder(name);
      ASSERT_EQ(chdir(name.c_str()), 0);
      deep += name + "/";
    }
    makeFile("file", "x");
    EXPECT_EQ(moveToTrash(deep + "file"), ENAMETOOLONG);
    EXPECT_EQ(contentOf("file"), "x");
  });
}

TEST_F(TrashRefusal, AnItemThatContainsTheTrashStays) {
  makeFile(home() + "/file", "x");
  inRoom([&] {
    EXPECT_NE(moveToTrash(home()), 0);
    EXPECT_EQ(contentOf(home() + "/file"), "x");
    EXPECT_THAT(namesIn(trash() + "/files"), IsEmpty());
  });
}

TEST_F(TrashRefusal, ALinkInThePlaceOfAVolumesTrashIsNotFollowed) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeFolder(path("volume/elsewhere"));
    makeFile(path("volume/file"), "x");
    makeLink(volumeTrash("volume"), "elsewhere");
    EXPECT_EQ(moveToTrash(path("volume/file")), ENOTSUP);
    EXPECT_EQ(volumeName, "volume");
    EXPECT_EQ(contentOf(path("volume/file")), "x");
    EXPECT_THAT(namesIn(path("volume/elsewhere")), IsEmpty());
  });
}

TEST_F(TrashRefusal, ALinkInAVolumesTrashIsNotFollowed) {
  DUNMERE_NEEDS(Feature::overlayMounts);
  inRoom([&] {
    enterPrivateMounts();
    mountVolume(path("volume"));
    makeFolder(path("volume/elsewhere"));
    makeFile(path("volume/file"), "x");
    for (const std::string folder : {"/files", "/info"}) {
      makeFolder(volumeTrash("volume"));
      makeLink(volumeTrash("volume") + folder, "../elsewhere");
      EXPECT_EQ(moveToTrash(path("volume/file")), ENOTSUP) << folder;
      EXPECT_EQ(contentOf(path("volume/file")), "x");
      EXPECT_THAT(namesIn(path("volume/elsewhere")), IsEmpty());
      removeTree(volumeTrash("volume"));
    }
  });
}

TEST_F(TrashRefusal, AFileInThePlaceOfATrashIsLeftAlone) {
  makeFolder(dataHome());
  makeFile(trash(), "a file");
  makeFile(path("file"), "x");
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("file")), ENOTSUP);
    EXPECT_EQ(contentOf(path("file")), "x");
    EXPECT_EQ(contentOf(trash()), "a file");
  });
}

TEST_F(TrashRefusal, ALinkToNowhereInThePlaceOfATrashIsNoTrash) {
  makeFolder(dataHome());
  makeLink(trash(), "nowhere");
  makeFile(path("file"), "x");
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("file")), ENOTSUP);
    EXPECT_EQ(contentOf(path("file")), "x");
    EXPECT_FALSE(isThere(dataHome() + "/nowhere"));
  });
}

TEST_F(TrashRefusal, AnotherUsersTrashIsNotUsed) {
  makeFile(path("file"), "x");
  makeFolder(dataHome());
  if (geteuid() != 0) {
    makeLink(trash(), "/");  // root's
  } else {
    DUNMERE_NEEDS(Feature::secondUser);
    makeFolder(trash());
    ASSERT_EQ(chown(trash().c_str(), 1234, 1234), 0);
  }
  inRoom([&] {
    EXPECT_EQ(moveToTrash(path("file")), ENOTSUP);
    EXPECT_EQ(contentOf(path("file")), "x");
  });
}

TEST_F(TrashRefusal, ATrashInTheHomeButOnAnotherVolumeIsNotUsed) {
  DUNMERE_NEEDS(Feature::privateMounts);
  inRoom([&] {
    enterPrivateMounts();
    makeFolder(dataHome());
    makeFolder(trash());
    mountNew(trash(), "tmpfs");
    makeFile(home() + "/file", "x");
    EXPECT_EQ(moveToTrash(home() + "/file"), ENOTSUP);
    EXPECT_EQ(contentOf(home() + "/file"), "x");
  });
}

TEST_F(TrashRefusal, AStickyFolderKeepsTheItemsOfOthersOnly) {
  DUNMERE_NEEDS(Feature::secondUser);
  makeFolder(path("shared"));
  makeFile(path("shared/file"), "x");
  ASSERT_EQ(chmod(home().c_str(), 0777), 0);
  ASSERT_EQ(chmod(path("shared").c_str(), 01777), 0);
  inRoom([&] {
    becomeNobody();
    makeFile(path("shared/own"), "y");
    EXPECT_EQ(moveToTrash(path("shared/own")), 0);
    EXPECT_EQ(moveToTrash(path("shared/file")), EPERM);
    EXPECT_TRUE(isThere(path("shared/file")));
    EXPECT_EQ(namesIn(trash() + "/files"), namesOfRecords(trash()));
  });
}

}  // namespace
}  // namespace dunmere::test
