// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/plan_canvas.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace halvora {

namespace {

// A letter lies on 5 by 7 points; the next one begins 6.5 points further on.
constexpr double kLetterHeight = 6;
constexpr double kAdvance = 6.5;
constexpr double kLetterWidth = 4;

struct Glyph {
  char character;
  /// Lines through points, each a column and a row; a blank lifts the pen.
  std::string_view strokes;
};

constexpr Glyph kGlyphs[] = {
    {'A', "062046 1434"},
    {'B', "00063645443303 0030414233"},
    {'C', "4130100105163645"},
    {'D', "00062644422000"},
    {'E', "40000646 0333"},
    {'F', "400006 0333"},
    {'G', "41301001051636454323"},
    {'H', "0006 4046 0343"},
    {'I', "1030 2026 1636"},
    {'J', "4045361605"},
    {'K', "0006 400346"},
    {'L', "000646"},
    {'M', "0600234046"},
    {'N', "06004640"},
    {'O', "103041453616050110"},
    {'P', "06003041423303"},
    {'Q', "103041453616050110 2446"},
    {'R', "06003041423303 2346"},
    {'S', "413010010213334445361605"},
    {'T', "0040 2026"},
    {'U', "000516364540"},
    {'V', "002640"},
    {'W', "0016233640"},
    {'X', "0046 4006"},
    {'Y', "002340 2326"},
    {'Z', "00400646"},
    {'0', "103041453616050110 2323"},
    {'1', "112026 1636"},
    {'2', "01103041420646"},
    {'3', "01103041423313 334445361605"},
    {'4', "36300444"},
    {'5', "400003334445361605"},
    {'6', "4130100105163645443303"},
    {'7', "004016"},
    {'8', "103041423313020110 3344453616050413"},
    {'9', "43130201103041453616"},
    {'-', "1333"},
    {'+', "1333 2224"},
    {'.', "2626"},
    {',', "2516"},
    {':', "2222 2525"},
    {'/', "0640"},
    {'(', "30212536"},
    {')', "10212516"},
    {'#', "1016 3036 0242 0444"},
    {'&', "460201102031220405162644"},
    {'\'', "2021"},
    {' ', ""},
};
constexpr std::string_view kBox = "0040460600";

// Latin letters with marks, from U+00C0 on, as the letters that they are written on; the small ones
// follow in the same order.
constexpr std::string_view kLatin = "AAAAAAACEEEEIIIIDNOOOOOxOUUUUYTS";

std::string_view strokesOf(char character) {
  const auto* glyph = std::find_if(std::begin(kGlyphs), std::end(kGlyphs),
                                   [&](const Glyph& its) { return its.character == character; });
  return glyph != std::end(kGlyphs) ? glyph->strokes : kBox;
}

// The characters of a text, each as one of the font's, or 0.
std::string lettersOf(std::string_view text) {
  std::string letters;
  for (std::size_t at = 0; at < text.size(); ++at) {
    const auto byte = static_cast<unsigned char>(text[at]);
    const bool isContinued = (byte & 0xC0) == 0x80;
    if (isContinued) continue;
    if (byte == 0xC3 && at + 1 < text.size()) {
      letters += kLatin[static_cast<unsigned char>(text[at + 1]) & 0x1F];
    } else if (byte >= 'a' && byte <= 'z') {
      letters += static_cast<char>(byte - 'a' + 'A');
    } else {
      letters += byte < 0x80 ? text[at] : '\0';
    }
  }
  return letters;
}

std::uint8_t mixed(std::uint8_t below, float level, double share) {
  const double above = static_cast<double>(level) * 255;
  return static_cast<std::uint8_t>(std::lround(below + (above - below) * share));
}

double squaredDistance(CanvasPoint from, CanvasPoint to) {
  return (to.x - from.x) * (to.x - from.x) + (to.y - from.y) * (to.y - from.y);
}

// How far a point is from the line between two others.
double distanceFrom(CanvasPoint from, CanvasPoint to, CanvasPoint point) {
  const double length = squaredDistance(from, to);
  double share = 0;
  if (length > 0) {
    const double along =
        (point.x - from.x) * (to.x - from.x) + (point.y - from.y) * (to.y - from.y);
    share = std::clamp(along / length, 0.0, 1.0);
  }
  const CanvasPoint nearest{from.x + (to.x - from.x) * share, from.y + (to.y - from.y) * share};
  return std::sqrt(squaredDistance(nearest, point));
}

// The whole pixels, as far as the picture goes, that lie between two places.
struct PixelRange {
  std::uint32_t first;
  std::uint32_t end;

