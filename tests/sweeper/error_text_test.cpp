#include "sweeper/error_text.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>

namespace dunmere {
namespace {

std::string textOf(SweepAttempt attempt, int code, const std::string& path = "/home/me/Photos",
                   const std::string& volumeName = {}) {
  return errorText({attempt, FileUrl(path), std::error_code(code, std::generic_category()), volumeName});
}

TEST(ErrorText, ScanThatCouldNotStartNamesNothing) {
  EXPECT_EQ(textOf(SweepAttempt::startScan, EAGAIN), "The file couldn’t be opened.");
  EXPECT_EQ(textOf(SweepAttempt::startScan, ENOENT), "The file couldn’t be opened.");
}

TEST(ErrorText, MissingFolder) {
  EXPECT_EQ(textOf(SweepAttempt::openFolder, ENOENT),
            "The file “Photos” couldn’t be opened because there is no such file.");
}

TEST(ErrorText, FolderWithoutPermission) {
  const std::string text = "The file “Photos” couldn’t be opened because you don’t have permission to view it.";
  EXPECT_EQ(textOf(SweepAttempt::openFolder, EACCES), text);
  EXPECT_EQ(textOf(SweepAttempt::openFolder, EPERM), text);
}

TEST(ErrorText, FolderWithTooLongAName) {
  EXPECT_EQ(textOf(SweepAttempt::openFolder, ENAMETOOLONG),
            "The file “Photos” couldn’t be opened because its name is invalid.");
}

TEST(ErrorText, FolderThatCannotBeListedOtherwise) {
  for (const int code : {ENOTDIR, EIO, ELOOP, EBUSY, EROFS}) {
    EXPECT_EQ(textOf(SweepAttempt::openFolder, code), "The file “Photos” couldn’t be opened.") << code;
  }
}

TEST(ErrorText, TrashWithoutPermission) {
  const std::string text = "“Photos” couldn’t be moved to the trash because you don’t have permission to access it.";
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EACCES), text);
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EPERM), text);
}

TEST(ErrorText, VolumeWithoutTrash) {
  const std::string text = "“Photos” couldn’t be moved to the trash because the volume “Backup” doesn’t have one.";
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENOTSUP, "/media/Backup/Photos", "Backup"), text);
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EOPNOTSUPP, "/media/Backup/Photos", "Backup"), text);
}

TEST(ErrorText, NamelessVolumeWithoutTrash) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENOTSUP),
            "“Photos” couldn’t be moved to the trash because its volume doesn’t have one.");
}

TEST(ErrorText, TrashOfAnItemThatWasReplaced) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ESTALE),
            "“Photos” couldn’t be moved to the trash because something else has taken its place.");
}

TEST(ErrorText, TrashOfAMissingItem) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENOENT), "The file “Photos” doesn’t exist.");
}

TEST(ErrorText, TrashOnAReadOnlyVolume) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EROFS),
            "You can’t save the file “Photos” because the volume is read only.");
}

TEST(ErrorText, TrashWithoutSpace) {
  const std::string text = "You can’t save the file “Photos” because there isn’t enough space.";
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENOSPC), text);
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EDQUOT), text);
}

TEST(ErrorText, TrashOfTooLongAName) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENAMETOOLONG),
            "“Photos” couldn’t be moved to the trash because its name is too long.");
}

TEST(ErrorText, TrashOfAMountPoint) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EBUSY),
            "“Photos” couldn’t be moved to the trash because a volume is mounted in it.");
}

TEST(ErrorText, TrashOfWhatIsInIt) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EALREADY),
            "“Photos” couldn’t be moved to the trash because it is in the trash already.");
}

TEST(ErrorText, TrashOfWhatHoldsIt) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EDEADLK),
            "“Photos” couldn’t be moved to the trash because it holds the trash.");
}

TEST(ErrorText, TrashOfWhatCouldNeverBeDeleted) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, ENOTEMPTY),
            "“Photos” couldn’t be moved to the trash because you don’t have permission to delete all of it.");
}

TEST(ErrorText, TrashThatFailsOtherwise) {
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EIO), "“Photos” couldn’t be moved to the trash.");
}

TEST(ErrorText, NameIsTheLastComponentMadeSafe) {
  EXPECT_EQ(textOf(SweepAttempt::openFolder, EIO, "/a/caf\xE9\n/"), "The file “caf\uFFFD[U+000A]” couldn’t be opened.");
  EXPECT_EQ(textOf(SweepAttempt::moveToTrash, EIO, "/a/שלום"), "“\u2066שלום\u2069” couldn’t be moved to the trash.");
  EXPECT_EQ(textOf(SweepAttempt::openFolder, EIO, "/"), "The file “/” couldn’t be opened.");
}

}  // namespace
}  // namespace dunmere
