// The pane's columns: what is selected in them and what a click changes.

#include <algorithm>

#include "sweeper/answer_queue.h"
#include "sweeper/byte_count_text.h"
#include "sweeper/disk_sweeper_pane.h"

namespace dunmere {

namespace {

/// The list's first `count` elements; all of a shorter list.
template <typename Element>
void cut(std::vector<Element>& list, std::size_t count) {
  if (count < list.size()) list.erase(list.begin() + static_cast<std::ptrdiff_t>(count), list.end());
}

std::optional<SweeperItem> findItem(const ColumnRows& rows, const FileUrl& url) {
  const auto row = rows.find(url);
  return row ? std::optional(rows[*row]) : std::nullopt;
}

}  // namespace

void DiskSweeperPane::selectItem(const SweeperItem& item, std::size_t column) {
  loadError_.reset();
  if (inventory_) {
    // A folder that is open already keeps its rows until it is listed anew.
    const bool isOpen = column + 1 < pathDirectories_.size() && pathDirectories_[column + 1] == item.url;
    const ColumnRows shown = isOpen && column + 1 < columnChildren_.size() ? columnChildren_[column + 1] : ColumnRows();
    cut(pathDirectories_, column + 1);
    cutColumns(column + 1);
    if (item.isDirectory) {
      selectedLeafURL_.reset();
      ask(background_.moment(), [&] { openColumn(item.url, shown); });
    } else {
      selectedLeafURL_ = item.url;
    }
  }
  changed();
}

void DiskSweeperPane::cutColumns(std::size_t count) {
  cut(columnChildren_, count);
  cut(columnLoadIDs_, count);
  for (std::size_t column = count; column < openColumns_.size(); ++column) {
    ColumnReader::close(std::move(openColumns_[column].reader));
  }
  cut(openColumns_, count);
}

void DiskSweeperPane::openColumn(const FileUrl& folder, const ColumnRows& shown) {
  pathDirectories_.push_back(folder);
  while (columnChildren_.size() < pathDirectories_.size()) addColumn(folder, shown);
  const std::size_t last = pathDirectories_.size() - 1;
  listColumn(static_cast<std::ptrdiff_t>(last), columnLoadIDs_[last], *inventory_, Urgency::atOnce);
}

void DiskSweeperPane::addColumn(const FileUrl& folder, const ColumnRows& shown) {
  const ColumnLoadId id = ColumnLoadId::next();
  const auto answer = [this, id, answers = answers_](std::uint64_t question, ColumnReader::Rows rows) {
    answers->put(
        [this, id, question, rows = std::move(rows)]() mutable { applyListing(id, question, std::move(rows)); });
  };
  columnChildren_.push_back(shown);
  columnLoadIDs_.push_back(id);
  openColumns_.push_back(
      {.reader = ColumnReader::make(fileSystem_, background_, folder, shown, answer), .listing = {}});
}

bool DiskSweeperPane::isRowSelected(const SweeperItem& item, std::size_t column) const {
  // The folder opened from this column stays highlighted; a leaf is highlighted in the last column only.
  if (column + 1 < pathDirectories_.size()) return item.url == pathDirectories_[column + 1];
  if (column + 1 == pathDirectories_.size() && selectedLeafURL_) return item.url == *selectedLeafURL_;
  return false;
}

std::optional<std::size_t> DiskSweeperPane::selectedRow(std::size_t column) const {
  if (column >= columnChildren_.size()) return std::nullopt;
  if (column + 1 < pathDirectories_.size()) return columnChildren_[column].find(pathDirectories_[column + 1]);
  if (column + 1 == pathDirectories_.size() && selectedLeafURL_) return columnChildren_[column].find(*selectedLeafURL_);
  return std::nullopt;
}

std::optional<SweeperItem> DiskSweeperPane::currentSelectedItem() const {
  const std::size_t depth = pathDirectories_.size();
  if (columnChildren_.empty() || depth == 0) return std::nullopt;
  if (selectedLeafURL_ && depth <= columnChildren_.size())
    return findItem(columnChildren_[depth - 1], *selectedLeafURL_);
  // The root has no row of its own; any other open folder has one in the column before its own.
  if (depth == 1 || depth - 2 >= columnChildren_.size()) return std::nullopt;
  return findItem(columnChildren_[depth - 2], pathDirectories_[depth - 1]);
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
