// SPDX-License-Identifier: Apache-2.0
#include "light/view_stack.h"

#include <algorithm>
#include <utility>

namespace halvora {

namespace {

// A light without a colour lets the black behind it through.
Colour drawn(const MaybeColour& colour) { return colour.value_or(Colour{0, 0, 0, 0}); }

template <class Element>
void makeRoom(std::vector<Element>& elements, std::size_t more) {
  const std::size_t size = elements.size() + more;
  if (size > elements.capacity()) elements.reserve(std::max(size, elements.capacity() * 2));
}

}  // namespace

ViewStack::ViewStack(TimerSet& timers) : timers_(timers), alphas_() {
  for (std::size_t at = 0; at < kViewCount; ++at) {
    alphas_[at] = kViews[at].alpha;
    hidden_[at] = kViews[at].hidden;
  }
}

ViewStack::~ViewStack() {
  if (face_ != nullptr) face_->lightEnds();
}

template <class... Arguments>
void ViewStack::tell(void (ViewObserver::*what)(Arguments...),
                     const std::type_identity_t<Arguments>&... said) {
  if (observer_ == nullptr) return;
  Witness self(life_);
  self.setMayGo(false);
  (observer_->*what)(said...);
}

void ViewStack::tellFace() {
  if (face_ == nullptr) return;
  Witness self(life_);
  self.setMayGo(false);
  face_->lightChanged();
}

void ViewStack::setFilter(LightFilter* filter) {
  filter_ = filter;
  tellFace();
}

void ViewStack::setAlpha(ViewId view, double alpha) {
  alphas_[indexOf(view)] = alpha;
  tell(&ViewObserver::alphaChanged, view, alpha, Duration::zero());
  tellFace();
}

void ViewStack::animateAlpha(std::initializer_list<AlphaChange> changes,
                             const AnimationTiming& timing, Completion completion) {
  const Run run = start(timing, changes.size(), false, std::move(completion));
  tell(&ViewObserver::alphaAnimationStarted, timing);
  for (const AlphaChange& change : changes) {
    const double from = shownAlpha(change.view);
    cutAlphaTween(change.view);
    alphaTweens_.push_back({run, change.view, from, change.alpha});
    alphas_[indexOf(change.view)] = change.alpha;
    tell(&ViewObserver::alphaChanged, change.view, change.alpha, timing.duration);
  }
  tellFace();
}

void ViewStack::removeAnimations(ViewId view) { cutAlphaTween(view); }

void ViewStack::setHidden(ViewId view, bool hidden) {
  hidden_[indexOf(view)] = hidden;
  tell(&ViewObserver::hiddenChanged, view, hidden);
  tellFace();
}

const std::string& ViewStack::text(ViewId view) const {
  static const std::string kNone;
  const auto found = std::find_if(texts_.begin(), texts_.end(),
                                  [view](const Text& text) { return text.view == view; });
  return found == texts_.end() ? kNone : *found->text;
}

SharedText ViewStack::sharedText(ViewId view) const {
  const auto found = std::find_if(texts_.begin(), texts_.end(),
                                  [view](const Text& text) { return text.view == view; });
  return found == texts_.end() ? nullptr : found->text;
}

void ViewStack::setText(ViewId view, std::string text) {
  static const SharedText kNone = std::make_shared<const std::string>();
  setText(view, text.empty() ? kNone : std::make_shared<const std::string>(std::move(text)));
}

void ViewStack::setText(ViewId view, SharedText text) {
  const auto found = std::find_if(texts_.begin(), texts_.end(),
                                  [view](const Text& known) { return known.view == view; });
  Text& changed = found == texts_.end() ? texts_.emplace_back(Text{view, {}}) : *found;
  changed.text = std::move(text);
  tell(&ViewObserver::textChanged, view, *changed.text);
  tellFace();
}

void ViewStack::setLightColour(const MaybeColour& colour) {
  light_ = colour;
  tell(&ViewObserver::lightChanged, light_);
  tellFace();
}

void ViewStack::animateLight(const MaybeColour& to, Duration duration, Completion completion) {
  const Colour from = drawn(shownLight());
  removeLightAnimations();
  const Run run = start({duration, {}, ""}, 1, true, std::move(completion));
  lightTween_ = LightTween{run, from, drawn(to)};
  light_ = to;
  tell(&ViewObserver::lightChanged, light_);
  tellFace();
  tell(&ViewObserver::lightAnimationStarted, to, duration);
}

void ViewStack::removeLightAnimations() {
  if (!lightTween_) return;
  const AnimationId id = lightTween_->run.animation;
  lightTween_.reset();
  cut(id);
}

double ViewStack::shownAlpha(ViewId view) const {
  const auto tween = findTween(view);
  if (tween == alphaTweens_.end()) return alpha(view);
  return tween->from + (tween->to - tween->from) * static_cast<double>(share(tween->run));
}

MaybeColour ViewStack::shownLight() const {
  if (!lightTween_) return light_;
  return mix(lightTween_->from, lightTween_->to, share(lightTween_->run));
}

ViewStack::Run ViewStack::start(const AnimationTiming& timing, std::size_t tweens, bool isLight,
                                Completion completion) {
  // Room first: what cannot be remembered must not begin.
  makeRoom(animations_, 1);
  if (!isLight) makeRoom(alphaTweens_, tweens);
  const AnimationId id = ++lastAnimation_;
  const TimerId timer = timers_.after(timing.delay + timing.duration, [this, id] { end(id); });
  animations_.push_back(
      {id, timer, static_cast<std::uint8_t>(tweens), false, isLight, std::move(completion)});
  return {id, timers_.now() + timing.delay, timing.duration};
}

void ViewStack::cutAlphaTween(ViewId view) {
  const auto tween = findTween(view);
  if (tween == alphaTweens_.end()) return;
  const AnimationId id = tween->run.animation;
  alphaTweens_.erase(tween);
  cut(id);
}

void ViewStack::cut(AnimationId id) {
  const auto animation = std::find_if(animations_.begin(), animations_.end(),
                                      [id](const Animation& known) { return known.id == id; });
  animation->wasCut = true;
  if (--animation->tweensLeft > 0) return;
  // Where no turn can be had the animation ends at its own time.
  const TimerId soon = timers_.soon([this, id] { end(id); });
  timers_.invalidate(animation->end);
  animation->end = soon;
}

void ViewStack::end(AnimationId id) {
  const auto found = std::find_if(animations_.begin(), animations_.end(),
                                  [id](const Animation& known) { return known.id == id; });
  Animation ended = std::move(*found);
  animations_.erase(found);
  std::erase_if(alphaTweens_, [id](const AlphaTween& tween) { return tween.run.animation == id; });
  if (lightTween_ && lightTween_->run.animation == id) lightTween_.reset();

  if (ended.isLight) tell(&ViewObserver::lightAnimationEnded, !ended.wasCut);
  if (ended.completion) ended.completion(!ended.wasCut);
}

// Slow at both ends, as the eye expects of a fade: 3s² − 2s³.
float ViewStack::share(const Run& run) const {
  if (run.duration <= Duration::zero()) return 1;
  const auto elapsed = static_cast<float>((timers_.now() - run.begin).count());
  const float part = std::clamp(elapsed / static_cast<float>(run.duration.count()), 0.0F, 1.0F);
  return part * part * (3 - 2 * part);
}

std::vector<ViewStack::AlphaTween>::const_iterator ViewStack::findTween(ViewId view) const {
  return std::find_if(alphaTweens_.begin(), alphaTweens_.end(),
                      [view](const AlphaTween& tween) { return tween.view == view; });
}

}  // namespace halvora
