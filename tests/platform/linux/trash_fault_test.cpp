// The move to the Trash is ended, made to fail, and robbed of its item at each of its system calls in turn.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "platform/trash.h"
#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"
#include "tests/support/stepped_process.h"

namespace dunmere::test {
namespace {

using testing::AnyOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::IsEmpty;

constexpr int kKilled = -SIGKILL;

/// The system never refuses an end, nor to tell who the user is. The last two are no calls of the Trash's: memory is
/// the allocator's business, signal stacks are a sanitizer's, and no sanitizer outlives a refusal.
bool canFail(long call) {
  return call >= 0 && call != SYS_exit_group && call != SYS_geteuid && call != SYS_mmap && call != SYS_sigaltstack;
}

/// Where an item's move to the Trash leads.
enum class Kind { homeTrash, volumeTrash };

/// An item, a folder with a file in it, whose move is stepped through. Each step begins with fresh folders.
class TrashUnderFaults : public TrashRoom, public testing::WithParamInterface<Kind> {
 protected:
  void SetUp() override { DUNMERE_NEEDS(Feature::tracing); }

  /// Calls `body` in the room, where "volume" is a volume of its own and the home's Trash may lie there.
  void inVolume(const std::function<void()>& body) const {
    DUNMERE_NEEDS(Feature::overlayMounts);
    inRoom([&] {
      enterPrivateMounts();
      mountVolume(path("volume"));
      if (GetParam() == Kind::homeTrash) setenv("XDG_DATA_HOME", path("volume/data").c_str(), 1);
      body();
    });
  }

  /// The same for moves that do not come to look for a Trash of the volume's when the home has one.
  void inFolderOrVolume(const std::function<void()>& body) const {
    if (GetParam() == Kind::volumeTrash) return inVolume(body);
    inRoom([&] {
      makeFolder(path("volume"));
      setenv("XDG_DATA_HOME", path("volume/data").c_str(), 1);
      body();
    });
  }

  std::string item() const { return path("volume/place/item"); }

  /// Where the item may be moved to; and the folder that its origin is told from. A home that cannot be looked at is no
  /// reason not to use the volume's own Trash.
  std::vector<std::pair<std::string, std::string>> trashes() const {
    return {{path("volume/data/Trash"), ""}, {volumeTrash("volume"), path("volume/")}};
  }
  std::vector<std::string> trashed() const {
    std::vector<std::string> names;
    for (const auto& [trash, top] : trashes()) std::ranges::copy(namesIn(trash + "/files"), std::back_inserter(names));
    return names;
  }

  void makeItem() const {
    for (const char* name : {"volume/place", "volume/data"}) {
      removeTree(path(name));
    }
    for (const auto& [trash, top] : trashes()) removeTree(trash);
    makeFolder(path("volume/place"));
    makeFolder(item());
    makeFile(item() + "/file", "asked for");
  }

  /// Moves the item while `atStop` interferes; what the question named is held before the first stop. The code is 0
  /// after a success, minus the signal after a violent end.
  int moveStepped(const std::function<void(const SystemCallStop&)>& atStop) {
    std::unique_ptr<TrashableItem> held;
    return runStepped([&] { held = Trash(fileSystem).hold(FileUrl(item())); },
                      [&] {
                        const auto moved = held->moveToTrash();
                        return moved ? 0 : moved.error().code.value();
                      },
                      atStop);
  }

  int countStops() {
    makeItem();
    int stops = 0;
    EXPECT_EQ(moveStepped([&](const SystemCallStop&) { ++stops; }), 0);
    EXPECT_GT(stops, 50);
    return stops;
  }

  /// The item is whole and either at its place or in the Trash, from where its record leads it back.
  void expectWholeInOnePlace() const {
    const bool isHere = isThere(item());
    ASSERT_EQ(trashed().size() + (isHere ? 1 : 0), 1U);
    if (!isHere) restore();
    EXPECT_THAT(namesIn(item()), ElementsAre("file"));
    EXPECT_EQ(contentOf(item() + "/file"), "asked for");
  }

