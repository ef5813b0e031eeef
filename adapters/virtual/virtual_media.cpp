// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_media.h"

#include <memory>
#include <utility>

namespace halvora {

void VirtualVideoPlayer::load(const VideoItem& item) {
  item_ = item;
  isPlaying = false;
  log_.add({name_, VideoAct::load, item.name, {}});
}

void VirtualVideoPlayer::play() {
  isPlaying = true;
  log_.add({name_, VideoAct::play, {}, {}});
}

void VirtualVideoPlayer::pause() {
  isPlaying = false;
  log_.add({name_, VideoAct::pause, {}, {}});
}

void VirtualVideoPlayer::seek(Duration position, Task completion) {
  log_.add({name_, VideoAct::seek, {}, position});
  seeks_->push_back(std::move(completion));
  if (holdsSeeks) return;
  loop_.soon([this, isThere = std::weak_ptr(seeks_)] {
    if (!isThere.expired()) completeSeek();
  });
}

void VirtualVideoPlayer::completeSeek() {
  if (seeks_->empty()) return;
  Task completion = std::move(seeks_->front());
  seeks_->pop_front();
  if (completion) completion();
}

}  // namespace halvora
