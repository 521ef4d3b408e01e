// Any answer of macOS's: nothing beyond it is looked at, and what is told of it could be an entry.
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "platform/macos/attribute_records.h"
#include "tests/fuzz/require.h"

namespace dunmere::test {
namespace {

using Bytes = std::span<const std::byte>;

void requireInside(std::string_view text, Bytes buffer) {
  const auto* first = reinterpret_cast<const std::byte*>(text.data());
  require(text.empty() || (first >= buffer.data() && first + text.size() <= buffer.data() + buffer.size()),
          "a text lies in the buffer");
}

std::size_t checkRecords(Bytes buffer) {
  std::size_t records = 0;
  for (Bytes rest = buffer; const auto record = takeAttributeRecord(rest); ++records) {
    requireInside(record->name, buffer);
    requireInside(record->fullPath, buffer);
    if (!record->attributes || record->attributes->kind == EntryKind::regularFile) continue;
    require(record->attributes->countedBytes() == 0, "only a file has a size");
  }
  return records;
}

void checkBatch(Bytes buffer, std::size_t records, EntryDetail detail) {
  EntryBatch batch;
  require(addAttributeRecords(buffer, records, detail, batch), "well-formed records are all taken");
  require(!addAttributeRecords(buffer, records + 1, detail, batch), "the malformed one is told");
  for (const EntryBatch::Entry& entry : batch.entries()) {
    const std::string_view name = batch.name(entry);
    require(!name.empty() && name != "." && name != "..", "a name names an entry");
    require(name.find_first_of(std::string_view("/\0", 2)) == std::string_view::npos, "a name leads nowhere else");
    require(entry.attributes.countedBytes() >= 0, "no size is less than nothing");
  }
}

void check(Bytes buffer) {
  const std::size_t records = checkRecords(buffer);
  checkBatch(buffer, records, EntryDetail::kinds);
  checkBatch(buffer, records, EntryDetail::sizes);
  if (const auto name = volumeNameIn(buffer)) {
    require(!name->empty() && name->size() <= buffer.size(), "a volume's name lies in the buffer");
  }
}

}  // namespace
}  // namespace dunmere::test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  dunmere::test::check(std::as_bytes(std::span(data, size)));
  return 0;
}
