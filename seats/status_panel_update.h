// SPDX-License-Identifier: Apache-2.0
// The bracket around everything that changes the status panel: however the panel's operations call
// each other, a face hears of the outcome once. For the panel's own sources; main thread.
#pragma once

#include "seats/halvora_status_view_controller.h"

namespace halvora {

class HalvoraStatusViewController::Update {
 public:
  explicit Update(HalvoraStatusViewController& panel) : panel_(panel) { ++panel_.updates_; }
  ~Update() {
    if (panel_.updates_ == 1) panel_.publish();
    --panel_.updates_;
  }
  Update(const Update&) = delete;
  Update& operator=(const Update&) = delete;

 private:
  HalvoraStatusViewController& panel_;
};

}  // namespace halvora
