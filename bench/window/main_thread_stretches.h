// How long the main thread was busy at a stretch: from the end of one wait for events to the next wait.
#pragma once

#include <chrono>

namespace dunmere::bench {

/// Counts from here on. Main thread.
void startStretches();

/// The longest since startStretches(), waits for answers included, the current one not. Main thread.
std::chrono::nanoseconds longestStretch();

}  // namespace dunmere::bench
