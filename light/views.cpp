// SPDX-License-Identifier: Apache-2.0
#include "light/views.h"

#include <algorithm>

namespace halvora {

namespace {

constexpr double kNoticeMargin = 24;
constexpr double kNoSeatSmallestWidth = 220;
constexpr double kNoSeatLargestWidth = 280;
constexpr double kNoSeatHeight = 124;
constexpr double kLowLightHeight = 20;

Rect centred(Size container, double width, double height) {
  return {(container.width - width) / 2, (container.height - height) / 2, width, height};
}

}  // namespace

Rect frameOf(ViewId view, Size container) {
  const double inner = container.width - 2 * kNoticeMargin;
  switch (view) {
    case ViewId::mapNoSeatOverlayView:
    case ViewId::mapNoSeatOverlayLabel:
      return centred(container, std::clamp(inner, kNoSeatSmallestWidth, kNoSeatLargestWidth),
                     kNoSeatHeight);
    case ViewId::lowLightHintLabel:
      return centred(container, inner, kLowLightHeight);
    default:
      return {0, 0, container.width, container.height};
  }
}

}  // namespace halvora
