// SPDX-License-Identifier: Apache-2.0
#include "light/light_look.h"

#include <algorithm>

namespace halvora {

LightLook lookOf(const ViewStack& views) {
  LightLook look;
  for (std::size_t at = 0; at < kViewCount; ++at) {
    const auto view = static_cast<ViewId>(at);
    look.visible[at] = views.isHidden(view) ? 0 : std::clamp(views.shownAlpha(view), 0.0, 1.0);
  }
  look.light = views.shownLight().value_or(views::kClear);
  look.gobo = views.sharedText(ViewId::goboImage);
  return look;
}

bool isGoingDark(const ViewStack& views) {
  if (views.alpha(ViewId::container) <= 0 || views.alpha(ViewId::dimmerView) >= 1) return true;
  const MaybeColour& light = views.lightColour();
  const bool isBlack =
      !light || light->alpha <= 0 || (light->red <= 0 && light->green <= 0 && light->blue <= 0);
  const bool hasGobo = views.alpha(ViewId::goboView) > 0 && !views.text(ViewId::goboImage).empty();
  return isBlack && !hasGobo;
}

const std::string* shownGobo(const LightLook& look) {
  const double share =
      look.of(ViewId::container) * look.of(ViewId::goboView) * look.of(ViewId::goboImage);
  return share > 0 && look.gobo && !look.gobo->empty() ? look.gobo.get() : nullptr;
}

Levels meanOf(const LightLook& look, const PictureMean& gobo) {
  const double shown = look.of(ViewId::container);
  if (shown <= 0) return {};
  const double lit = 1 - look.of(ViewId::dimmerView);
  const double share = look.lightShare();
  const double ground = 1 - look.of(ViewId::videoBackgroundView);
  const double goboShare = look.of(ViewId::goboView) * look.of(ViewId::goboImage);
  const auto level = [&](float channel, double picture) {
    const double light = std::clamp(static_cast<double>(channel) * share, 0.0, 1.0) * ground;
    return (light * (1 - gobo.alpha * goboShare) + picture * goboShare * lit) * shown;
  };
  return {level(look.light.red, gobo.levels.red), level(look.light.green, gobo.levels.green),
          level(look.light.blue, gobo.levels.blue)};
}

LightLook darkened(LightLook look) {
  look.light = kBlack;
  look.visible[indexOf(ViewId::goboView)] = 0;
  look.visible[indexOf(ViewId::playerViewA)] = 0;
  look.visible[indexOf(ViewId::playerViewB)] = 0;
  return look;
}

}  // namespace halvora