  PixelRange(double from, double to, std::uint32_t limit)
      : first(within(std::floor(from), limit)), end(within(std::ceil(to), limit)) {}

  static std::uint32_t within(double place, std::uint32_t limit) {
    return static_cast<std::uint32_t>(std::clamp(place, 0.0, static_cast<double>(limit)));
  }
};

}  // namespace

PlanCanvas::PlanCanvas(std::uint32_t width, std::uint32_t height, const Colour& background)
    : image_{width, height, std::vector<std::uint8_t>(std::size_t{width} * height * 4)} {
  const std::array<std::uint8_t, 4> pixel = {mixed(0, background.red, 1),
                                             mixed(0, background.green, 1),
                                             mixed(0, background.blue, 1), 255};
  for (std::size_t at = 0; at < image_.rgba.size(); ++at) image_.rgba[at] = pixel[at % 4];
}

void PlanCanvas::line(CanvasPoint from, CanvasPoint to, double radius, const Colour& colour) {
  const double reach = radius + 1;
  const PixelRange columns(std::min(from.x, to.x) - reach, std::max(from.x, to.x) + reach,
                           image_.width);
  const PixelRange rows(std::min(from.y, to.y) - reach, std::max(from.y, to.y) + reach,
                        image_.height);
  for (std::uint32_t y = rows.first; y < rows.end; ++y) {
    for (std::uint32_t x = columns.first; x < columns.end; ++x) {
      const double distance = distanceFrom(from, to, {x + 0.5, y + 0.5});
      const double share = std::clamp(radius + 0.5 - distance, 0.0, 1.0);
      if (share == 0) continue;
      std::uint8_t* pixel = &image_.rgba[(std::size_t{y} * image_.width + x) * 4];
      pixel[0] = mixed(pixel[0], colour.red, share);
      pixel[1] = mixed(pixel[1], colour.green, share);
      pixel[2] = mixed(pixel[2], colour.blue, share);
    }
  }
}

void PlanCanvas::text(CanvasPoint topLeft, double height, std::string_view text,
                      const Colour& colour, const Colour& rim) {
  const double radius = height / 14;
  strokes(topLeft, height, text, radius * 3, rim);
  strokes(topLeft, height, text, radius, colour);
}

double PlanCanvas::textWidth(std::string_view text, double height) {
  const std::size_t count = lettersOf(text).size();
  if (count == 0) return 0;
  const double points = static_cast<double>(count - 1) * kAdvance + kLetterWidth;
  return points * height / kLetterHeight;
}

void PlanCanvas::strokes(CanvasPoint topLeft, double height, std::string_view text, double radius,
                         const Colour& colour) {
  const double step = height / kLetterHeight;
  double left = topLeft.x;
  for (const char letter : lettersOf(text)) {
    const std::string_view glyph = strokesOf(letter);
    const auto pointAt = [&](std::size_t at) {
      return CanvasPoint{left + (glyph[at] - '0') * step, topLeft.y + (glyph[at + 1] - '0') * step};
    };
    for (std::size_t at = 0; at + 3 < glyph.size(); at += 2) {
      if (glyph[at + 2] != ' ') {
        line(pointAt(at), pointAt(at + 2), radius, colour);
      } else {
        ++at;
      }
    }
    left += kAdvance * step;
  }
}

}  // namespace halvora
