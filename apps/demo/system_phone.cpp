// SPDX-License-Identifier: Apache-2.0
#include "apps/demo/system_phone.h"

#include <utility>

#include "platform/qt/halvora_host.h"

namespace halvora {

namespace {

constexpr Duration kBetweenLooks = milliseconds(500);

}  // namespace

SystemPhone::SystemPhone(const std::string& assets, const QtLinuxOptions& options)
    : platform_({.assets = assets, .identifier = "com.example.host"}),
      services_(platform_.runLoop(), options),
      engine_(with(platform_, services_).platform(), platform_.engineOptions()) {
  engine_.viewDidLoad();
  look();
  looks_ = Timer(loop(), loop().every(kBetweenLooks, [this] { look(); }));
}

QtPlatform& SystemPhone::with(QtPlatform& platform, QtLinuxServices& services) {
  platform.use(services.services());
  return platform;
}

void SystemPhone::install(QQmlEngine& qml) {
  HalvoraHost::install(qml, platform_.platform(), engine_);
}

void SystemPhone::look() {
  const BluetoothDiagnostics found = services_.bluetoothDiagnostics();
  QString text = found.isScanning ? tr("Scanning") : tr("Not scanning");
  text += found.isHearing ? tr(" · hearing a show") : tr(" · no show heard");
  if (found.lastShowPacket) {
    const double seconds = toSeconds(loop().now() - *found.lastShowPacket);
    text += tr(" · last packet %1 s ago").arg(seconds, 0, 'f', 1);
  }
  if (!found.isScanning && !found.errors.last.empty()) {
    text += QLatin1Char('\n') + QString::fromStdString(found.errors.last);
  }
  if (std::exchange(radio_, text) != text) emit radioChanged();
}

}  // namespace halvora
