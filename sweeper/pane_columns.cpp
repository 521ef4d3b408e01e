// The pane's columns: what is selected in them and what a click changes.

#include <algorithm>

#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"

namespace dunmere {

namespace {

/// The list's first `count` elements; all of a shorter list.
template <typename Element>
void cut(std::vector<Element>& list, std::size_t count) {
  if (count < list.size()) list.erase(list.begin() + static_cast<std::ptrdiff_t>(count), list.end());
}

const SweeperItem* findRow(const std::vector<SweeperItem>& rows, const FileUrl& url) {
  const auto row = std::ranges::find(rows, url, &SweeperItem::url);
  return row == rows.end() ? nullptr : &*row;
}

}  // namespace

void DiskSweeperPane::selectItem(const SweeperItem& item, std::size_t column) {
  // The item may be a row of a column that is about to be cut.
  const FileUrl url = item.url;
  const bool isDirectory = item.isDirectory;
  loadError_.reset();
  if (inventory_) {
    cut(pathDirectories_, column + 1);
    cutColumns(column + 1);
    if (isDirectory) {
      selectedLeafURL_.reset();
      openColumn(url);
    } else {
      selectedLeafURL_ = url;
    }
  }
  changed();
}

void DiskSweeperPane::cutColumns(std::size_t count) {
  cut(columnChildren_, count);
  cut(columnLoadIDs_, count);
}

void DiskSweeperPane::openColumn(const FileUrl& folder) {
  pathDirectories_.push_back(folder);
  while (columnChildren_.size() < pathDirectories_.size()) {
    columnChildren_.emplace_back();
    columnLoadIDs_.push_back(ColumnLoadId::next());
  }
  const std::size_t last = pathDirectories_.size() - 1;
  listColumn(static_cast<std::ptrdiff_t>(last), columnLoadIDs_[last], *inventory_);
}

bool DiskSweeperPane::isRowSelected(const SweeperItem& item, std::size_t column) const {
  // The folder opened from this column stays highlighted; a leaf is highlighted in the last column only.
  if (column + 1 < pathDirectories_.size()) return item.url == pathDirectories_[column + 1];
  if (column + 1 == pathDirectories_.size() && selectedLeafURL_) return item.url == *selectedLeafURL_;
  return false;
}

RowNumbers DiskSweeperPane::rowNumbers(std::size_t column) const {
  if (column >= columnListings_.size() || column >= columnChildren_.size()) return {};
  const RowNumbers numbers = columnListings_[column].numbers();
  // A column that was opened again still awaits its listing.
  return numbers.inOrder.size() == columnChildren_[column].size() ? numbers : RowNumbers();
}

const SweeperItem* DiskSweeperPane::currentSelectedItem() const {
  const std::size_t depth = pathDirectories_.size();
  if (columnChildren_.empty() || depth == 0) return nullptr;
  if (selectedLeafURL_ && depth <= columnChildren_.size())
    return findRow(columnChildren_[depth - 1], *selectedLeafURL_);
  // The root has no row of its own; any other open folder has one in the column before its own.
  if (depth == 1 || depth - 2 >= columnChildren_.size()) return nullptr;
  return findRow(columnChildren_[depth - 2], pathDirectories_[depth - 1]);
}

std::string DiskSweeperPane::sizeLabel(const SweeperItem& item) {
  return byteCountText(item.sizeBytes) + (item.sizeIsPartialMinimum ? "+" : "");
}

bool DiskSweeperPane::showsStatusStrip() const {
  return inventory_ && !inventory_->scanComplete;
}

std::string DiskSweeperPane::statusStripText() const {
  return scanStatus_.empty() ? "Indexing…" : scanStatus_;
}

}  // namespace dunmere
