// SPDX-License-Identifier: Apache-2.0
#include "apps/console/system_host.h"

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

SystemHost::SystemHost(const std::string& assets, const QtLinuxOptions& options)
    : adapter_(options.adapter),
      phone_({.assets = assets,
              .identifier = "com.example.host",
              .limits = {.flash = FlashPolicy::limited}},
             options),
      engine_(phone_.platform(), phone_.engineOptions()) {
  engine_.viewDidLoad();
  look();
  looks_ = Timer(loop(), loop().every(kBetweenLooks, [this] { look(); }));
}

void SystemHost::install(QQmlEngine& qml) {
  HalvoraHost::install(qml, phone_.platform(), engine_, &phone_.wishes());
}

// Where the daemon has adapters, and not the one that was named.
QString SystemHost::missing(const BluetoothDiagnostics& found) const {
  const std::vector<std::string>& all = found.adapters;
  if (adapter_.empty() || all.empty() || std::ranges::find(all, adapter_) != all.end()) return {};
  QStringList names;
  for (const std::string& name : all) names.append(QString::fromStdString(name));
  return tr("waiting for the adapter %1, which is not there; this machine has %2")
      .arg(QString::fromStdString(adapter_), names.join(QStringLiteral(", ")));
}

void SystemHost::look() {
  const BluetoothDiagnostics found = phone_.bluetoothDiagnostics();
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
