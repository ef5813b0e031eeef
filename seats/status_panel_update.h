// SPDX-License-Identifier: Apache-2.0
// The bracket around everything that changes the status panel: however the panel's operations call
// each other, a face hears of the outcome once. A face that hears may destroy the panel. For the
// panel's own sources; main thread.
#pragma once

#include "seats/halvora_status_view_controller.h"

namespace halvora {

class HalvoraStatusViewController::Update {
 public:
  explicit Update(HalvoraStatusViewController& panel) : panel_(panel), life_(panel.life_) {
    ++panel_.updates_;
  }
  ~Update() {
    if (isPanelGone()) return;
    try {
      if (panel_.updates_ == 1) panel_.publish();
    } catch (...) {
      // Memory is short, or the face fails: it hears with the next change.
    }
    if (!isPanelGone()) --panel_.updates_;
  }
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

  bool isPanelGone() const { return life_.isGone(); }

 private:
  HalvoraStatusViewController& panel_;
  const Witness life_;
};

}  // namespace halvora
