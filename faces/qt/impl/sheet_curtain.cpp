// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/impl/sheet_curtain.h"

#include "faces/qt/impl/status_announcer.h"

namespace halvora {

namespace {

constexpr const char* kIgnored = "ignored";

// What Qt keeps the `Accessible` properties of an item in: a child of it, if it has any.
QObject* accessibleOf(const QQuickItem& item) {
  for (QObject* child : item.children()) {
    if (child->inherits("QQuickAccessibleAttached")) return child;
  }
  return nullptr;
}

}  // namespace

SheetCurtain::SheetCurtain(QObject* parent) : QObject(parent) {
  connect(this, &SheetCurtain::changed, this, &SheetCurtain::move);
}

SheetCurtain::~SheetCurtain() { open(); }

void SheetCurtain::move() {
  open();
  if (isDrawn_ && before_) hideBelow(*before_);
}

void SheetCurtain::hideBelow(QQuickItem& item) {
  const QList<QQuickItem*> children = item.childItems();
  for (QQuickItem* child : children) {
    if (child->inherits("QQuickOverlay") || qobject_cast<StatusAnnouncer*>(child) != nullptr) {
      continue;
    }
    if (child == except_) continue;
    QObject* spoken = accessibleOf(*child);
    if (spoken != nullptr && !spoken->property(kIgnored).toBool()) {
      spoken->setProperty(kIgnored, true);
      hidden_.append(spoken);
    }
    hideBelow(*child);
  }
}

void SheetCurtain::open() {
  for (const QPointer<QObject>& spoken : qAsConst(hidden_)) {
    if (spoken) spoken->setProperty(kIgnored, false);
  }
  hidden_.clear();
}

}  // namespace halvora
