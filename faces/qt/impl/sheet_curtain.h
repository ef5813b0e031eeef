// SPDX-License-Identifier: Apache-2.0
// Hides from screen readers what lies behind a modal sheet, as the shade does from the eye: while
// it is drawn, nothing below an item is there for them, but for what lies in the window's overlay
// and for what speaks. Main thread.
#pragma once

#include <QList>
#include <QObject>
#include <QPointer>
#include <QQuickItem>

#include <qqmlregistration.h>

namespace halvora {

class SheetCurtain : public QObject {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(QQuickItem* before MEMBER before_ NOTIFY changed)
  /// Left as it is, with all that lies in it; may be null.
  Q_PROPERTY(QQuickItem* except MEMBER except_ NOTIFY changed)
  Q_PROPERTY(bool drawn MEMBER isDrawn_ NOTIFY changed)

 public:
  explicit SheetCurtain(QObject* parent = nullptr);
  ~SheetCurtain() override;

 signals:
  void changed();

 private:
  void move();
  void hideBelow(QQuickItem& item);
  void open();

  QPointer<QQuickItem> before_;
  QPointer<QQuickItem> except_;
  bool isDrawn_ = false;
  /// What each of the hidden items says of itself.
  QList<QPointer<QObject>> hidden_;
};

}  // namespace halvora
