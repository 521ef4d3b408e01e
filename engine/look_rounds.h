// LookRounds: decides which rows of a column are looked at on the disk when it is listed again.
#pragma once

#include <chrono>
#include <cstddef>

#include "engine/file_system.h"

namespace dunmere {

/// Goes round all rows once in kRound, a part of the way at each listing: all of them when listings are further apart
/// than that, few when they follow each other fast. So however many rows there are, looking at them takes a bounded
/// part of the time, and no row is older than one round and the time between two listings. One
/// thread.
class LookRounds {
 public:
  /// How far apart the snapshots of a slow scan are: a fast one need not know more of the disk than that.
  static constexpr FileSystem::Instant kRound = std::chrono::milliseconds(350);

  /// Begins anew: it is the turn of all rows.
  void begin(std::size_t rows, FileSystem::Instant now);

  /// Goes on to the rows whose turn it is now.
  void goOn(FileSystem::Instant now);

  /// Whether it is the row's turn.
  bool includes(std::size_t position) const;

 private:
  std::size_t rows_ = 0;
  std::size_t first_ = 0;  // of those whose turn it is
  std::size_t count_ = 0;
  FileSystem::Instant last_{0};
};

}  // namespace dunmere
