// SPDX-License-Identifier: Apache-2.0
#include "faces/qt/halvora_host.h"

#include <QPointer>
#include <memory>

#include "faces/qt/halvora_view_item.h"

namespace halvora {

namespace {

HalvoraHost* installedIn(const QQmlEngine& engine) {
  return engine.findChild<HalvoraHost*>(QString(), Qt::FindDirectChildrenOnly);
}

}  // namespace

HalvoraHost& HalvoraHost::of(QQmlEngine& engine) {
  if (installedIn(engine) == nullptr) installSystem(engine);
  return *installedIn(engine);
}

void HalvoraHost::install(QQmlEngine& engine, const Platform& platform,
                          HalvoraViewController& controller, SystemWishes* wishes) {
  // Whoever hears of the old one's end, and acts, finds the new one.
  const std::unique_ptr<HalvoraHost> old(installedIn(engine));
  if (old) old->setParent(nullptr);
  new HalvoraHost(engine, platform, controller, wishes);
}

// An item that hears of it may destroy others.
HalvoraHost::~HalvoraHost() {
  const std::vector<QPointer<HalvoraViewItem>> items(items_.begin(), items_.end());
  items_.clear();
  for (const auto& item : items) {
    if (item) item->forgetHost();
  }
}

// Whoever hears that the one before is dark may have destroyed the new one, or have installed
// another host, and destroyed this one.
void HalvoraHost::enter(HalvoraViewItem& item) {
  const QPointer<HalvoraHost> self(this);
  HalvoraViewItem* const before = items_.empty() ? nullptr : items_.back();
  items_.push_back(&item);
  if (before != nullptr) before->setShown(false);
  if (self && !items_.empty() && items_.back() == &item) item.setShown(true);
}

void HalvoraHost::leave(HalvoraViewItem& item) {
  if (items_.empty()) return;
  const bool hadIt = items_.back() == &item;
  std::erase(items_, &item);
  if (!hadIt) return;
  const QPointer<HalvoraHost> self(this);
  item.setShown(false);
  if (self && !items_.empty()) items_.back()->setShown(true);
}

}  // namespace halvora
