#include "sweeper/view/shown_rows.h"

#include <algorithm>
#include <iterator>

namespace dunmere {

void ShownRow::show(const SweeperItem& item, bool isSelected) {
  sizeBytes = item.sizeBytes;
  isDirectory = item.isDirectory;
  sizeIsPartialMinimum = item.sizeIsPartialMinimum;
  isSymbolicLink = item.isSymbolicLink;
  selected = isSelected;
}

bool ShownRow::showsTheSameAs(const ShownRow& other) const {
  return sizeBytes == other.sizeBytes && isDirectory == other.isDirectory &&
         sizeIsPartialMinimum == other.sizeIsPartialMinimum && isSymbolicLink == other.isSymbolicLink &&
         selected == other.selected;
}

ShownRows::ShownRows(const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow) {
  std::size_t bytes = 0;
  for (const SweeperItem& item : items) bytes += item.name.size();
  const auto names = std::make_shared<std::vector<char>>(bytes);
  names_ = names;
  rows_.reserve(items.size());
  char* end = names->data();
  for (const SweeperItem& item : items) {
    char* const name = end;
    end = std::ranges::copy(item.name, name).out;
    rows_.push_back({.name = std::string_view(name, end)});
    rows_.back().show(item, selectedRow == rows_.size() - 1);
  }
}

ShownRows::ShownRows(const ShownRows& before, const std::vector<std::size_t>& oldIndex,
                     const std::vector<SweeperItem>& items, std::optional<std::size_t> selectedRow)
    : names_(before.names_) {
  rows_.reserve(items.size());
  for (std::size_t row = 0; row < items.size(); ++row) {
    rows_.push_back({.name = before[oldIndex[row]].name});
    rows_.back().show(items[row], selectedRow == row);
  }
}

std::vector<std::string_view> ShownRows::names() const {
  std::vector<std::string_view> names;
  names.reserve(rows_.size());
  std::ranges::transform(rows_, std::back_inserter(names), &ShownRow::name);
  return names;
}

}  // namespace dunmere
