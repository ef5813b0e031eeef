// SPDX-License-Identifier: Apache-2.0
// Says aloud what changes while the user is elsewhere: whoever listens with a screen reader hears
// it at once, wherever their focus is. All that is said in one turn is one announcement, a line
// each. Nothing of it is seen. Owned by the status view; main thread.
#pragma once

#include <QQuickItem>
#include <QString>
#include <QStringList>

#include <qqmlregistration.h>

namespace halvora {

class StatusAnnouncer : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  /// What was said last.
  Q_PROPERTY(QString said READ said NOTIFY saidChanged)

 public:
  explicit StatusAnnouncer(QQuickItem* parent = nullptr);

  const QString& said() const { return said_; }
  /// Nothing for an empty text, and once for one that is said twice in a turn.
  Q_INVOKABLE void say(const QString& text);

 signals:
  void saidChanged();
  /// At each announcement, also of what was said before.
  void announced(const QString& text);

 private:
  void announce();

  QStringList waiting_;
  QString said_;
};

}  // namespace halvora
