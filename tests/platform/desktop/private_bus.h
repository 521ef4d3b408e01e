// PrivateBus: a message bus of the test's own, with nobody on it but those whom the test connects.
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>

namespace dunmere::test {

/// Runs a dbus-daemon until the end of its life.
class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();
  PrivateBus(const PrivateBus&) = delete;
  PrivateBus& operator=(const PrivateBus&) = delete;

  /// A connection of its own. `name` is unique within the process; connections end with the bus.
  QDBusConnection connect(const QString& name);

 private:
  QProcess daemon_;
  QString address_;
  QStringList connections_;
};

}  // namespace dunmere::test
