// SPDX-License-Identifier: Apache-2.0
#include "light/display_list.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <string>
#include <utility>

#include "light/light_look.h"

namespace halvora {

namespace {

// The colour at that share of its strength, in the range that every screen can show.
Colour scaled(const Colour& colour, double share) {
  const auto level = [share](float channel) {
    return std::clamp(channel * static_cast<float>(share), 0.0F, 1.0F);
  };
  return {level(colour.red), level(colour.green), level(colour.blue), 1};
}

constexpr bool isBelowDimmer(ViewId view) { return indexOf(view) < indexOf(ViewId::dimmerView); }

// What lies in the table between the light and the top, apart from the dimmer.
constexpr bool isListed(ViewId view) {
  return view > ViewId::lightView && view != ViewId::dimmerView;
}

// The words of what stands on the light are the stack's own; the gobo belongs to the look.
std::string textOf(const LightLook& look, const ViewStack& views, ViewId view) {
  if (view != ViewId::goboImage) return views.text(view);
  return look.gobo ? *look.gobo : std::string();
}

DisplayList listOf(const LightLook& look, const ViewStack& views, Size container) {
  DisplayList list;
  const double shown = look.of(ViewId::container);
  if (shown <= 0) return list;
  const double lit = 1 - look.of(ViewId::dimmerView);
  list.push_back({ViewContent::fill, frameOf(ViewId::container, container),
                  scaled(look.light, look.lightShare()), shown, "", 0});

  std::array<double, kViewCount> opacities{shown};
  for (std::size_t at = 1; at < kViewCount; ++at) {
    const auto view = static_cast<ViewId>(at);
    const ViewRow& row = rowOf(view);
    opacities[at] = opacities[indexOf(row.parent)] * look.of(view);
    if (!isListed(view)) continue;
    const bool isClip = row.content == ViewContent::video;
    const bool isPicture = isClip || row.content == ViewContent::image;
    const Colour& colour = isPicture ? kWhite : row.colour;
    const double opacity = opacities[at] * static_cast<double>(colour.alpha);
    if (opacity <= 0) continue;
    std::string text = isClip ? row.name : textOf(look, views, view);
    if (row.content != ViewContent::fill && text.empty()) continue;
    list.push_back({row.content, frameOf(view, container),
                    scaled(colour, isBelowDimmer(view) ? lit : 1), opacity, std::move(text),
                    row.fontSize});
  }
  return list;
}

}  // namespace

DisplayList displayListOf(const ViewStack& views, Size container) {
  LightFilter* const filter = views.filter();
  return listOf(filter != nullptr ? filter->lookInto(container) : lookOf(views), views, container);
}

DisplayList Light::displayList(Size container) const { return displayListOf(*views_, container); }

bool Light::isAnimating() const {
  const LightFilter* const filter = views_->filter();
  return views_->isAnimating() || (filter != nullptr && filter->isMoving());
}

void Light::setObserver(LightObserver* observer) const { views_->setFace(observer); }

}  // namespace halvora
