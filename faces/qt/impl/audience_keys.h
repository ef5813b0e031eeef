// SPDX-License-Identifier: Apache-2.0
// The keys by which an audience leaves a show, Esc and Back, wherever in the window the keyboard is
// and whatever a host has bound to them. While it is not active they are the host's. Owned by the
// audience view; main thread.
#pragma once

#include <QObject>
#include <QPointer>
#include <QQuickWindow>

#include <qqmlregistration.h>

namespace halvora {

class AudienceKeys : public QObject {
  Q_OBJECT
  QML_ELEMENT
  /// Null for none.
  Q_PROPERTY(QQuickWindow* window READ window WRITE setWindow NOTIFY windowChanged)
  Q_PROPERTY(bool active MEMBER isActive_ NOTIFY activeChanged)

 public:
  using QObject::QObject;

  QQuickWindow* window() const { return window_; }
  void setWindow(QQuickWindow* window);
  bool eventFilter(QObject* watched, QEvent* event) override;

 signals:
  /// Once a press, however long it is held.
  void pressed();
  void windowChanged();
  void activeChanged();

 private:
  QPointer<QQuickWindow> window_;
  bool isActive_ = false;
};

}  // namespace halvora
