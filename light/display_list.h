// SPDX-License-Identifier: Apache-2.0
// What a face draws of a view stack at this moment: a flat list from bottom to top, most often one
// plain colour. The light lies on the container's black and the dimmer on all below it, so both are
// reckoned into the colours and need no drawing of their own. Values, any thread.
#pragma once

#include <string>
#include <vector>

#include "halvora/platform/screen.h"
#include "light/colour.h"
#include "light/view_stack.h"
#include "light/views.h"

namespace halvora {

struct DisplayItem {
  ViewContent content = ViewContent::fill;
  /// In the container's coordinates.
  Rect frame;
  /// Of the fill or the text; of an image or a clip, what each of its channels is multiplied with.
  /// Opaque: what a colour lets through is in the opacity.
  Colour colour;
  double opacity = 1;
  /// The label's text, the picture's file, or the name of the view that a clip is played in.
  std::string text;
  /// Points; 0 without text.
  double fontSize = 0;

  friend bool operator==(const DisplayItem&, const DisplayItem&) = default;
};

using DisplayList = std::vector<DisplayItem>;

/// What is to be seen of the stack in a container of that size. Nothing that cannot be seen is
/// listed; the first item, if there is one, is the light, over the whole container. Opacities of
/// parent and child multiply.
DisplayList displayListOf(const ViewStack& views, Size container);

}  // namespace halvora
