// SPDX-License-Identifier: Apache-2.0
// All of a view stack that light comes from, as it is to be seen at one moment: a value that may be
// kept and shown later. The display list is made of it, and so is the mean of the screen. Main
// thread.
#pragma once

#include <array>
#include <string>

#include "halvora/light.h"
#include "light/emission.h"
#include "light/picture_means.h"
#include "light/view_stack.h"

namespace halvora {

struct LightLook {
  /// By view: 0 to 1, and 0 for what is hidden.
  std::array<double, kViewCount> visible{};
  Colour light = views::kClear;
  /// May be null.
  SharedText gobo;

  double of(ViewId view) const { return visible[indexOf(view)]; }
  /// The light's own share of its colour, dimmer included.
  double lightShare() const {
    return (1 - of(ViewId::dimmerView)) * of(ViewId::lightView) * static_cast<double>(light.alpha);
  }
};

LightLook lookOf(const ViewStack& views);

/// Whether the screen is black already, or will be when what runs has ended.
bool isGoingDark(const ViewStack& views);

/// The picture over the light, where anything of it can be seen; null for none.
const std::string* shownGobo(const LightLook& look);

/// The mean over the screen of light, clips' ground, gobo and dimmer within their container, over
/// black. Texts are not counted, nor are the pictures of clips, which nobody here can see.
Levels meanOf(const LightLook& look, const PictureMean& gobo);

/// The same look without any light; texts stay.
LightLook darkened(LightLook look);

}  // namespace halvora
