// SPDX-License-Identifier: Apache-2.0
// Three screen effects as one would write them down at first: a method each, timers in a multimap
// of functions that an id can cancel, one animation at a time. Speed 255 throughout. It is what the
// effect tables, the run loop and the view stack are measured against.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <unordered_map>
#include <utility>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/random.h"
#include "halvora/platform/time.h"

namespace halvora {

class PlainEffects {
 public:
  PlainEffects(Random& random, std::vector<Colour> palette)
      : random_(random), palette_(std::move(palette)), current_(palette_[0]) {}

  void startStrobe() {
    next_ = after(milliseconds(50), [this] { strobe(); });
  }
  void startFlashBulb() {
    show(kBlack);
    next_ = after(drawnPause(), [this] { flashBulb(); });
  }
  void startCrossfade() {
    show(current_);
    next_ = after(milliseconds(300), [this] { crossfade(); });
  }
  void stop() {
    runs_ = false;
    cancel(next_);
  }

  void runFor(Duration span) {
    const Duration end = now_ + span;
    while (!timers_.empty() && timers_.begin()->first <= end) {
      now_ = timers_.begin()->first;
      const std::function<void()> task = std::move(timers_.begin()->second.task);
      byId_.erase(timers_.begin()->second.id);
      timers_.erase(timers_.begin());
      task();
    }
    now_ = end;
  }

  Duration now() const { return now_; }
  const MaybeColour& light() const { return light_; }
  /// Told of every colour that the light is set to; may stay absent.
  std::function<void(const MaybeColour&)> lightChanged;

 private:
  struct Pending {
    int id;
    std::function<void()> task;
  };
  using Timers = std::multimap<Duration, Pending>;

  struct Animation {
    int id;
    Colour from;
    Colour to;
    Duration begin;
    Duration duration;
  };

  void strobe() {
    if (!runs_) return;
    isOn_ = !isOn_;
    show(isOn_ ? current_ : kBlack);
    next_ = after(milliseconds(10), [this] { strobe(); });
  }

  void flashBulb() {
    if (!runs_) return;
    show(current_);
    after(milliseconds(90), [this] {
      if (runs_) show(kBlack);
    });
    next_ = after(drawnPause(), [this] { flashBulb(); });
  }

  void crossfade() {
    if (!runs_) return;
    animation_.reset();
    animate(current_, milliseconds(200), [this](bool finished) {
      if (!finished) return;
      nextPaletteColour();
      animate(current_, milliseconds(200), [this](bool ended) {
        if (ended) next_ = after(milliseconds(300), [this] { crossfade(); });
      });
    });
  }

  void animate(const Colour& to, Duration duration, std::function<void(bool)> completion) {
    const int id = ++lastAnimation_;
    animation_ = Animation{id, light_.value_or(Colour{0, 0, 0, 0}), to, now_, duration};
    show(to);
    after(duration, [this, id, done = std::move(completion)] {
      const bool finished = animation_ && animation_->id == id;
      if (finished) animation_.reset();
      done(finished);
    });
  }

  void show(const MaybeColour& colour) {
    light_ = colour;
    if (lightChanged) lightChanged(light_);
  }

  void nextPaletteColour() {
    const auto count = static_cast<std::uint32_t>(palette_.size());
    std::uint32_t index = random_.below(count);
    if (index == index_) index = index == 0 ? 1 : index - 1;
    index_ = index;
    current_ = palette_[index_];
  }

  Duration drawnPause() { return milliseconds(random_.below(301)); }
  int after(Duration delay, std::function<void()> task) {
    const int id = ++lastTimer_;
    byId_[id] = timers_.emplace(now_ + delay, Pending{id, std::move(task)});
    return id;
  }
  void cancel(int id) {
    const auto found = byId_.find(id);
    if (found == byId_.end()) return;
    timers_.erase(found->second);
    byId_.erase(found);
  }

  Random& random_;
  std::vector<Colour> palette_;
  Colour current_;
  std::uint32_t index_ = 0;
  Duration now_{};
  Timers timers_;
  std::unordered_map<int, Timers::iterator> byId_;
  int lastTimer_ = 0;
  int next_ = 0;
  MaybeColour light_ = kBlack;
  std::optional<Animation> animation_;
  int lastAnimation_ = 0;
  bool runs_ = true;
  bool isOn_ = false;
};

}  // namespace halvora
