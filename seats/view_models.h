// SPDX-License-Identifier: Apache-2.0
// What a face draws of the seat screens: labels, buttons, alerts, fonts. Plain values that compare,
// so that a screen can tell whether anything visible changed. Points are the screen's, colours are
// the light's. Values, any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "halvora/colour.h"

namespace halvora {

/// Of the dark appearance: the seat screens write white on their background.
inline constexpr Colour kSystemBlue = colourOfBytes(10, 132, 255);
inline constexpr Colour kSystemGroupedBackground = kBlack;

constexpr Colour withAlpha(Colour colour, float alpha) {
  colour.alpha = alpha;
  return colour;
}

enum class FontWeight : std::uint8_t { regular, semibold, bold };

struct Font {
  /// Empty for the system's own font.
  std::string name;
  double size = 0;
  /// Of the system's own font; a named font has its weight in its name.
  FontWeight weight = FontWeight::regular;
  friend bool operator==(const Font&, const Font&) = default;
};

/// Whether the phone has a font of that name; supplied by the face. Absent: it has none.
using FontLookup = std::function<bool(std::string_view name)>;

/// The font of that name where there is one, else the system's of that weight.
inline Font fontNamed(std::string_view name, double size, FontWeight weight,
                      const FontLookup& hasFont) {
  if (!name.empty() && hasFont && hasFont(name)) {
    return {std::string(name), size, FontWeight::regular};
  }
  return {"", size, weight};
}

/// `natural` follows the direction of the user's language.
enum class TextAlignment : std::uint8_t { natural, left, center, right, justified };

struct Border {
  double width = 0;
  Colour colour = kWhite;
  friend bool operator==(const Border&, const Border&) = default;
};

struct Label {
  std::string text;
  Colour colour = kWhite;
  Font font;
  TextAlignment alignment = TextAlignment::natural;
  /// 0: as many as the text takes.
  int lines = 1;
  /// Of each line; 0: the font's own.
  double lineHeight = 0;
  bool hidden = false;
  double alpha = 1;
  /// None: clear.
  MaybeColour background;
  double cornerRadius = 0;
  Border border;
  friend bool operator==(const Label&, const Label&) = default;
};

struct Button {
  std::string title;
  Colour titleColour = kWhite;
  Font font;
  bool hidden = false;
  bool enabled = true;
  double alpha = 1;
  /// None: clear.
  MaybeColour background;
  double cornerRadius = 0;
  double height = 0;
  friend bool operator==(const Button&, const Button&) = default;
};

/// One button, which only dismisses it.
struct Alert {
  std::string title;
  std::string message;
  std::string button;
  friend bool operator==(const Alert&, const Alert&) = default;
};

}  // namespace halvora
