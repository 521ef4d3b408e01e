#include "sweeper/view/shown_rows.h"

#include <algorithm>
#include <iterator>

namespace dunmere {

ShownRows::ShownRows(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow) {
  std::size_t bytes = 0;
  for (const SweeperItem& item : items) bytes += item.name.size();
  names_.resize(bytes);
  rows_.reserve(items.size());
  char* end = names_.data();
  for (const SweeperItem& item : items) {
    char* const name = end;
    end = std::ranges::copy(item.name, name).out;
    rows_.push_back({std::string_view(name, end), item.sizeBytes, item.isDirectory, item.sizeIsPartialMinimum,
                     item.isSymbolicLink, selectedRow == rows_.size()});
  }
}

std::vector<std::string_view> ShownRows::names() const {
  std::vector<std::string_view> names;
  names.reserve(rows_.size());
  std::ranges::transform(rows_, std::back_inserter(names), &ShownRow::name);
  return names;
}

}  // namespace dunmere
