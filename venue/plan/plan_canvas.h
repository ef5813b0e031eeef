// SPDX-License-Identifier: Apache-2.0
// A picture to draw on with one shape, a line with round ends: without length it is a disc, and
// letters are made of it. Edges are smooth. Values, any thread.
#pragma once

#include <string_view>
#include <utility>

#include "halvora/colour.h"
#include "halvora/platform/image.h"

namespace halvora {

/// Pixels from the picture's left and top edge.
struct CanvasPoint {
  double x = 0;
  double y = 0;
};

class PlanCanvas {
 public:
  PlanCanvas(std::uint32_t width, std::uint32_t height, const Colour& background);

  void line(CanvasPoint from, CanvasPoint to, double radius, const Colour& colour);
  void disc(CanvasPoint centre, double radius, const Colour& colour) {
    line(centre, centre, radius, colour);
  }
  /// In capitals, on a rim of another colour that sets them off from what is below. What the font
  /// lacks is an empty box. UTF-8.
  void text(CanvasPoint topLeft, double height, std::string_view text, const Colour& colour,
            const Colour& rim);
  /// How wide a text is when it is so high.
  static double textWidth(std::string_view text, double height);

  Image finish() { return std::move(image_); }

 private:
  void strokes(CanvasPoint topLeft, double height, std::string_view text, double radius,
               const Colour& colour);

  Image image_;
};

}  // namespace halvora
