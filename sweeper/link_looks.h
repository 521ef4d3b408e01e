// LinkLooks: finds out where the links of one column lead, on threads that may get stuck in a target.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/file_system.h"
#include "engine/listing/column_listing.h"
#include "engine/thread_annotations.h"
#include "sweeper/background.h"

namespace dunmere {

/// A link may lead into a share that never answers; the others of its column are then looked at by another thread.
/// Thread-safe. Lives on in the background until its last look ends.
class LinkLooks : public std::enable_shared_from_this<LinkLooks> {
 public:
  /// A column with more dead links than this shows the rest of its links without their targets.
  static constexpr std::size_t kMostThreads = 16;
  /// As long as links answer.
  static constexpr std::size_t kUsualThreads = 4;
  /// `late` is called in the background when there are targets that nobody waited for.
  LinkLooks(Background& background, std::string folder, std::function<void()> late);

  /// Has the links `names` of the open folder looked at. Returns what is known within half the
  /// moment that the column is waited for, of earlier calls too.
  /// With `onlyNew`, links that were asked for once are not asked for again.
  ColumnListing::LinkTargets look(const std::shared_ptr<OpenFolder>& folder, const std::vector<std::string>& names,
                                  bool onlyNew = false);

  /// The column is closed: nothing more is begun.
  void close();

 private:
  struct Look {
    std::shared_ptr<OpenFolder> folder;
    std::string name;
  };

  void startThreads(std::size_t atMost);
  void callHelp();
  void walk();
  std::optional<Look> takeLook();
  void keepTarget(const std::string& name, const LinkTarget& target);
  bool isLate();

  Background& background_;
  const std::string folderPath_;
  const std::function<void()> late_;

  Mutex mutex_;
  Condition found_;
  /// Only while links wait: it keeps its volume from being unmounted.
  std::shared_ptr<OpenFolder> folder_ GUARDED_BY(mutex_);
  std::set<std::string> known_ GUARDED_BY(mutex_);  // asked for at least once
  std::deque<std::string> waiting_ GUARDED_BY(mutex_);
  std::set<std::string> asked_ GUARDED_BY(mutex_);  // waiting or being looked at
  ColumnListing::LinkTargets targets_ GUARDED_BY(mutex_);
  std::set<std::size_t> threads_ GUARDED_BY(mutex_);  // the numbers of those at work
  bool isHelpCalled_ GUARDED_BY(mutex_) = false;
  bool isAwaited_ GUARDED_BY(mutex_) = false;
  bool isClosed_ GUARDED_BY(mutex_) = false;
};

}  // namespace dunmere