  /// The Trashes tell the sizes of their folders in whole lines, or not at all.
  void expectWholeSizes() const {
    for (const auto& [trash, top] : trashes()) {
      const std::string sizes = trash + "/directorysizes";
      if (!isThere(sizes)) continue;
      EXPECT_THAT(contentOf(sizes), EndsWith(" item\n"));
    }
  }
  void expectNoTraces() const {
    for (const auto& [trash, top] : trashes()) {
      for (const std::string& name : namesIn(trash)) EXPECT_THAT(name, AnyOf("directorysizes", "files", "info"));
    }
  }

  void restore() const {
    for (const auto& [trash, top] : trashes()) {
      for (const std::string& name : namesIn(trash + "/files")) {
        const std::string record = contentOf(trash + "/info/" + name + ".trashinfo");
        const std::string origin = top + percentDecoded(recordValue(record, "Path"));
        ASSERT_EQ(origin, item());
        ASSERT_EQ(std::rename((trash + "/files/" + name).c_str(), origin.c_str()), 0);
      }
    }
  }
};

TEST_P(TrashUnderFaults, KilledAtAnySystemCallTheItemIsWholeInOnePlace) {
  inFolderOrVolume([&] {
    int leftInPlace = 0;
    int number = 0;
    for (;; ++number) {
      SCOPED_TRACE("killed at stop " + std::to_string(number));
      makeItem();
      const int code = moveStepped([&](const SystemCallStop& stop) {
        if (stop.number() == number) stop.kill();
      });
      if (code == 0) break;  // it came to its end before that stop
      ASSERT_EQ(code, kKilled);
      leftInPlace += isThere(item()) ? 1 : 0;
      expectWholeSizes();
      expectWholeInOnePlace();
      // What the dead process left in the Trash is in nobody's way.
      ASSERT_EQ(moveStepped([](const SystemCallStop&) {}), 0);
      expectWholeInOnePlace();
    }
    EXPECT_GT(leftInPlace, 0);
    EXPECT_LT(leftInPlace, number);
  });
}

TEST_P(TrashUnderFaults, AnyFailingSystemCallLeavesTheItemWholeWhereTheAnswerSays) {
  inVolume([&] {
    const int stops = countStops();
    for (const int error : {EIO, ENOSPC, EDQUOT, EACCES, EROFS, EMFILE, ENOENT}) {
      for (int number = 0; number < stops; ++number) {
        SCOPED_TRACE("error " + std::to_string(error) + " at stop " + std::to_string(number));
        makeItem();
        const int code = moveStepped([&](const SystemCallStop& stop) {
          if (stop.number() == number && canFail(stop.callAhead())) stop.fail(error);
        });
        ASSERT_GE(code, 0);
        EXPECT_EQ(isThere(item()), code != 0);
        expectWholeSizes();
        expectNoTraces();
        expectWholeInOnePlace();
      }
    }
  });
}

TEST_P(TrashUnderFaults, WhatTakesTheItemsPlaceAtAnySystemCallIsNotMoved) {
  inFolderOrVolume([&] {
    const std::string aside = path("volume/place/aside");
    bool isReplaced = true;
    int number = 0;
    for (; isReplaced; ++number) {
      SCOPED_TRACE("replaced at stop " + std::to_string(number));
      makeItem();
      isReplaced = false;
      const int code = moveStepped([&](const SystemCallStop& stop) {
        if (stop.number() != number) return;
        isReplaced = true;
        if (isThere(item())) {
          ASSERT_EQ(std::rename(item().c_str(), aside.c_str()), 0);
        }
        makeFile(item(), "not asked for");
      });
      if (!isReplaced) continue;  // it came to its end before that stop
      EXPECT_THAT(code, AnyOf(0, ESTALE));
      EXPECT_EQ(contentOf(item()), "not asked for");
      EXPECT_EQ(isThere(aside), code != 0);
      EXPECT_EQ(trashed().size(), code == 0 ? 1U : 0U);
      for (const auto& [trash, top] : trashes()) EXPECT_EQ(namesIn(trash + "/files"), namesOfRecords(trash));
    }
    EXPECT_GT(number, 50);
  });
}

INSTANTIATE_TEST_SUITE_P(InEveryTrash, TrashUnderFaults, testing::Values(Kind::homeTrash, Kind::volumeTrash),
                         [](const auto& parameter) {
                           return parameter.param == Kind::homeTrash ? "HomeTrash" : "VolumeTrash";
                         });

class TrashQuestion : public TrashRoom {
 protected:
  std::unique_ptr<TrashableItem> hold(const std::string& name) { return Trash(fileSystem).hold(FileUrl(path(name))); }
  static int codeOf(const std::expected<void, SweepError>& moved) { return moved ? 0 : moved.error().code.value(); }
};

TEST_F(TrashQuestion, WhatReplacedTheItemSinceItWasAskedForStays) {
  makeFile(path("item"), "asked for");
  inRoom([&] {
    const auto held = hold("item");
    ASSERT_EQ(unlink(path("item").c_str()), 0);
    makeFile(path("item"), "not asked for");
    EXPECT_EQ(codeOf(held->moveToTrash()), ESTALE);
    EXPECT_EQ(contentOf(path("item")), "not asked for");
    EXPECT_FALSE(isThere(trash()));
  });
}

TEST_F(TrashQuestion, AnItemThatWentAwaySinceItWasAskedForIsMissing) {
  makeFile(path("item"), "asked for");
  inRoom([&] {
    const auto held = hold("item");
    ASSERT_EQ(std::rename(path("item").c_str(), path("renamed").c_str()), 0);
    EXPECT_EQ(codeOf(held->moveToTrash()), ENOENT);
    EXPECT_EQ(contentOf(path("renamed")), "asked for");
  });
}

TEST_F(TrashQuestion, AnItemThatCameSinceItWasAskedForStays) {
  inRoom([&] {
    const auto held = hold("item");
    makeFile(path("item"), "not asked for");
    EXPECT_EQ(codeOf(held->moveToTrash()), ENOENT);
    EXPECT_EQ(contentOf(path("item")), "not asked for");
  });
}

TEST_F(TrashQuestion, ALinkThatTookTheItemsPlaceIsNotFollowed) {
  makeFile(path("item"), "asked for");
  makeFile(path("target"), "not asked for");
  inRoom([&] {
    const auto held = hold("item");
    ASSERT_EQ(unlink(path("item").c_str()), 0);
    makeLink(path("item"), "target");
    EXPECT_EQ(codeOf(held->moveToTrash()), ESTALE);
    EXPECT_EQ(linkTargetOf(path("item")), "target");
    EXPECT_EQ(contentOf(path("target")), "not asked for");
  });
}

TEST_F(TrashQuestion, AFolderAboveThatWasReplacedDoesNotLeadToAnotherItem) {
  makeFolder(path("folder"));
  makeFile(path("folder/item"), "asked for");
  makeFolder(path("other"));
  makeFile(path("other/item"), "not asked for");
  inRoom([&] {
    const auto held = hold("folder/item");
    ASSERT_EQ(std::rename(path("folder").c_str(), path("renamed").c_str()), 0);
    makeLink(path("folder"), "other");
    EXPECT_EQ(codeOf(held->moveToTrash()), 0);
    EXPECT_EQ(contentOf(path("other/item")), "not asked for");
    EXPECT_EQ(contentOf(trash() + "/files/item"), "asked for");
    EXPECT_EQ(recordValue(contentOf(trash() + "/info/item.trashinfo"), "Path"), path("renamed/item"));
  });
}

TEST_F(TrashQuestion, AnItemThatIsOnlyHeldIsLeftAsItWas) {
  makeFile(path("item"), "asked for");
  inRoom([&] {
    hold("item").reset();
    EXPECT_EQ(contentOf(path("item")), "asked for");
    EXPECT_FALSE(isThere(trash()));
  });
}

}  // namespace
}  // namespace dunmere::test
