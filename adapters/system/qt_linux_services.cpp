// SPDX-License-Identifier: Apache-2.0
#include "adapters/system/qt_linux_services.h"

#include <QGuiApplication>
#include <QProcess>
#include <QStandardPaths>
#include <QStringList>
#include <functional>
#include <memory>
#include <optional>

#include "adapters/linux/bus/bluez_daemon.h"
#include "adapters/linux/services/bluetooth_settings.h"
#include "adapters/linux/services/idle_inhibitor.h"
#include "adapters/linux/services/light_journal.h"
#include "adapters/linux/services/linux_backlight.h"
#include "adapters/linux/services/linux_battery.h"
#include "adapters/linux/services/linux_haptics.h"
#include "adapters/linux/services/linux_torch.h"
#include "adapters/linux/services/settings_portal.h"
#include "adapters/linux/services/sleep_watch.h"
#include "adapters/linux/services/termination_watch.h"
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

std::string suppliesOf(const QtLinuxOptions& options) {
  return options.powerSupplies.empty() ? kPowerSupplies : options.powerSupplies;
}

// Whoever has ended a program by a signal finds that in its status.
void endBySignal(int signal) {
  constexpr int kBySignal = 128;
  QCoreApplication::exit(kBySignal + signal);
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
        journal(journalOf(options)),
        torch(loop, buses.system, findTorchLight(lightsOf(options)), {}, journal.get()),
        battery(suppliesOf(options)),
        idle(loop, buses, reasonOf(options)),
        settings(buses.system, daemon, openSettingsPage, options.adapter),
        sleep(loop, buses.system, applicationOf(), [this](bool isAsleep) {
          if (sleepTold) sleepTold(isAsleep);
        }) {
    if (const auto light = findBacklight(lightsOf(options))) {
      backlight.emplace(loop, buses.system, *light, LightWriterSettings{}, LinuxBacklight::kFresh,
                        journal.get());
    }
    if (options.endsBySignals) termination.emplace(descriptors, endBySignal);
  }

  static std::unique_ptr<LightJournal> journalOf(const QtLinuxOptions& options) {
    return options.journal.empty() ? nullptr : std::make_unique<LightJournal>(options.journal);
  }

  QtDescriptors descriptors;
  Buses buses;
  /// On a connection of its own: by leaving the bus it ends all that it has asked for.
  BluezDaemon daemon;
  BluezCentral central;
  LinuxHaptics haptics;
  /// Null for none.
  std::unique_ptr<LightJournal> journal;
  LinuxTorch torch;
  std::optional<LinuxBacklight> backlight;
  LinuxBattery battery;
  IdleInhibitor idle;
  BluetoothSettings settings;
  std::function<void(bool isAsleep)> sleepTold;
  SleepWatch sleep;
  std::optional<TerminationWatch> termination;
  SystemWishes wishes;
  SettingsPortal portal{buses.session, [this](const UserWishes& now) { wishes.set(now); }};
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
      .battery = &parts.battery,
      .setIdleTimerDisabled = [&parts](bool disabled) { parts.idle.setInhibited(disabled); },
      .watchSleep = [&parts](const auto& told) { parts.sleepTold = told; },
      .openSettings = [&parts] { parts.settings.open(); }};
  if (parts.backlight) {
    services.brightness = [&parts] { return parts.backlight->level(); };
    services.setBrightness = [&parts](double level) { parts.backlight->setLevel(level); };
  }
  return services;
}

void QtLinuxServices::giveBack() {
  parts_->torch.giveBack();
  if (parts_->backlight) parts_->backlight->giveBack();
}

SystemWishes& QtLinuxServices::wishes() { return parts_->wishes; }

BluetoothDiagnostics QtLinuxServices::bluetoothDiagnostics() const {
  return parts_->central.diagnostics();
}

}  // namespace halvora
