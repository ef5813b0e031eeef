// SPDX-License-Identifier: Apache-2.0
// A host application on this machine: its phone, and an engine on it. For QML it says how the radio
// is doing. Made by the program; main thread.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <QString>
#include <string>

#include <qqmlregistration.h>

#include "adapters/system/system_phone.h"
#include "halvora/engine.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

class SystemHost : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_UNCREATABLE("The program makes it")
  /// Whether the system scans and on which adapter, whether a show is heard, and when the last
  /// packet of one was.
  Q_PROPERTY(QString radio READ radio NOTIFY radioChanged)

 public:
  explicit SystemHost(const std::string& assets, const QtLinuxOptions& options = {});

  /// Wires the host views of that QML engine to this phone.
  void install(QQmlEngine& qml);

  RunLoop& loop() { return phone_.runLoop(); }
  HalvoraViewController& engine() { return engine_; }
  const QString& radio() const { return radio_; }

 signals:
  void radioChanged();

 private:
  void look();
  QString missing(const BluetoothDiagnostics& found) const;

  const std::string adapter_;
  SystemPhone phone_;
  HalvoraViewController engine_;
  QString radio_;
  bool hasComplained_ = false;
  Timer looks_;
};

}  // namespace halvora
