// The attribute buffers of macOS, on buffers made here: what they mean, and that no broken one does harm.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <limits>
#include <random>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "platform/macos/attribute_records.h"
#include "tests/platform/macos/macos_attribute_buffer.h"
#include "tests/support/random_seed.h"

namespace dunmere::test {
namespace {

namespace layout = attribute_layout;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::Pair;

using Entries = std::vector<std::pair<std::string, EntryAttributes>>;

Entries entriesOf(const EntryBatch& batch) {
  Entries entries;
  for (const auto& entry : batch.entries()) entries.emplace_back(batch.name(entry), entry.attributes);
  return entries;
}

Entries read(const AttributeBuffer& buffer, std::size_t count, EntryDetail detail = EntryDetail::sizes) {
  EntryBatch batch;
  EXPECT_TRUE(addAttributeRecords(buffer.bytes(), count, detail, batch));
  return entriesOf(batch);
}

EntryAttributes file(std::int64_t allocatedBytes, std::int64_t logicalBytes) {
  return {.kind = EntryKind::regularFile, .allocatedBytes = allocatedBytes, .logicalBytes = logicalBytes};
}

EntryAttributes only(EntryKind kind) {
  return {.kind = kind};
}

TEST(MacosAttributes, RegularFileHasItsDiskSpaceAndItsLength) {
  EXPECT_THAT(read(AttributeBuffer().addFile("file", 8192, 5000), 1), ElementsAre(Pair("file", file(8192, 5000))));
}

/// Two records, byte by byte as getattrlistbulk(2) documents them, so that reader and writer cannot err alike.
constexpr auto kFileAndPackage = std::to_array<unsigned char>({
    96,  0,   0,   0,                                                       // the record's length
    9,   64,  0,   128, 0,   0, 0, 0, 0,  0, 0, 0, 4, 2, 0, 0, 0, 0, 0, 0,  // what is returned
    60,  0,   0,   0,   6,   0, 0, 0,                                       // the name's place and length
    1,   0,   0,   0,                                                       // a regular file
    0,   0,   0,   0,   0,   0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0,              // the Finder's information
    0,   0,   0,   0,   0,   0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0,              //
    0,   32,  0,   0,   0,   0, 0, 0,                                       // 8192 bytes of disk
    136, 19,  0,   0,   0,   0, 0, 0,                                       // 5000 bytes long
    'a', '.', 't', 'x', 't', 0, 0, 0, 0,  0, 0, 0,                          // the name
    72,  0,   0,   0,                                                       // the next record's length
    9,   64,  0,   128, 0,   0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,  // nothing of a file is returned
    44,  0,   0,   0,   4,   0, 0, 0,                                       //
    2,   0,   0,   0,                                                       // a folder
    0,   0,   0,   0,   0,   0, 0, 0, 32, 0, 0, 0, 0, 0, 0, 0,              // with the bundle flag
    0,   0,   0,   0,   0,   0, 0, 0, 0,  0, 0, 0, 0, 0, 0, 0,              //
    'd', 'o', 'c', 0,                                                       //
});

TEST(MacosAttributes, BufferWrittenOutByteByByteIsRead) {
  EntryBatch batch;
  ASSERT_TRUE(addAttributeRecords(std::as_bytes(std::span(kFileAndPackage)), 2, EntryDetail::sizes, batch));
  EXPECT_THAT(entriesOf(batch),
              ElementsAre(Pair("a.txt", file(8192, 5000)),
                          Pair("doc", EntryAttributes{.kind = EntryKind::folder, .isPackage = true})));
}

TEST(MacosAttributes, EntriesComeInTheOrderOfTheBuffer) {
  AttributeBuffer buffer;
  buffer.addFile("b", 1, 1).addEntry("a", layout::kFolder).addFile("c", 2, 2);
  EXPECT_THAT(read(buffer, 3),
              ElementsAre(Pair("b", file(1, 1)), Pair("a", only(EntryKind::folder)), Pair("c", file(2, 2))));
}

TEST(MacosAttributes, EveryTypeOfObjectHasItsKind) {
  const std::vector<EntryKind> kinds = {EntryKind::other, EntryKind::regularFile, EntryKind::folder,
                                        EntryKind::other, EntryKind::other,       EntryKind::symbolicLink};
  for (std::uint32_t type = 0; type < 20; ++type) {
    const EntryKind kind = type < kinds.size() ? kinds[type] : EntryKind::other;
    EXPECT_THAT(read(AttributeBuffer().addEntry("x", type), 1), ElementsAre(Pair("x", only(kind)))) << type;
  }
}

TEST(MacosAttributes, OnlyRegularFilesHaveSizes) {
  RecordFields link = AttributeBuffer::entry("link", layout::kSymbolicLink);
  link.allocatedBytes = 4096;
  link.dataLength = 12;
  EXPECT_THAT(read(AttributeBuffer().add(link), 1), ElementsAre(Pair("link", only(EntryKind::symbolicLink))));
}

TEST(MacosAttributes, SizeThatIsNotReportedIsAbsent) {
  RecordFields noSpace = AttributeBuffer::entry("a", layout::kRegularFile);
  noSpace.dataLength = 77;
  RecordFields noLength = AttributeBuffer::entry("b", layout::kRegularFile);
  noLength.allocatedBytes = 0;
  AttributeBuffer buffer;
  buffer.add(noSpace).add(noLength).addEntry("c", layout::kRegularFile);
  const auto entries = read(buffer, 3);
  EXPECT_THAT(entries,
              ElementsAre(Pair("a", file(EntryAttributes::kAbsent, 77)), Pair("b", file(0, EntryAttributes::kAbsent)),
                          Pair("c", only(EntryKind::regularFile))));
  EXPECT_EQ(entries[0].second.countedBytes(), 77);
  EXPECT_EQ(entries[1].second.countedBytes(), 0);
}

TEST(MacosAttributes, LargestSizeIsKeptAndANegativeOneIsNone) {
  constexpr auto kMost = std::numeric_limits<std::int64_t>::max();
  AttributeBuffer buffer;
  buffer.addFile("most", kMost, kMost).addFile("less than nothing", -2, std::numeric_limits<std::int64_t>::min());
  EXPECT_THAT(read(buffer, 2),
              ElementsAre(Pair("most", file(kMost, kMost)), Pair("less than nothing", only(EntryKind::regularFile))));
}

TEST(MacosAttributes, BundleBitMakesAFolderAPackage) {
  constexpr std::uint16_t kHasBundle = 0x2000;
  AttributeBuffer buffer;
  buffer.addFolder("document", kHasBundle).addFolder("folder", static_cast<std::uint16_t>(~kHasBundle));
  const auto entries = read(buffer, 2);
  EXPECT_TRUE(entries.at(0).second.isPackage);
  EXPECT_FALSE(entries.at(1).second.isPackage);
}

TEST(MacosAttributes, AFolderThatTheDesktopShowsAsADocumentIsAPackage) {
  for (const char* name : {"Win11.vmwarevm", "Photos.PhotosLibrary", "notes.rtfd", "Dunmere.dSYM"}) {
    EXPECT_TRUE(read(AttributeBuffer().addFolder(name, 0), 1).at(0).second.isPackage) << name;
    EXPECT_THAT(read(AttributeBuffer().addFile(name, 1, 1), 1), ElementsAre(Pair(name, file(1, 1))));
  }
  for (const char* name : {"Letters.pages", ".rtfd", "folder"})
    EXPECT_FALSE(read(AttributeBuffer().addFolder(name, 0), 1).at(0).second.isPackage) << name;
}

TEST(MacosAttributes, BundleBitOfAFileMeansNothing) {
  RecordFields fields = AttributeBuffer::entry("file", layout::kRegularFile);
  fields.finderFlags = 0x2000;
  EXPECT_THAT(read(AttributeBuffer().add(fields), 1), ElementsAre(Pair("file", only(EntryKind::regularFile))));
}

TEST(MacosAttributes, EntryWithAnErrorIsLeftOutOfAWalkAndListedAsOther) {
  RecordFields failed;
  failed.error = EACCES;
  failed.name = "failed";
  AttributeBuffer buffer;
  buffer.add(failed).addFile("next", 1, 1);
  EXPECT_THAT(read(buffer, 2, EntryDetail::sizes), ElementsAre(Pair("next", file(1, 1))));
  EXPECT_THAT(read(buffer, 2, EntryDetail::kinds),
              ElementsAre(Pair("failed", only(EntryKind::other)), Pair("next", file(1, 1))));
}

TEST(MacosAttributes, WhatStandsBesideAnErrorIsNotBelieved) {
  RecordFields failed = AttributeBuffer::entry("failed", layout::kRegularFile);
  failed.error = EIO;
  failed.allocatedBytes = 1 << 30;
  EXPECT_THAT(read(AttributeBuffer().add(failed), 1, EntryDetail::sizes), IsEmpty());
}

TEST(MacosAttributes, ReportedErrorOfZeroIsNone) {
  RecordFields fine = AttributeBuffer::entry("fine", layout::kFolder);
  fine.error = 0;
  EXPECT_THAT(read(AttributeBuffer().add(fine), 1), ElementsAre(Pair("fine", only(EntryKind::folder))));
}

TEST(MacosAttributes, EntryWithoutATypeCountsAsUnreadable) {
  RecordFields fields;
  fields.name = "untyped";
  EXPECT_THAT(read(AttributeBuffer().add(fields), 1, EntryDetail::sizes), IsEmpty());
  EXPECT_THAT(read(AttributeBuffer().add(fields), 1, EntryDetail::kinds),
              ElementsAre(Pair("untyped", only(EntryKind::other))));
}

TEST(MacosAttributes, NamesAreAnyBytes) {
  AttributeBuffer buffer;
  const std::vector<std::string> names = {"\xff\xfe", "new\nline", " ", "...", "caf\xc3\xa9", std::string(765, 'n')};
  for (const std::string& name : names) buffer.addEntry(name, layout::kFolder);
  const auto entries = read(buffer, names.size());
  ASSERT_EQ(entries.size(), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(entries[i].first, names[i]);
}

TEST(MacosAttributes, NameThatWouldLeadElsewhereIsPassedOver) {
  AttributeBuffer buffer;
  const std::vector<std::string> names = {"", ".", "..", "../../etc", "a/b", "/"};
  for (const std::string& name : names) buffer.addEntry(name, layout::kFolder);
  RecordFields nameless;
  nameless.objectType = layout::kFolder;
  buffer.add(nameless).addFile("kept", 1, 1);
  for (const EntryDetail detail : {EntryDetail::sizes, EntryDetail::kinds}) {
    EXPECT_THAT(read(buffer, names.size() + 2, detail), ElementsAre(Pair("kept", file(1, 1))));
  }
}

TEST(MacosAttributes, FullPathOfALinksTargetIsTold) {
  RecordFields target = AttributeBuffer::entry("target", layout::kRegularFile);
  target.fullPath = "/Volumes/Other/target";
  target.allocatedBytes = 4096;
  const auto bytes = AttributeBuffer().add(target).bytes();
  std::span<const std::byte> rest = bytes;
  const auto record = takeAttributeRecord(rest);
  ASSERT_TRUE(record);
  EXPECT_EQ(record->fullPath, "/Volumes/Other/target");
  EXPECT_EQ(record->name, "target");
  EXPECT_EQ(record->attributes, file(4096, EntryAttributes::kAbsent));
  EXPECT_TRUE(rest.empty());
}

TEST(MacosAttributes, VolumeNameIsRead) {
  const std::string name = "Time Machine";
  std::vector<std::byte> answer(4 + 8 + name.size() + 1);
  const auto length = static_cast<std::uint32_t>(answer.size());
  const layout::TextReference reference{.offset = 8, .length = static_cast<std::uint32_t>(name.size() + 1)};
  std::memcpy(answer.data(), &length, 4);
  std::memcpy(answer.data() + 4, &reference, 8);
  std::memcpy(answer.data() + 12, name.data(), name.size());
  EXPECT_EQ(volumeNameIn(answer), name);
  answer[12] = std::byte{0};
  EXPECT_EQ(volumeNameIn(answer), std::nullopt);
  for (std::size_t cut = 0; cut < answer.size(); ++cut) {
    EXPECT_EQ(volumeNameIn(std::vector(answer.begin(), answer.begin() + static_cast<std::ptrdiff_t>(cut))),
              std::nullopt);
  }
}

// Offsets within a record made by AttributeBuffer::addFile().
constexpr std::size_t kLengthAt = 0;
constexpr std::size_t kReturnedAt = 4;
constexpr std::size_t kNameReferenceAt = 24;

bool isWellFormed(const AttributeBuffer& buffer) {
  EntryBatch batch;
  return addAttributeRecords(buffer.bytes(), 1, EntryDetail::sizes, batch);
}

TEST(MacosBrokenAttributes, RecordLengthMustFit) {
  for (const std::uint32_t length : {0u, 3u, 4u, 20u, 23u, 1000u, 0x8000'0000u, 0xffff'ffffu}) {
    EXPECT_FALSE(isWellFormed(AttributeBuffer().addFile("x", 1, 1).put(kLengthAt, length))) << length;
  }
  EXPECT_TRUE(isWellFormed(AttributeBuffer().addFile("x", 1, 1)));
}

TEST(MacosBrokenAttributes, TextMustLieInItsRecord) {
  const auto withName = [](std::int32_t offset, std::uint32_t length) {
    AttributeBuffer buffer;
    buffer.addFile("x", 1, 1).addFile("another record", 1, 1);
    return buffer.put(kNameReferenceAt, layout::TextReference{.offset = offset, .length = length});
  };
  EXPECT_FALSE(isWellFormed(withName(-28, 4)));  // before the record
  EXPECT_FALSE(isWellFormed(withName(-24, 4)));  // on its length
  EXPECT_FALSE(isWellFormed(withName(28, 100)));
  EXPECT_FALSE(isWellFormed(withName(28, 0xffff'ffff)));
  EXPECT_FALSE(isWellFormed(withName(std::numeric_limits<std::int32_t>::max(), 1)));
  EXPECT_FALSE(isWellFormed(withName(std::numeric_limits<std::int32_t>::min(), 1)));
  EXPECT_FALSE(isWellFormed(withName(std::numeric_limits<std::int32_t>::max(), 0xffff'ffff)));
  EXPECT_TRUE(isWellFormed(withName(-20, 4)));  // odd, but inside
}

TEST(MacosBrokenAttributes, ValueThatWasNeverAskedForIsRefused) {
  AttributeBuffer buffer;
  buffer.addFile("x", 1, 1);
  for (std::size_t group = 0; group < 5; ++group) {
    const std::size_t at = kReturnedAt + 4 * group;
    std::uint32_t bits = 0;
    std::memcpy(&bits, buffer.bytes().data() + at, sizeof bits);
    constexpr std::uint32_t kNeverAsked = 0x0000'0800;
    EXPECT_FALSE(isWellFormed(AttributeBuffer(buffer).put(at, bits | kNeverAsked))) << group;
  }
}

TEST(MacosBrokenAttributes, EntriesBeforeTheBrokenOneAreKept) {
  AttributeBuffer buffer;
  buffer.addFile("good", 1, 1);
  const std::size_t second = buffer.size();
  buffer.addFile("bad", 1, 1).put(second, std::uint32_t{0});
  EntryBatch batch;
  EXPECT_FALSE(addAttributeRecords(buffer.bytes(), 2, EntryDetail::sizes, batch));
  EXPECT_THAT(entriesOf(batch), ElementsAre(Pair("good", file(1, 1))));
}

TEST(MacosBrokenAttributes, MoreRecordsThanTheBufferHoldsAreMissed) {
  EntryBatch batch;
  EXPECT_FALSE(addAttributeRecords(AttributeBuffer().addFile("x", 1, 1).bytes(), 2, EntryDetail::sizes, batch));
  EXPECT_FALSE(addAttributeRecords({}, 1, EntryDetail::sizes, batch));
  EXPECT_TRUE(addAttributeRecords({}, 0, EntryDetail::sizes, batch));
}

AttributeBuffer oneOfEach() {
  RecordFields everything = AttributeBuffer::entry("everything", layout::kFolder);
  everything.error = 0;
  everything.finderFlags = 0x2000;
  everything.fullPath = "/a/path";
  everything.allocatedBytes = 1;
  everything.dataLength = 2;
  RecordFields failed;
  failed.error = EIO;
  failed.name = "failed";
  AttributeBuffer buffer;
  buffer.addFile("file", 4096, 10).addFolder("folder", 0).add(everything).add(failed).addEntry("link", 5);
  return buffer;
}

TEST(MacosBrokenAttributes, BufferCutOffAnywhereGivesNoMoreThanItsWholeRecords) {
  const auto whole = oneOfEach().bytes();
  std::size_t before = 0;
  for (std::size_t cut = 0; cut < whole.size(); ++cut) {
    const std::vector<std::byte> part(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(cut));
    EntryBatch batch;
    EXPECT_FALSE(addAttributeRecords(part, 5, EntryDetail::kinds, batch)) << cut;
    EXPECT_GE(batch.size(), before) << cut;
    before = batch.size();
  }
  EXPECT_EQ(before, 4u);
  EXPECT_EQ(read(oneOfEach(), 5, EntryDetail::kinds).size(), 5u);
}

/// Whatever the bytes: what is handed out lies in the buffer and names an entry.
void expectHarmless(const std::vector<std::byte>& bytes) {
  EntryBatch batch;
  addAttributeRecords(bytes, 64, EntryDetail::kinds, batch);
  EXPECT_LE(batch.size(), 64u);
  for (const auto& [name, attributes] : entriesOf(batch)) {
    EXPECT_FALSE(name.empty());
    EXPECT_LE(name.size(), bytes.size());
    EXPECT_EQ(name.find_first_of(std::string_view("/\0", 2)), std::string::npos);
    EXPECT_GE(attributes.allocatedBytes, EntryAttributes::kAbsent);
    EXPECT_GE(attributes.logicalBytes, EntryAttributes::kAbsent);
  }
  volumeNameIn(bytes);
}

TEST(MacosBrokenAttributes, ChangedBytesDoNoHarm) {
  std::mt19937_64 random(firstSeed());
  const auto whole = oneOfEach().bytes();
  for (int round = 0; round < 20'000; ++round) {
    std::vector<std::byte> bytes = whole;
    for (auto changes = 1 + random() % 4; changes > 0; --changes) {
      // A word with few or all bits set is likelier to hit a limit than any other.
      constexpr std::array<std::uint32_t, 6> kWords = {0, 1, 4, 0x7fff'ffff, 0x8000'0000, 0xffff'ffff};
      const std::uint32_t word = random() % 2 ? kWords[random() % kWords.size()] : static_cast<std::uint32_t>(random());
      std::memcpy(bytes.data() + 4 * (random() % (bytes.size() / 4)), &word, sizeof word);
    }
    bytes.resize(bytes.size() - random() % 8);
    expectHarmless(bytes);
  }
}

TEST(MacosBrokenAttributes, RandomBytesDoNoHarm) {
  std::mt19937_64 random(firstSeed());
  for (int round = 0; round < 20'000; ++round) {
    std::vector<std::byte> bytes(random() % 200);
    std::ranges::generate(bytes, [&] { return static_cast<std::byte>(random()); });
    // A length that fits lets the rest be looked at.
    const auto length = static_cast<std::uint32_t>(random() % (bytes.size() + 1));
    if (bytes.size() >= sizeof length) std::memcpy(bytes.data(), &length, sizeof length);
    expectHarmless(bytes);
  }
}

}  // namespace
}  // namespace dunmere::test
