// SPDX-License-Identifier: Apache-2.0
// Holds the scroll views that a panel lies in still, and lets them go again as they were. Owned by
// the status panel; main thread.
#pragma once

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "halvora/panel.h"

namespace halvora {

class AncestorScrollViews {
 public:
  /// One that is held already keeps what was noted of it.
  void disable(const std::vector<std::shared_ptr<ScrollView>>& ancestors) {
    for (const std::shared_ptr<ScrollView>& view : ancestors) {
      const auto isIt = [&view](const Saved& saved) { return saved.view.lock() == view; };
      if (view == nullptr || std::any_of(saved_.begin(), saved_.end(), isIt)) continue;
      saved_.push_back({view, view->flags()});
      view->setFlags({false, false});
    }
  }
  /// Those that are still there.
  void restore() {
    for (const Saved& saved : std::exchange(saved_, {})) {
      if (const auto view = saved.view.lock()) view->setFlags(saved.flags);
    }
  }

 private:
  struct Saved {
    std::weak_ptr<ScrollView> view;
    ScrollView::Flags flags;
  };
  std::vector<Saved> saved_;
};

}  // namespace halvora
