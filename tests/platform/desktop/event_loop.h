// Waiting in a test while the event loop of its thread goes on.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <chrono>

namespace dunmere::test {

/// Handles events until `condition` holds. False when it did not within a time that only a failing test takes.
template <typename Condition>
bool waitUntil(Condition condition) {
  const QDeadlineTimer deadline(std::chrono::seconds(20));
  while (!condition()) {
    if (deadline.hasExpired()) return false;
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 50);
  }
  return true;
}

}  // namespace dunmere::test
