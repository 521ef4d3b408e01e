#include "tests/platform/desktop/private_bus.h"

#include <QTemporaryFile>
#include <stdexcept>

namespace dunmere::test {

namespace {

// No service folders: nothing that the machine has installed can be started on this bus.
constexpr char kConfiguration[] = R"(<busconfig>
  <type>session</type>
  <listen>unix:tmpdir=/tmp</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

}  // namespace

PrivateBus::PrivateBus() {
  QTemporaryFile configuration;
  if (!configuration.open() || configuration.write(kConfiguration) < 0 || !configuration.flush()) {
    throw std::runtime_error("the bus configuration could not be written");
  }
  daemon_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  daemon_.start(QStringLiteral("dbus-daemon"), {QStringLiteral("--nofork"), QStringLiteral("--print-address"),
                                                QStringLiteral("--config-file=") + configuration.fileName()});
  while (!daemon_.canReadLine()) {
    if (!daemon_.waitForReadyRead()) throw std::runtime_error("dbus-daemon did not start");
  }
  address_ = QString::fromUtf8(daemon_.readLine().trimmed());
}

PrivateBus::~PrivateBus() {
  for (const QString& name : connections_) QDBusConnection::disconnectFromBus(name);
  daemon_.terminate();
  daemon_.waitForFinished();
}

QDBusConnection PrivateBus::connect(const QString& name) {
  connections_.append(name);
  QDBusConnection connection = QDBusConnection::connectToBus(address_, name);
  if (!connection.isConnected()) throw std::runtime_error("no connection to the private bus");
  return connection;
}

}  // namespace dunmere::test
