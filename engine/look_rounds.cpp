#include "engine/look_rounds.h"

#include <algorithm>
#include <cmath>

namespace dunmere {

void LookRounds::begin(std::size_t rows, FileSystem::Instant now) {
  *this = {};
  rows_ = rows;
  count_ = rows;
  last_ = now;
}

void LookRounds::goOn(FileSystem::Instant now) {
  if (rows_ == 0) return;
  const double share =
      std::clamp(static_cast<double>((now - last_).count()) / static_cast<double>(kRound.count()), 0., 1.);
  first_ = (first_ + count_) % rows_;
  // At least one, so that a clock that goes on in steps too small to count does not stop the round.
  count_ = std::clamp(static_cast<std::size_t>(std::ceil(share * static_cast<double>(rows_))), std::size_t{1}, rows_);
  last_ = now;
}

bool LookRounds::includes(std::size_t position) const {
  const std::size_t ahead = position >= first_ ? position - first_ : position + rows_ - first_;
  return ahead < count_;
}

}  // namespace dunmere
