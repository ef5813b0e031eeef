// SPDX-License-Identifier: Apache-2.0
#include "seats/ancestor_scroll_views.h"

#include <algorithm>
#include <utility>

namespace halvora {

void AncestorScrollViews::disable(const std::vector<std::shared_ptr<ScrollView>>& ancestors) {
  for (const std::shared_ptr<ScrollView>& view : ancestors) {
    if (view == nullptr || isSaved(view)) continue;
    saved_.push_back({view, view->isScrollEnabled(), view->bounces()});
    view->setScrollEnabled(false);
    view->setBounces(false);
  }
}

void AncestorScrollViews::restore() {
  for (const Saved& saved : std::exchange(saved_, {})) {
    const std::shared_ptr<ScrollView> view = saved.view.lock();
    if (!view) continue;
    view->setScrollEnabled(saved.isScrollEnabled);
    view->setBounces(saved.bounces);
  }
}

bool AncestorScrollViews::isSaved(const std::shared_ptr<ScrollView>& view) const {
  return std::any_of(saved_.begin(), saved_.end(),
                     [&view](const Saved& saved) { return saved.view.lock() == view; });
}

}  // namespace halvora
