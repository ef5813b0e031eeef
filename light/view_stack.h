// SPDX-License-Identifier: Apache-2.0
// What the light show's views are at present, and their animations. An animation sets its value at
// once and is shown running to it; a face draws the shown values, the show's logic reads the set
// ones. One engine owns one stack; main thread.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <initializer_list>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/task.h"
#include "halvora/witness.h"
#include "light/timer_set.h"
#include "light/views.h"

namespace halvora {

struct AnimationTiming {
  Duration duration{};
  Duration delay{};
  /// A label for observers; nothing depends on it.
  const char* name = "";
};

/// Hears of every change of a stack, in the turn that makes it, and in detail: a trace writes it
/// down. It is called in the middle of what the show does and must not destroy the stack, or the
/// engine that has it.
class ViewObserver {
 public:
  virtual ~ViewObserver() = default;
  /// `duration` is zero for a value that is set without animation.
  virtual void alphaChanged(ViewId, double /*alpha*/, Duration /*duration*/) {}
  virtual void alphaAnimationStarted(const AnimationTiming& /*timing*/) {}
  virtual void hiddenChanged(ViewId, bool /*hidden*/) {}
  virtual void textChanged(ViewId, const std::string& /*text*/) {}
  virtual void lightChanged(const MaybeColour&) {}
  virtual void lightAnimationStarted(const MaybeColour& /*to*/, Duration /*duration*/) {}
  virtual void lightAnimationEnded(bool /*finished*/) {}
};

struct LightLook;

/// Stands between a stack and whoever draws it, and decides what of it is to be seen.
class LightFilter {
 public:
  virtual ~LightFilter() = default;
  /// At this moment, in a container of that size; counts as shown from now on.
  virtual LightLook lookInto(Size container) = 0;
  /// Whether a later moment may show something else without any further change of the stack.
  virtual bool isMoving() const = 0;
};

/// A text that many may show; never null.
using SharedText = std::shared_ptr<const std::string>;

struct AlphaChange {
  ViewId view;
  double alpha;
};

class ViewStack {
 public:
  /// Called when an animation has ended: true if it ran to its end, false if it was removed or
  /// superseded. An animation of several values ends with the last of them, and has finished only
  /// if none was removed.
  using Completion = Callable<void(bool finished)>;

  explicit ViewStack(TimerSet& timers);
  ~ViewStack();
  ViewStack(const ViewStack&) = delete;
  ViewStack& operator=(const ViewStack&) = delete;

  /// At most one observer, which takes itself off with null if it goes before the stack does.
  void setObserver(ViewObserver* observer) { observer_ = observer; }
  /// Likewise, who draws it.
  void setFace(LightObserver* face) { face_ = face; }

  /// Likewise, what filters it; null for nothing. What was drawn is to be drawn again.
  void setFilter(LightFilter* filter);
  LightFilter* filter() const { return filter_; }
  /// Tells the face that what is to be seen may be something else, though no value has changed.
  void lookAgain() { tellFace(); }

  double alpha(ViewId view) const { return alphas_[indexOf(view)]; }
  /// Sets the value and leaves a running animation alone: what is shown follows that to its end,
  /// then this.
  void setAlpha(ViewId view, double alpha);
  void animateAlpha(std::initializer_list<AlphaChange> changes, const AnimationTiming& timing,
                    Completion completion = {});
  /// Ends the view's animation unfinished, in a turn of its own at the present time.
  void removeAnimations(ViewId view);

  bool isHidden(ViewId view) const { return hidden_[indexOf(view)]; }
  void setHidden(ViewId view, bool hidden);

  /// The text of a label, or the name of the picture in an image view.
  const std::string& text(ViewId view) const;
  /// Null before the first.
  SharedText sharedText(ViewId view) const;
  void setText(ViewId view, SharedText text);
  void setText(ViewId view, std::string text);

  /// The colour of the light, as set; the only way in which an effect shows a colour. None clears
  /// the light.
  const MaybeColour& lightColour() const { return light_; }
  void setLightColour(const MaybeColour& colour);
  void animateLight(const MaybeColour& to, Duration duration, Completion completion);
  void removeLightAnimations();

  /// What is to be seen at this moment.
  double shownAlpha(ViewId view) const;
  MaybeColour shownLight() const;
  /// Whether a later moment may show something else without any further change.
  bool isAnimating() const { return lightTween_.has_value() || !alphaTweens_.empty(); }

 private:
  using AnimationId = std::uint32_t;

  struct Run {
    AnimationId animation;
    Duration begin;
    Duration duration;
  };
  struct AlphaTween {
    Run run;
    ViewId view;
    double from;
    double to;
  };
  struct LightTween {
    Run run;
    Colour from;
    Colour to;
  };
  struct Animation {
    AnimationId id;
    TimerId end;
    std::uint8_t tweensLeft;
    bool wasCut;
    bool isLight;
    Completion completion;
  };
  struct Text {
    ViewId view;
    SharedText text;
  };

  /// Calls the observer, if there is one.
  template <class... Arguments>
  void tell(void (ViewObserver::*what)(Arguments...),
            const std::type_identity_t<Arguments>&... said);
  void tellFace();
  Run start(const AnimationTiming& timing, std::size_t tweens, bool isLight, Completion completion);
  void cutAlphaTween(ViewId view);
  void cut(AnimationId id);
  void end(AnimationId id);
  float share(const Run& run) const;
  std::vector<AlphaTween>::const_iterator findTween(ViewId view) const;

  TimerSet& timers_;
  ViewObserver* observer_ = nullptr;
  LightObserver* face_ = nullptr;
  LightFilter* filter_ = nullptr;
  std::array<double, kViewCount> alphas_;
  std::bitset<kViewCount> hidden_;
  std::vector<Text> texts_;
  MaybeColour light_ = kBlack;
  std::optional<LightTween> lightTween_;
  std::vector<AlphaTween> alphaTweens_;
  std::vector<Animation> animations_;
  AnimationId lastAnimation_ = 0;
  Witnessed life_;
};

}  // namespace halvora
