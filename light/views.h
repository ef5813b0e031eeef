// SPDX-License-Identifier: Apache-2.0
// The views of the light show as a table: their order from bottom to top, what never changes about
// them, and where they lie on a screen. What changes (alpha, hidden, texts, the light's colour) is
// in ViewStack. Values, any thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "halvora/light.h"
#include "halvora/platform/screen.h"
#include "text/rows.h"

namespace halvora {

/// In drawing order, parents before their children. All but `container` lie, directly or not, in
/// `container`; the dimmer thus darkens the colour, the gobo and the code, and leaves the two
/// notices above it alone.
enum class ViewId : std::uint8_t {
  container,
  lightView,
  fpsLabel,
  videoBackgroundView,
  playerViewA,
  playerViewB,
  goboView,
  goboImage,
  pixelMapImage,
  pairingCodeLabel,
  dimmerView,
  mapNoSeatOverlayView,
  mapNoSeatOverlayLabel,
  lowLightHintLabel,
};
inline constexpr std::size_t kViewCount = 14;

struct ViewRow {
  ViewId view;
  const char* name;
  ViewId parent;
  ViewContent content;
  /// The alpha and the hidden flag that the view starts with.
  double alpha;
  bool hidden;
  /// Fill colour, or text colour.
  Colour colour;
  /// Points; 0 for views without text.
  double fontSize;
};

namespace views {
inline constexpr Colour kClear{0, 0, 0, 0};
inline constexpr double kLabelSize = 100;
}  // namespace views

inline constexpr std::array<ViewRow, kViewCount> kViews = {{
    {ViewId::container, "container", ViewId::container, ViewContent::fill, 0, false, kBlack, 0},
    // The light itself: extended range, 16-bit float RGBA, sRGB, not opaque; its colour is the
    // ViewStack's light colour.
    {ViewId::lightView, "lightView", ViewId::container, ViewContent::fill, 1, false, kBlack, 0},
    {ViewId::fpsLabel, "fpsLabel", ViewId::container, ViewContent::text, 0, false, kWhite,
     views::kLabelSize},
    {ViewId::videoBackgroundView, "videoBackgroundView", ViewId::container, ViewContent::fill, 0,
     false, kBlack, 0},
    {ViewId::playerViewA, kClipA, ViewId::container, ViewContent::video, 0, false, views::kClear,
     0},
    {ViewId::playerViewB, kClipB, ViewId::container, ViewContent::video, 0, false, views::kClear,
     0},
    {ViewId::goboView, "goboView", ViewId::container, ViewContent::fill, 0, false, views::kClear,
     0},
    {ViewId::goboImage, "goboImage", ViewId::goboView, ViewContent::image, 1, false, views::kClear,
     0},
    {ViewId::pixelMapImage, "pixelMapImage", ViewId::goboView, ViewContent::image, 1, false,
     views::kClear, 0},
    {ViewId::pairingCodeLabel, "pairingCodeLabel", ViewId::container, ViewContent::text, 0, false,
     kWhite, views::kLabelSize},
    {ViewId::dimmerView, "dimmerView", ViewId::container, ViewContent::fill, 0, false, kBlack, 0},
    {ViewId::mapNoSeatOverlayView, "mapNoSeatOverlayView", ViewId::container, ViewContent::fill, 0,
     true, views::kClear, 0},
    {ViewId::mapNoSeatOverlayLabel, "mapNoSeatOverlayLabel", ViewId::mapNoSeatOverlayView,
     ViewContent::text, 1, false, Colour{1, 1, 1, 0.4F}, 14},
    {ViewId::lowLightHintLabel, "lowLightHintLabel", ViewId::container, ViewContent::text, 0, true,
     Colour{1, 1, 1, 0.16F}, 13},
}};
static_assert(areInOrder(kViews, &ViewRow::view));

constexpr std::size_t indexOf(ViewId view) { return static_cast<std::size_t>(view); }
constexpr const ViewRow& rowOf(ViewId view) { return kViews[indexOf(view)]; }

/// Where a view lies in a container of that size, in the container's coordinates. Every view fills
/// the container but the two notices.
Rect frameOf(ViewId view, Size container);

}  // namespace halvora
