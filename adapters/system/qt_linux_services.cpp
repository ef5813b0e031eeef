// SPDX-License-Identifier: Apache-2.0
#include "adapters/system/qt_linux_services.h"

#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <optional>

#include "adapters/linux/bus/bluez_daemon.h"
#include "adapters/linux/services/bluetooth_settings.h"
#include "adapters/linux/services/idle_inhibitor.h"
#include "adapters/linux/services/linux_backlight.h"
#include "adapters/linux/services/linux_haptics.h"
#include "adapters/linux/services/linux_torch.h"
#include "adapters/qt/qt_descriptors.h"

namespace halvora {

namespace {

BusAddresses addressesOf(const QtLinuxOptions& options) {
  BusAddresses addresses = BusAddresses::ofEnvironment();
  if (!options.systemBus.empty()) addresses.system = options.systemBus;
  if (!options.sessionBus.empty()) addresses.session = options.sessionBus;
  return addresses;
}

std::string lightsOf(const QtLinuxOptions& options) {
  return options.lights.empty() ? kLightClasses : options.lights;
}

// As the desktop knows the application: by its desktop file, which is named like its identifier.
std::string applicationOf() {
  QString name = QGuiApplication::desktopFileName();
  if (name.isEmpty()) name = QCoreApplication::applicationName();
  return name.toStdString();
}

IdleReason reasonOf(const QtLinuxOptions& options) {
  return {QGuiApplication::applicationDisplayName().toStdString(),
          options.reason.empty() ? "Light show" : options.reason};
}

// Started on its own, so that it outlives the application.
void openSettingsPage() {
  for (const SettingsCommand& command :
       settingsCommands(qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString())) {
    const QString program = QStandardPaths::findExecutable(QString::fromStdString(command.program));
    if (program.isEmpty()) continue;
    QStringList arguments;
    for (const std::string& argument : command.arguments) {
      arguments.append(QString::fromStdString(argument));
    }
    if (QProcess::startDetached(program, arguments)) return;
  }
}

}  // namespace

struct QtLinuxServices::Parts {
  Parts(RunLoop& loop, const QtLinuxOptions& options)
      : buses(loop, descriptors, addressesOf(options)),
        daemon(loop, descriptors, options.systemBus),
        central(loop, daemon, {.adapter = options.adapter}),
        haptics(loop, buses, applicationOf()),
        torch(loop, buses.system, findTorchLight(lightsOf(options))),
        idle(loop, buses, reasonOf(options)),
        settings(buses.system, daemon, openSettingsPage, options.adapter) {
    if (const auto light = findBacklight(lightsOf(options))) {
      backlight.emplace(loop, buses.system, *light);
    }
  }

  QtDescriptors descriptors;
  Buses buses;
  /// On a connection of its own: by leaving the bus it ends all that it has asked for.
  BluezDaemon daemon;
  BluezCentral central;
  LinuxHaptics haptics;
  LinuxTorch torch;
  std::optional<LinuxBacklight> backlight;
  IdleInhibitor idle;
  BluetoothSettings settings;
};

QtLinuxServices::QtLinuxServices(RunLoop& loop, const QtLinuxOptions& options)
    : parts_(std::make_unique<Parts>(loop, options)) {}

QtLinuxServices::~QtLinuxServices() = default;

QtPlatformServices QtLinuxServices::services() {
  Parts& parts = *parts_;
  QtPlatformServices services{
      .bluetooth = &parts.central,
      .haptics = &parts.haptics,
      .torch = &parts.torch,
      .setIdleTimerDisabled = [&parts](bool disabled) { parts.idle.setInhibited(disabled); },
      .openSettings = [&parts] { parts.settings.open(); }};
  if (parts.backlight) {
    services.brightness = [&parts] { return parts.backlight->level(); };
    services.setBrightness = [&parts](double level) { parts.backlight->setLevel(level); };
  }
  return services;
}

BluetoothDiagnostics QtLinuxServices::bluetoothDiagnostics() const {
  return parts_->central.diagnostics();
}

}  // namespace halvora
