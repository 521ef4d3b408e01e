#include <gtest/gtest.h>

#include <string>

#include "engine/scan/folder_reading.h"

namespace dunmere {
namespace {

TEST(PackageNames, ProgramsAndPlugInsArePackages) {
  for (const char* extension : {"app", "appex", "bundle", "kext", "mdimporter", "plugin", "prefpane", "qlgenerator",
                                "saver", "scptd", "wdgt", "xpc"}) {
    EXPECT_TRUE(isPackageName(std::string("Stem.") + extension)) << extension;
  }
}

TEST(PackageNames, FoldersThatHoldAPersonsDataAreNone) {
  for (const char* name : {"Win11.vmwarevm", "Windows.pvm", "backup.sparsebundle", "Photos.photoslibrary",
                           "Song.logicx", "Dunmere.xcodeproj", "notes.rtfd"}) {
    EXPECT_FALSE(isPackageName(name)) << name;
  }
}

TEST(PackageNames, CaseDoesNotMatter) {
  EXPECT_TRUE(isPackageName("Mail.APP"));
  EXPECT_TRUE(isPackageName("Colours.prefPane"));
}

TEST(PackageNames, WordsThatOrdinaryFoldersUseAreNoPackages) {
  for (const char* extension :
       {"action",   "component", "definition", "dist",      "download",    "epub",  "key",
        "menu",     "numbers",   "pages",      "patch",     "pkg",         "mpkg",  "service",
        "template", "theater",   "workflow",   "framework", "xcframework", "lproj", "xcassets"}) {
    EXPECT_FALSE(isPackageName(std::string("Stem.") + extension)) << extension;
  }
}

TEST(PackageNames, TheStemMayNotBeEmpty) {
  EXPECT_FALSE(isPackageName(".app"));
  EXPECT_TRUE(isPackageName("x.app"));
}

TEST(PackageNames, OnlyTheLastExtensionCounts) {
  EXPECT_TRUE(isPackageName("notes.txt.app"));
  EXPECT_FALSE(isPackageName("Mail.app.old"));
}

TEST(PackageNames, NamesWithoutAnExtensionAreNoPackages) {
  for (const char* name : {"", ".", "..", "app", "applications", "Mail.", "Mail.ap", "Mail.apps", "Mail.app "}) {
    EXPECT_FALSE(isPackageName(name)) << name;
  }
}

TEST(PackageNames, AnyBytesMayBeAsked) {
  EXPECT_TRUE(isPackageName("\xff\xfe.app"));
  EXPECT_FALSE(isPackageName("x.\xff\xfe"));
  EXPECT_FALSE(isPackageName("x." + std::string(250, 'a')));
}

}  // namespace
}  // namespace dunmere
