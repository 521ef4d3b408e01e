#include "engine/listing/row_order.h"

#include <algorithm>
#include <cstdint>
#include <functional>
#include <future>
#include <iterator>
#include <string>
#include <thread>
#include <utility>

namespace dunmere {

namespace {

/// A key and what the sort compares first.
struct SortedKey {
  std::uint64_t head = 0;  // its first eight bytes, the first one highest, missing ones 0
  std::string_view bytes;
  std::size_t position = 0;

  bool operator<(const SortedKey& other) const {
    if (head != other.head) return head < other.head;
    // Equal heads may still hide a missing byte behind a zero byte, so the whole is compared.
    const int order = bytes.compare(other.bytes);
    return order != 0 ? order < 0 : position < other.position;
  }
};

std::uint64_t headOf(std::string_view bytes) {
  std::uint64_t head = 0;
  for (std::size_t i = 0; i < sizeof head; ++i) {
    head = head << 8 | (i < bytes.size() ? static_cast<unsigned char>(bytes[i]) : 0U);
  }
  return head;
}

std::size_t sharedLength(std::span<const std::string_view> keys) {
  if (keys.empty()) return 0;
  std::string_view shared = keys.front();
  for (const std::string_view key : keys) {
    const auto end = std::ranges::mismatch(shared, key).in1;
    shared = std::string_view(shared.begin(), end);
  }
  return shared.size();
}

}  // namespace

/// Names in one folder, and so their sort keys, tend to begin alike ("IMG_2024…"). What all keys share is left out of
/// every comparison, and the eight bytes after it are compared as one number; only keys that agree there are looked up
/// in memory.
std::vector<std::size_t> orderOfKeys(std::span<const std::string_view> keys) {
  const std::size_t shared = sharedLength(keys);
  std::vector<SortedKey> sorted;
  sorted.reserve(keys.size());
  for (const std::string_view key : keys) {
    const std::string_view bytes = key.substr(shared);
    sorted.push_back({headOf(bytes), bytes, sorted.size()});
  }
  std::sort(sorted.begin(), sorted.end());
  std::vector<std::size_t> positions(keys.size());
  std::ranges::transform(sorted, positions.begin(), &SortedKey::position);
  return positions;
}

class RowOrder::Sorter {
 public:
  Sorter(RowOrder& order, FileSystem& fileSystem, const EntryNames& names, const std::vector<ColumnRow>& rows)
      : order_(order), fileSystem_(fileSystem), names_(names), rows_(rows) {}

  /// `rows` in ascending positions.
  void sort(std::vector<RowPosition>& rows) {
    const auto size = [this](RowPosition row) { return sizeOf(row); };
    // Rows of one size, as those of a new column often are, need no sorting by it.
    if (!std::ranges::is_sorted(rows, std::greater(), size)) std::ranges::stable_sort(rows, std::greater(), size);
    std::vector<std::span<RowPosition>> ties;
    for (auto run = rows.begin(); run != rows.end();) {
      const auto end = std::find_if(run, rows.end(), [&](RowPosition row) { return sizeOf(row) != sizeOf(*run); });
      if (end - run > 1) ties.emplace_back(run, end);
      run = end;
    }
    makeKeys(ties);
    for (const std::span<RowPosition> tie : ties) sortByName(tie);
  }

  bool isBefore(RowPosition a, RowPosition b) {
    if (sizeOf(a) != sizeOf(b)) return sizeOf(a) > sizeOf(b);
    const int order = keyOf(a).compare(keyOf(b));
    return order != 0 ? order < 0 : a < b;
  }

 private:
  std::int64_t sizeOf(RowPosition row) const { return rows_[row].sizeBytes; }

  std::string_view keyOf(RowPosition row) {
    if (order_.keys_[row].data() == nullptr) keep(row, fileSystem_.nameSortKey(names_[row]));
    return order_.keys_[row];
  }

  void keep(RowPosition row, std::string_view key) {
    auto* const bytes = static_cast<char*>(order_.keyBytes_->allocate(key.size(), 1));
    std::ranges::copy(key, bytes);
    order_.keys_[row] = std::string_view(bytes, key.size());
  }

  /// On all processors, since this takes most of the time of a listing.
  void makeKeys(const std::vector<std::span<RowPosition>>& ties) {
    std::vector<RowPosition> missing;
    for (const std::span<RowPosition> tie : ties)
      std::ranges::copy_if(tie, std::back_inserter(missing), [this](auto row) { return !order_.keys_[row].data(); });
    std::vector<std::string> made(missing.size());
    const auto make = [&](std::size_t begin, std::size_t end) {
      for (std::size_t i = begin; i < end; ++i) made[i] = fileSystem_.nameSortKey(names_[missing[i]]);
    };
    constexpr std::size_t kWorthAThread = 512;
    const std::size_t processors = std::max(1U, std::thread::hardware_concurrency());
    const std::size_t share = std::max(kWorthAThread, missing.size() / processors + 1);
    std::vector<std::future<void>> others;  // done by this thread too where no other can be started
    for (std::size_t begin = share; begin < missing.size(); begin += share)
      others.push_back(std::async(make, begin, std::min(missing.size(), begin + share)));
    make(0, std::min(missing.size(), share));
    for (std::future<void>& other : others) other.get();
    for (std::size_t i = 0; i < missing.size(); ++i) keep(missing[i], made[i]);
  }

  void sortByName(std::span<RowPosition> run) {
    const std::vector<RowPosition> unsorted(run.begin(), run.end());
    std::vector<std::string_view> keys;
    keys.reserve(run.size());
    for (const RowPosition row : run) keys.push_back(keyOf(row));
    std::ranges::transform(orderOfKeys(keys), run.begin(), [&unsorted](std::size_t index) { return unsorted[index]; });
  }

  RowOrder& order_;
  FileSystem& fileSystem_;
  const EntryNames& names_;
  const std::vector<ColumnRow>& rows_;
};

void RowOrder::begin(std::size_t rows) {
  positions_.clear();
  keys_.assign(rows, {});
  keyBytes_ = std::make_unique<std::pmr::monotonic_buffer_resource>();
}

void RowOrder::update(FileSystem& fileSystem, const EntryNames& names, const std::vector<ColumnRow>& rows,
                      std::vector<RowPosition> changed) {
  Sorter sorter(*this, fileSystem, names, rows);
  std::vector<bool> isChanged(rows.size(), false);
  for (const RowPosition row : changed) isChanged[row] = true;
  std::erase_if(positions_, [&isChanged](RowPosition row) { return isChanged[row]; });
  sorter.sort(changed);
  std::vector<RowPosition> merged;
  merged.reserve(rows.size());
  std::ranges::merge(positions_, changed, std::back_inserter(merged),
                     [&sorter](RowPosition a, RowPosition b) { return sorter.isBefore(a, b); });
  positions_ = std::move(merged);
}

}  // namespace dunmere
