// What becomes of an item that is moved to the Trash, case by case, and that docs/reliability.md tells just that.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "platform/posix/unique_descriptor.h"
#include "platform/trash.h"
#include "sweeper/error_text.h"
#include "tests/platform/linux/trash_room.h"
#include "tests/support/machine.h"
#include "tests/support/stepped_process.h"

namespace dunmere::test {
namespace {

constexpr const char* kBegin = "<!-- Cases: written by the test TrashOutcomes with DUNMERE_WRITE_DOCS=1 -->\n";
constexpr const char* kEnd = "<!-- End of cases -->\n";

constexpr const char* kHead = "| Case | What becomes of the item | What the footer says |\n|---|---|---|\n";

/// The part of docs/reliability.md that tells the cases.
class Document {
 public:
  Document() : text_(contentOf(DUNMERE_RELIABILITY_DOCUMENT)) {
    begin_ = text_.find(kBegin) + std::string_view(kBegin).size();
    end_ = text_.find(kEnd);
    EXPECT_LE(begin_, end_);
  }

  std::string table() const { return text_.substr(begin_, end_ - begin_); }
  void setTable(const std::string& table) const {
    makeFile(DUNMERE_RELIABILITY_DOCUMENT, text_.substr(0, begin_) + table + text_.substr(end_));
  }

  /// The first column.
  std::vector<std::string> cases() const {
    std::vector<std::string> texts;
    std::istringstream rows(table().substr(std::string_view(kHead).size()));
    for (std::string row; std::getline(rows, row);) texts.push_back(row.substr(2, row.find(" | ") - 2));
    return texts;
  }

 private:
  std::string text_;
  std::size_t begin_ = 0;
  std::size_t end_ = 0;
};

class TrashOutcomes : public TrashRoom {
 protected:
  TrashOutcomes() {
    const auto call = [this](const std::string& folder, const std::string& name) {
      VolumeValues values;
      values.name = name;
      fileSystem.setVolumeValues(folder, values);
    };
    call("/", "Disk");
    call(path("volume"), "Stick");
    call(path("memory"), "Memory");
    chmod(path("").c_str(), 0777);  // the outcome is written down without root's rights, too
  }

  struct Case {
    const char* text;
    std::optional<Feature> needs;
    std::function<std::string()> play;  ///< returns the other two columns
  };

  std::vector<Case> cases();

  /// Plays one case in a process of its own; the row of the table.
  std::string rowOf(const Case& one) const {
    inRoom([&] { makeFile(path("outcome"), "| " + std::string(one.text) + " | " + one.play() + " |\n"); });
    return contentOf(path("outcome"));
  }

  void writeDocument() {
    std::string table = kHead;
    for (const Case& one : cases()) {
      for (const std::string& name : namesIn(path(""))) removeTree(path(name));
      makeFolder(home());
      table += rowOf(one);
    }
    Document().setTable(table);
  }

  // Scenes.

  std::string newItem(const std::string& itemPath) const {
    makeFile(itemPath, "x");
    return itemPath;
  }
  std::string onVolume(const std::string& name = "item", const std::string& options = {}) const {
    enterPrivateMounts();
    mountVolume(path("volume"), options);
    return newItem(path("volume/") + name);
  }
  void makeHomeTrash() const {
    makeFolder(dataHome());
    makeFolder(trash());
  }
  void letAnybodyUseHome() const { ASSERT_EQ(chmod(home().c_str(), 0777), 0); }

