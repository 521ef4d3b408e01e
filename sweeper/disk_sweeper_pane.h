// DiskSweeperPane: the sweeper's whole state, every action on it, its selection rules and its texts.
#pragma once

#include <chrono>
#include <compare>
#include <cstddef>
#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "engine/disk_sweeper_scan.h"
#include "engine/file_system.h"
#include "engine/file_url.h"
#include "engine/listing/column_rows.h"
#include "engine/sweep_inventory.h"
#include "engine/sweeper_values.h"
#include "sweeper/background.h"
#include "sweeper/column_reader.h"
#include "sweeper/desktop.h"
#include "sweeper/main_thread.h"

namespace dunmere {

class AnswerQueue;
class SnapshotMailbox;
class VolumeReader;

enum class Phase { chooseTarget, browsing };

/// A Boolean that somebody else owns.
struct BoolBinding {
  std::function<bool()> get;
  std::function<void(bool)> set;
};

/// The token under which a column was opened; a listing is applied only while it is still its column's token. Unique
/// within the process.
struct ColumnLoadId {
  std::uint64_t value = 0;
  static ColumnLoadId next();
  friend auto operator<=>(const ColumnLoadId&, const ColumnLoadId&) = default;
};

/// Lives on the main thread: every function is called there, every field is read and written there. It makes no call
/// that may wait for a file system: it asks in the background and applies the answers as they come. An action of the
/// user waits for its answers for a moment that nobody notices, so that a disk that answers at once looks as if it had
/// been asked directly. Scans run on threads of their own and reach the pane through its mailbox. The destructor closes
/// both ways: what outlives its pane runs to its end and touches nothing. The collaborators must outlive every scan and
/// answer, not only the pane. Its texts are for the screen: a name in them is as displayText shows it.
class DiskSweeperPane {
 public:
  using Listener = std::function<void()>;

  /// `scanOptions` are for every scan that it starts.
  DiskSweeperPane(FileSystem& fileSystem, Desktop& desktop, MainThread& mainThread, Background& background,
                  BoolBinding pendingGoToDrives, ScanOptions scanOptions = {});
  ~DiskSweeperPane();
  DiskSweeperPane(const DiskSweeperPane&) = delete;
  DiskSweeperPane& operator=(const DiskSweeperPane&) = delete;

  /// Called on the main thread once after every action or snapshot that may have changed the state. One listener, which
  /// must not destroy the pane.
  void setListener(Listener listener);

  // State (read-only for views).
  bool pendingGoToDrives() const { return pendingGoToDrives_.get(); }
  const std::vector<SweeperVolume>& volumes() const { return volumes_; }
  const std::optional<std::string>& selectedVolumeID() const { return selectedVolumeID_; }
  Phase phase() const { return phase_; }
  const std::optional<FileUrl>& sweepRoot() const { return sweepRoot_; }
  const std::optional<SweepInventory>& inventory() const { return inventory_; }
  const std::vector<FileUrl>& pathDirectories() const { return pathDirectories_; }
  const std::optional<FileUrl>& selectedLeafURL() const { return selectedLeafURL_; }
  const std::vector<ColumnRows>& columnChildren() const { return columnChildren_; }
  /// Whether the column has no rows because its folder was not read yet.
  bool isReadingColumn(std::size_t column) const;
  const std::vector<ColumnLoadId>& columnLoadIDs() const { return columnLoadIDs_; }
  const std::optional<std::string>& loadError() const { return loadError_; }
  const std::string& scanStatus() const { return scanStatus_; }
  std::int64_t scanFileCount() const { return scanFileCount_; }
  std::int64_t scanBytesSoFar() const { return scanBytesSoFar_; }
  bool confirmTrash() const { return confirmTrash_; }

  // Choosing a target.
  void appear();                    ///< the pane came on screen: lists the volumes, answers a pending request
  void pendingGoToDrivesChanged();  ///< the owner of the flag changed it
  void selectVolume(std::optional<std::string> volumeID);
  void startSweepSelectedVolume();
  void openFolderSweep();  ///< the chooser's event loop may deliver snapshots, or destroy the pane
  void backToVolumes();

  // Browsing.
  void beginBrowsing(const FileUrl& root);
  void reloadVisibleColumns();
  void applyColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory);

