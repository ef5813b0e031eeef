// SPDX-License-Identifier: Apache-2.0
// What a face draws of the seat screens: labels, buttons, alerts and their fonts. Plain values that
// compare, so that a screen can tell whether anything visible changed. Lengths are points of the
// screen. Values, any thread.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <string>
#include <string_view>

#include "halvora/colour.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// Of the dark appearance: the seat screens write white on their background.
inline constexpr Colour kSystemBlue = colourOfBytes(10, 132, 255);

/// How bold a font is.
enum class FontWeight : std::uint8_t { regular, semibold, bold };

/// A font as a view asks for it.
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

/// `natural` follows the direction of the user's language.
enum class TextAlignment : std::uint8_t { natural, left, center, right, justified };

/// A line around a view.
struct Border {
  double width = 0;
  Colour colour = kWhite;
  friend bool operator==(const Border&, const Border&) = default;
};

/// What is hidden takes no room, what has alpha 0 does.
struct Label {
  /// UTF-8, as all texts.
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

/// A button as it is to be seen.
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
  /// At least: a title that needs more room has it.
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

/// Fills arguments into a format of a string table. "%@", "%ld" and their kin take the arguments in
/// turn, "%2$@" takes the second; "%%" is a percent sign. A place without an argument stays empty,
/// an argument without a place is left out, anything else stands as it is written.
std::string formatted(std::string_view format, std::initializer_list<std::string_view> arguments);

}  // namespace v0
}  // namespace halvora
