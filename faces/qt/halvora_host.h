// SPDX-License-Identifier: Apache-2.0
// The phone and the engine that the QML types of one QML engine are wired to. A host application
// that installs nothing gets this machine's and the process's one engine; tests and demos install
// their own before they load any QML. Owned by the QML engine; main thread. Another one may be
// installed at any time, from within a signal of an item too.
#pragma once

#include <QObject>
#include <QPointer>
#include <QQmlEngine>
#include <vector>

#include "faces/qt/system_wishes.h"
#include "halvora/engine.h"
#include "halvora/platform/platform.h"
#include "halvora/witness.h"

namespace halvora {

class HalvoraViewItem;

class HalvoraHost : public QObject {
  Q_OBJECT

 public:
  /// What was installed in that QML engine; else, from the first call on, the system's.
  static HalvoraHost& of(QQmlEngine& engine);
  /// Installs this machine and the process's one engine. Defined by whoever puts the module
  /// together with what this machine has, as a face knows no system.
  static void installSystem(QQmlEngine& engine);
  /// In place of what was installed before: items that were made with that are dark and empty from
  /// then on, and it may be destroyed as soon as this returns. The controller has its view loaded.
  /// The needs outlive the QML engine, or are kept until something else was installed. So does the
  /// controller; one that goes before leaves its light dark and its panels as they are.
  /// What the user has asked the system for is followed as long as `wishes` is there, if any are.
  static void install(QQmlEngine& engine, const Platform& platform,
                      HalvoraViewController& controller, SystemWishes* wishes = nullptr);
  ~HalvoraHost() override;

  const Platform& platform() const { return platform_; }
  /// Only while there is one.
  HalvoraViewController& controller() const { return controller_; }
  bool hasController() const { return !controllerLife_.isGone(); }
  /// Null where nobody follows the system.
  const SystemWishes* wishes() const { return wishes_; }

  /// An engine's view is in one place at a time: the item that came last shows it, and when that
  /// leaves, the one before has it again. An item leaves before it goes.
  void enter(HalvoraViewItem& item);
  void leave(HalvoraViewItem& item);

 signals:
  /// A show has begun or ended in the item that shows the engine's view; looks in between do not
  /// count.
  void showTold(bool hasBegun);

 private:
  HalvoraHost(QQmlEngine& engine, const Platform& platform, HalvoraViewController& controller,
              SystemWishes* wishes)
      : QObject(&engine),
        platform_(platform),
        controller_(controller),
        controllerLife_(controller.life()),
        wishes_(wishes) {}

  const Platform platform_;
  HalvoraViewController& controller_;
  const Witness controllerLife_;
  const QPointer<SystemWishes> wishes_;
  std::vector<HalvoraViewItem*> items_;
};

}  // namespace halvora
