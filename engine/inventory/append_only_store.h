// AppendOnlyStore: elements that one thread writes and others read, at addresses that never change.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <new>

namespace dunmere {

/// A sequence of segments, each twice as long as the one before, found through a fixed table. So the store grows
/// without moving anything, and elements written before it was handed to another thread may be read there while the
/// writer goes on behind them, without a lock. Segments are not initialized: a page that was never written costs no
/// memory.
template <typename T, unsigned firstSegmentBits, unsigned segmentCount>
class AppendOnlyStore {
 public:
  using Index = std::uint64_t;

  static constexpr Index kCapacity = ((Index{1} << segmentCount) - 1) << firstSegmentBits;

  /// The first index behind the segment that holds `index`.
  static constexpr Index segmentEnd(Index index) {
    return ((Index{1} << (segmentOf(index) + 1)) - 1) << firstSegmentBits;
  }

  /// Makes the segment of `index` if it is missing. Throws std::bad_alloc, also when the store is full.
  void provide(Index index) {
    if (index >= kCapacity) throw std::bad_alloc();
    const unsigned segment = segmentOf(index);
    if (!segments_[segment]) segments_[segment] = std::make_unique_for_overwrite<T[]>(segmentSize(segment));
  }

  /// The element at `index`, whose segment exists. Elements of one segment lie side by side.
  T& operator[](Index index) { return segments_[segmentOf(index)][offsetOf(index)]; }
  const T& operator[](Index index) const { return segments_[segmentOf(index)][offsetOf(index)]; }

 private:
  static constexpr unsigned segmentOf(Index index) {
    return static_cast<unsigned>(std::bit_width((index >> firstSegmentBits) + 1)) - 1;
  }
  static constexpr Index segmentSize(unsigned segment) { return Index{1} << (firstSegmentBits + segment); }
  static constexpr Index offsetOf(Index index) {
    return index - (((Index{1} << segmentOf(index)) - 1) << firstSegmentBits);
  }

  std::array<std::unique_ptr<T[]>, segmentCount> segments_;
};

}  // namespace dunmere
