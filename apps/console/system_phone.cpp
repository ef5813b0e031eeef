// SPDX-License-Identifier: Apache-2.0
#include "apps/console/system_phone.h"

#include <QStringList>
#include <algorithm>
#include <cstdio>
#include <utility>
#include <vector>

#include "faces/qt/halvora_host.h"

namespace halvora {

namespace {

constexpr Duration kBetweenLooks = milliseconds(500);

}  // namespace

SystemPhone::SystemPhone(const std::string& assets, const QtLinuxOptions& options)
    : adapter_(options.adapter),
      platform_({.assets = assets, .identifier = "com.example.host"}),
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

// Where the daemon has adapters, and not the one that was named.
QString SystemPhone::missing(const BluetoothDiagnostics& found) const {
  const std::vector<std::string>& all = found.adapters;
  if (adapter_.empty() || all.empty() || std::ranges::find(all, adapter_) != all.end()) return {};
  QStringList names;
  for (const std::string& name : all) names.append(QString::fromStdString(name));
  return tr("waiting for the adapter %1, which is not there; this machine has %2")
      .arg(QString::fromStdString(adapter_), names.join(QStringLiteral(", ")));
}

void SystemPhone::look() {
  const BluetoothDiagnostics found = services_.bluetoothDiagnostics();
  QString text = found.isScanning ? tr("Scanning") : tr("Not scanning");
  text += found.isHearing ? tr(" · hearing a show") : tr(" · no show heard");
  if (found.lastShowPacket) {
    const double seconds = toSeconds(loop().now() - *found.lastShowPacket);
    text += tr(" · last packet %1 s ago").arg(seconds, 0, 'f', 1);
  }
  if (found.isScanning) text += QStringLiteral(" · ") + QString::fromStdString(found.adapter);
  const QString lacking = missing(found);
  if (!lacking.isEmpty()) {
    text += QLatin1Char('\n') + lacking;
    if (!hasComplained_) std::fprintf(stderr, "halvora-demo: %s\n", qUtf8Printable(lacking));
    hasComplained_ = true;
  }
  if (!found.isScanning && !found.errors.last.empty()) {
    text += QLatin1Char('\n') + QString::fromStdString(found.errors.last);
  }
  if (std::exchange(radio_, text) != text) emit radioChanged();
}

}  // namespace halvora
