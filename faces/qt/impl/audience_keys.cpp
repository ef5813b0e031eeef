// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/audience_keys.h"

#include <QKeyEvent>

namespace halvora {

void AudienceKeys::setWindow(QQuickWindow* window) {
  if (window == window_) return;
  if (window_) window_->removeEventFilter(this);
  window_ = window;
  if (window_) window_->installEventFilter(this);
  emit windowChanged();
}

// A host's shortcut would take the key before it is pressed, unless somebody claims it first.
bool AudienceKeys::eventFilter(QObject* watched, QEvent* event) {
  const bool isClaim = event->type() == QEvent::ShortcutOverride;
  if (!isActive_ || (!isClaim && event->type() != QEvent::KeyPress)) {
    return QObject::eventFilter(watched, event);
  }
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.key() != Qt::Key_Escape && key.key() != Qt::Key_Back) return false;
  event->accept();
  if (!isClaim && !key.isAutoRepeat()) emit pressed();
  return true;
}

}  // namespace halvora
