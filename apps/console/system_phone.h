// SPDX-License-Identifier: Apache-2.0
// This machine as a phone, as a host application opens it: its radio, torch, backlight and haptics,
// and an engine on them. For QML it says how the radio is doing. Made by the program; main thread.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <string>

#include <qqmlregistration.h>

#include "adapters/qt/qt_platform.h"
#include "adapters/system/qt_linux_services.h"
#include "halvora/engine.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class SystemPhone : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program makes the phone")
  /// Whether the system scans and on which adapter, whether a show is heard, and when the last
  /// packet of one was.
  Q_PROPERTY(QString radio READ radio NOTIFY radioChanged)

 public:
  explicit SystemPhone(const std::string& assets, const QtLinuxOptions& options = {});

  /// Wires the host views of that QML engine to this phone.
  void install(QQmlEngine& qml);

  RunLoop& loop() { return platform_.runLoop(); }
  HalvoraViewController& engine() { return engine_; }
  const QString& radio() const { return radio_; }

 signals:
  void radioChanged();

 private:
  static QtPlatform& with(QtPlatform& platform, QtLinuxServices& services);
  void look();
  QString missing(const BluetoothDiagnostics& found) const;

  const std::string adapter_;
  QtPlatform platform_;
  QtLinuxServices services_;
  HalvoraViewController engine_;
  QString radio_;
  bool hasComplained_ = false;
  Timer looks_;
};

}  // namespace halvora
