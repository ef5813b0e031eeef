// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/status_announcer.h"

#include <QAccessible>
#include <QPointer>

namespace halvora {

// What has no size counts as not there.
StatusAnnouncer::StatusAnnouncer(QQuickItem* parent) : QQuickItem(parent) { setSize({1, 1}); }

void StatusAnnouncer::say(const QString& text) {
  if (text.isEmpty() || waiting_.contains(text)) return;
  waiting_.append(text);
  if (waiting_.size() > 1) return;
  QMetaObject::invokeMethod(
      this, [this] { announce(); }, Qt::QueuedConnection);
}

// Readers on Linux speak a notification when it comes into sight, those of other systems an alert;
// both ask for its name afterwards, so that is set first.
void StatusAnnouncer::announce() {
  const QString text = waiting_.join(QLatin1Char('\n'));
  waiting_.clear();
  const bool isOther = text != said_;
  said_ = text;
  const QPointer<StatusAnnouncer> self(this);
  if (isOther) emit saidChanged();
  if (self) emit announced(text);
  if (!self || !QAccessible::isActive()) return;
  QAccessibleEvent shown(this, QAccessible::ObjectShow);
  QAccessible::updateAccessibility(&shown);
  QAccessibleEvent alert(this, QAccessible::Alert);
  QAccessible::updateAccessibility(&alert);
}

}  // namespace halvora