  /// Moves the item while `meanwhile` runs between the question and its answer, and tells what became of it.
  std::string move(const std::string& item, const std::function<void()>& meanwhile = [] {}) {
    const UniqueDescriptor witness(open(item.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    const auto held = Trash(fileSystem).hold(FileUrl(item));
    meanwhile();
    const auto moved = held->moveToTrash();
    return placeOf(witness, item) + " | " + (moved ? "" : errorText(moved.error()));
  }

  /// The same, and `interfere` runs right before the first system call of that number.
  std::string moveUntil(long call, const std::string& item,
                        const std::function<void(const SystemCallStop&)>& interfere) {
    const UniqueDescriptor witness(open(item.c_str(), O_PATH | O_NOFOLLOW | O_CLOEXEC));
    std::unique_ptr<TrashableItem> held;
    bool isDone = false;
    const int code = runStepped([&] { held = Trash(fileSystem).hold(FileUrl(item)); },
                                [&] {
                                  const auto moved = held->moveToTrash();
                                  return moved ? 0 : moved.error().code.value();
                                },
                                [&](const SystemCallStop& stop) {
                                  if (isDone || stop.callAhead() != call) return;
                                  isDone = true;
                                  interfere(stop);
                                });
    EXPECT_TRUE(isDone);
    const SweepError error{SweepAttempt::moveToTrash, FileUrl(item), {code, std::generic_category()}, {}};
    return placeOf(witness, item) + " | " + (code == 0 ? "" : errorText(error));
  }

  /// Where the very item is that was there before; fails the test when it is not whole, or its origin is not recorded.
  std::string placeOf(const UniqueDescriptor& witness, const std::string& item) const {
    const std::string now = linkTargetOf("/proc/self/fd/" + std::to_string(witness.get()));
    if (now == item) return "stays";
    if (now.ends_with(" (deleted)")) return "was deleted by somebody else";
    const std::array<std::pair<std::string, const char*>, 5> places{{
        {trash(), "the home’s Trash"},
        {volumeTrash("volume"), "the volume’s own Trash"},
        {path("volume/.Trash/") + std::to_string(geteuid()), "the user’s folder in the volume’s shared Trash"},
        {path("kept"), "the folder that the link names"},
        {path("aside"), "where somebody else put it"},
    }};
    for (const auto& [folder, text] : places) {
      if (!now.starts_with(folder + "/")) continue;
      if (folder == path("aside")) return std::string("is ") + text;
      return std::string("moves to ") + text + nameGiven(folder, now, item);
    }
    ADD_FAILURE() << now;
    return now;
  }

  std::string nameGiven(const std::string& trashFolder, const std::string& now, const std::string& item) const {
    const std::string name = FileUrl(now).lastPathComponent();
    EXPECT_EQ(FileUrl(now).deletingLastPathComponent().path(), trashFolder + "/files");
    const std::string record = contentOf(trashFolder + "/info/" + name + ".trashinfo");
    const std::string origin = percentDecoded(recordValue(record, "Path"));
    EXPECT_EQ(origin.starts_with('/') ? origin : path("volume/") + origin, item);
    const std::string own = FileUrl(item).lastPathComponent();
    if (name == own) return "";
    return own.starts_with(name) ? " under the first " + std::to_string(name.size()) + " bytes of its name"
                                 : " as “" + name + "”";
  }

  std::string replaced() {
    return move(newItem(path("item")), [&] {
      makeFolder(path("aside"));
      ASSERT_EQ(std::rename(path("item").c_str(), path("aside/item").c_str()), 0);
      makeFile(path("item"), "another");
    });
  }
};

void fillVolume(const std::string& folder) {
  const UniqueDescriptor file(open((folder + "/filler").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  const std::string block(4096, 'f');
  while (write(file.get(), block.data(), block.size()) > 0) continue;
  ASSERT_EQ(errno, ENOSPC);
}

void fillWithFiles(const std::string& folder) {
  for (int number = 0;; ++number) {
    const UniqueDescriptor file(open((folder + "/" + std::to_string(number)).c_str(), O_WRONLY | O_CREAT, 0600));
    if (!file) break;
  }
  ASSERT_EQ(errno, ENOSPC);
}

std::vector<TrashOutcomes::Case> TrashOutcomes::cases() {
  return {
      {"The item lies on the volume of the home", {}, [&] { return move(newItem(path("item"))); }},
      {"It lies on another volume", Feature::overlayMounts, [&] { return move(onVolume()); }},
      {"… which has a `.Trash` for all users", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume();
         makeFolder(path("volume/.Trash"));
         EXPECT_EQ(chmod(path("volume/.Trash").c_str(), 01777), 0);
         return move(item);
       }},
      {"… whose `.Trash` lacks the sticky bit", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume();
         makeFolder(path("volume/.Trash"));
         return move(item);
       }},
      {"… whose `.Trash` is a link", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume();
         makeFolder(path("volume/elsewhere"));
         makeLink(path("volume/.Trash"), "elsewhere");
         return move(item);
       }},
      {"… whose `.Trash-UID` is a link", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume();
         makeFolder(path("volume/elsewhere"));
         makeLink(volumeTrash("volume"), "elsewhere");
         return move(item);
       }},
      {"It lies in a btrfs subvolume that is no mount point", Feature::btrfs,
       [&] {
         enterPrivateMounts();
         makeFile(path("image"), "");
         EXPECT_EQ(truncate(path("image").c_str(), 128 << 20), 0);
         makeFolder(path("volume"));
         mountBtrfs(path("image"), path("volume"));
         makeSubvolume(path("volume/below"));
         return move(newItem(path("volume/below/item")));
       }},
      {"It lies in memory (tmpfs)", Feature::privateMounts,
       [&] {
         enterPrivateMounts();
         makeFolder(path("memory"));
         mountNew(path("memory"), "tmpfs");
         return move(newItem(path("memory/item")));
       }},
      {"The volume is read-only", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume();
         remountReadOnly(path("volume"));
         return move(item);
       }},
      {"The volume has no free block", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume("item", "size=128k");
         fillVolume(path("volume"));
         return move(item);
       }},
      {"The volume has no free inode", Feature::overlayMounts,
       [&] {
         const std::string item = onVolume("item", "nr_inodes=64");
         fillWithFiles(path("volume"));
         return move(item);
       }},
      {"A quota is used up (the kernel’s answer is forged)", Feature::tracing,
       [&] {
         return moveUntil(SYS_write, newItem(path("item")), [](const SystemCallStop& stop) { stop.fail(EDQUOT); });
       }},
      {"The item’s folder may not be changed",
       {},
       [&] {
         letAnybodyUseHome();
         makeFolder(path("locked"));
         newItem(path("locked/item"));
         EXPECT_EQ(chmod(path("locked").c_str(), 0555), 0);
         dropPrivileges();
         const std::string told = move(path("locked/item"));
         chmod(path("locked").c_str(), 0755);  // so that whoever made it can remove it
         return told;
       }},
      {"The item is another user’s, in a sticky folder", Feature::secondUser,
       [&] {
         letAnybodyUseHome();
         makeFolder(path("sticky"));
         newItem(path("sticky/item"));
         EXPECT_EQ(chmod(path("sticky").c_str(), 01777), 0);
         dropPrivileges();
         return move(path("sticky/item"));
       }},
      {"It holds another user’s folder with something in it", Feature::secondUser,
       [&] {
         letAnybodyUseHome();
         for (const char* folder : {"item", "item/theirs"}) makeFolder(path(folder));
         newItem(path("item/theirs/file"));
         EXPECT_EQ(chown(path("item").c_str(), 65534, 65534), 0);
         dropPrivileges();
         return move(path("item"));
       }},
      {"The name is taken in the Trash",
       {},
       [&] {
         makeHomeTrash();
         makeFolder(trash() + "/files");
         newItem(trash() + "/files/item");
         return move(newItem(path("item")));
       }},
      {"The name has 255 bytes", {}, [&] { return move(newItem(path(std::string(NAME_MAX, 'n')))); }},
      {"The name is not UTF-8", {}, [&] { return move(newItem(path("\xff\xfe\x80"))); }},
      {"The path has more than 4,095 bytes",
       {},
       [&] {
         std::string deep = path("deep");
         makeFolder(deep);
         EXPECT_EQ(chdir(deep.c_str()), 0);
         for (const std::string name(200, 'd'); deep.size() < 4096; deep += "/" + name) {
           makeFolder(name);
           EXPECT_EQ(chdir(name.c_str()), 0);
         }
         makeFile("item", "x");
         const auto moved = Trash(fileSystem).hold(FileUrl(deep + "/item"))->moveToTrash();
         return (isThere("item") ? "stays | " : "is gone | ") + (moved ? "" : errorText(moved.error()));
       }},
      {"The item is a link",
       {},
       [&] {
         makeLink(path("item"), "/");
         return move(path("item"));
       }},
      {"The item is a mount point", Feature::privateMounts,
       [&] {
         enterPrivateMounts();
         makeFolder(path("item"));
         mountNew(path("item"), "tmpfs");
         return move(path("item"));
       }},
      {"A volume is mounted below the item", Feature::privateMounts,
       [&] {
         enterPrivateMounts();
         makeFolder(path("item"));
         makeFolder(path("item/below"));
         mountNew(path("item/below"), "tmpfs");
         return move(path("item"));
       }},
      {"The Trash lies in the item",
       {},
       [&] {
         makeHomeTrash();
         return move(home());
       }},
      {"It lies in a Trash already",
       {},
       [&] {
         makeHomeTrash();
         for (const char* folder : {"/files", "/info"}) makeFolder(trash() + folder);
         return move(newItem(trash() + "/files/item"));
       }},
      {"In the place of the home’s Trash is a file",
       {},
       [&] {
         makeFolder(dataHome());
         makeFile(trash(), "");
         return move(newItem(path("item")));
       }},
      {"… a link to a folder of the same volume",
       {},
       [&] {
         makeFolder(dataHome());
         makeFolder(path("kept"));
         makeLink(trash(), path("kept"));
         return move(newItem(path("item")));
       }},
      {"… a link to a folder of another volume", Feature::overlayMounts,
       [&] {
         enterPrivateMounts();
         mountVolume(path("volume"));
         makeFolder(dataHome());
         makeLink(trash(), path("volume"));
         return move(newItem(path("item")));
       }},
      {"… a link that leads nowhere",
       {},
       [&] {
         makeFolder(dataHome());
         makeLink(trash(), "nowhere");
         return move(newItem(path("item")));
       }},
      {"… a folder of another user", Feature::secondUser,
       [&] {
         makeHomeTrash();
         EXPECT_EQ(chown(trash().c_str(), 1234, 1234), 0);
         return move(newItem(path("item")));
       }},
      {"While the question is open, the item is renamed and another takes its place", {}, [&] { return replaced(); }},
      {"… the item is deleted and another takes its place",
       {},
       [&] {
         return move(newItem(path("item")), [&] {
           ASSERT_EQ(unlink(path("item").c_str()), 0);
           makeFile(path("item"), "another");
         });
       }},
      {"… the item is deleted",
       {},
       [&] { return move(newItem(path("item")), [&] { ASSERT_EQ(unlink(path("item").c_str()), 0); }); }},
      {"Another takes the item’s place right before the move", Feature::tracing,
       [&] {
         makeFolder(path("aside"));
         return moveUntil(SYS_renameat2, newItem(path("item")), [&](const SystemCallStop&) {
           ASSERT_EQ(std::rename(path("item").c_str(), path("aside/item").c_str()), 0);
           makeFile(path("item"), "another");
         });
       }},
  };
}

class TrashOutcome : public TrashOutcomes, public testing::WithParamInterface<std::size_t> {};

TEST_P(TrashOutcome, IsToldByTheDocument) {
  const Case one = cases().at(GetParam());
  if (one.needs) DUNMERE_NEEDS(*one.needs);
  EXPECT_THAT(Document().table(), testing::HasSubstr(rowOf(one)));
}

constexpr std::size_t kCases = 33;
INSTANTIATE_TEST_SUITE_P(All, TrashOutcome, testing::Range(std::size_t{0}, kCases));

TEST_F(TrashOutcomes, OfTheDocumentAreTheseCases) {
  std::vector<std::string> texts;
  for (const Case& one : cases()) texts.push_back(one.text);
  EXPECT_EQ(texts.size(), kCases);
  if (std::getenv("DUNMERE_WRITE_DOCS") != nullptr) return writeDocument();
  EXPECT_TRUE(Document().table().starts_with(kHead));
  EXPECT_EQ(Document().cases(), texts);
}

}  // namespace
}  // namespace dunmere::test