  // Columns and selection.
  void selectItem(const SweeperItem& item, std::size_t column);
  bool isRowSelected(const SweeperItem& item, std::size_t column) const;
  std::optional<std::size_t> selectedRow(std::size_t column) const;  ///< the row that is selected, as above
  std::optional<SweeperItem> currentSelectedItem() const;
  static std::string sizeLabel(const SweeperItem& item);
  bool showsStatusStrip() const;        ///< an inventory exists and is not complete
  std::string statusStripText() const;  ///< scanStatus, or "Indexing…" when that is empty

  // Footer, reveal and trash.
  const FileUrl* revealURL() const;  ///< valid until the next change; null for none
  bool canTrashSelection() const;
  std::string footerStatus() const;
  std::string trashConfirmTitle() const;
  void requestTrash();    ///< the trash button: raises confirmTrash
  void dismissTrash();    ///< "Cancel" or dismissal: lowers confirmTrash
  void confirmedTrash();  ///< "Move to Trash": lowers confirmTrash, then performTrash
  void performTrash();    ///< moves what the question names; without a question, what is selected
  void reveal();

  // Texts of the picker.
  static std::string volumeDetailText(const SweeperVolume& volume);  ///< "… free, … used, … total"

 private:
  /// Something asked in the background: answered when the number of the answer is that of the question.
  struct Question {
    std::uint64_t asked = 0;
    std::uint64_t answered = 0;

    bool isOpenSince(std::uint64_t first) const { return asked >= first && answered < asked; }
  };

  struct OpenColumn {
    std::shared_ptr<ColumnReader> reader;
    Question listing;
    bool hasUntoldRows = false;  ///< the listener has not heard of them
  };

  /// What the trash question names, and that very item, which only the background uses.
  struct TrashCandidate {
    FileUrl url;
    std::shared_ptr<std::unique_ptr<TrashableItem>> item;
  };

  using Urgency = ColumnReader::Urgency;

  // Each action is told to the listener once, so what actions share is kept apart from the telling.
  void ask(std::chrono::milliseconds moment, const std::function<void()>& questions);
  void applyAnswers();
  bool isAwaiting(std::uint64_t firstQuestion) const;
  void clearSweep();
  void listVolumes();
  bool answerPendingRequest();
  void browse(const FileUrl& root);
  void startScan(const FileUrl& root);
  void applySnapshot(const SweepInventory& snapshot);
  void failScan(const SweepError& error);
  void listColumns(Urgency urgency);
  void listColumn(std::ptrdiff_t depth, ColumnLoadId id, const SweepInventory& inventory, Urgency urgency);
  void applyListing(ColumnLoadId id, std::uint64_t question, std::expected<ColumnRows, SweepError> rows);
  void cutColumns(std::size_t count);
  void openColumn(const FileUrl& folder, const ColumnRows& shown);
  void addColumn(const FileUrl& folder, const ColumnRows& shown);
  void holdCandidate(const FileUrl& url);
  void dropCandidate();
  void followQuestion();
  void trashSelection();
  void applyTrashed(const FileUrl& url, const std::expected<void, SweepError>& moved);
  void changed();

  FileSystem& fileSystem_;
  Desktop& desktop_;
  Background& background_;
  Listener listener_;
  std::shared_ptr<SnapshotMailbox> mailbox_;
  std::shared_ptr<AnswerQueue> answers_;
  std::uint64_t lastQuestion_ = 0;

  BoolBinding pendingGoToDrives_;
  const ScanOptions scanOptions_;
  Question trashing_;  // or holding what is to be trashed
  std::shared_ptr<VolumeReader> volumeReader_;
  std::uint64_t volumeQuestion_ = 0;
  std::vector<SweeperVolume> volumes_;
  std::optional<std::string> selectedVolumeID_;
  Phase phase_ = Phase::chooseTarget;
  std::optional<FileUrl> sweepRoot_;
  std::optional<SweepInventory> inventory_;
  std::vector<FileUrl> pathDirectories_;
  std::optional<FileUrl> selectedLeafURL_;
  std::vector<ColumnRows> columnChildren_;
  std::vector<OpenColumn> openColumns_;  // who lists the rows above
  std::vector<ColumnLoadId> columnLoadIDs_;
  std::optional<std::string> loadError_;
  std::string scanStatus_;
  std::int64_t scanFileCount_ = 0;
  std::int64_t scanBytesSoFar_ = 0;
  bool confirmTrash_ = false;
  std::optional<TrashCandidate> trashCandidate_;
};

}  // namespace dunmere
