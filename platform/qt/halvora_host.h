// SPDX-License-Identifier: Apache-2.0
// The phone and the engine that the QML types of one QML engine are wired to. A host application
// that installs nothing gets this machine's and the process's one engine; tests and demos install
// their own before they load any QML. Owned by the QML engine; main thread.
#pragma once

#include <QObject>
#include <QQmlEngine>
#include <vector>

#include "engine/halvora_view_controller.h"
#include "platform/platform.h"

namespace halvora {

class HalvoraViewItem;

class HalvoraHost : public QObject {
  Q_OBJECT

 public:
  /// What was installed in that QML engine; else, from the first call on, the system's.
  static HalvoraHost& of(QQmlEngine& engine);
  /// In place of what was installed before. The controller has its view loaded; it and the needs
  /// outlive the QML engine and every item that was made with it.
  static void install(QQmlEngine& engine, const Platform& platform,
                      HalvoraViewController& controller);
  ~HalvoraHost() override;

  const Platform& platform() const { return platform_; }
  HalvoraViewController& controller() const { return controller_; }

  /// An engine's view is in one place at a time: the item that came last shows it, and when that
  /// leaves, the one before has it again. An item leaves before it goes.
  void enter(HalvoraViewItem& item);
  void leave(HalvoraViewItem& item);

 private:
  HalvoraHost(QQmlEngine& engine, const Platform& platform, HalvoraViewController& controller)
      : QObject(&engine), platform_(platform), controller_(controller) {}

  const Platform platform_;
  HalvoraViewController& controller_;
  std::vector<HalvoraViewItem*> items_;
};

}  // namespace halvora
