// SPDX-License-Identifier: Apache-2.0
// The example host as a process of its own, on a system with a radio.
#include <QProcess>
#include <QProcessEnvironment>
#include <string>

#include <gmock/gmock.h>

#include "tests/apps/console/system_bench.h"

namespace halvora {
namespace {

class ExampleHost : public SystemBench {
 protected:
  ~ExampleHost() override {
    host.kill();
    host.waitForFinished();
  }
  void start() {
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    const QString address = QString::fromStdString(bus.address());
    environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), address);
    environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    environment.insert(QStringLiteral("XDG_DATA_HOME"), QString::fromStdString(folder.path()));
    // Without a terminal Qt's words may go to the journal.
    environment.insert(QStringLiteral("QT_FORCE_STDERR_LOGGING"), QStringLiteral("1"));
    host.setProcessEnvironment(environment);
    host.start(QStringLiteral(HALVORA_EXAMPLE_HOST), QStringList());
  }
  bool says(const char* text) {
    return waitFor([&] {
             said += host.readAllStandardError().toStdString();
             return said.find(text) != std::string::npos || host.state() == QProcess::NotRunning;
           }) &&
           said.find(text) != std::string::npos;
  }

  QProcess host;
  std::string said;
};

TEST_F(ExampleHost, HearsAShowByItself) {
  Broadcast look;
  look.applicationId = 4242;
  look.venueId = 7;
  look.transmitter = 1;
  look.master = 255;
  look.mode = 1;
  look.red = 255;
  send(look);
  start();
  EXPECT_TRUE(says("the show begins")) << said;
  EXPECT_THAT(bluez.calls, testing::Contains("StartDiscovery"));
}

}  // namespace
}  // namespace halvora
