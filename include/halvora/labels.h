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

/// How bold a font is, from `regular` by `semibold` to `bold`.
enum class FontWeight : std::uint8_t { regular, semibold, bold };

/// A font as a view asks for it.
struct Font {
  /// Empty for the system's own font.
  std::string name;
  /// In points; 0 for the system's own size.
  double size = 0;
  /// Of the system's own font; a named font has its weight in its name.
  FontWeight weight = FontWeight::regular;
  friend bool operator==(const Font&, const Font&) = default;
};

/// Whether the phone has a font of that name; supplied by the face. Absent: it has none.
using FontLookup = std::function<bool(std::string_view name)>;

/// How lines lie in their view: `natural` begins them on the side where the user's language begins,
/// `left`, `center` and `right` are sides, and `justified` lines fill the width but for the last.
enum class TextAlignment : std::uint8_t { natural, left, center, right, justified };

/// A line around a view.
struct Border {
  double width = 0;        ///< In points, within the view's frame; 0 for no line.
  Colour colour = kWhite;  ///< Of the line.
  friend bool operator==(const Border&, const Border&) = default;
};

/// What is hidden takes no room, what has alpha 0 does.
struct Label {
  /// UTF-8, as all texts.
  std::string text;
  Colour colour = kWhite;                            ///< Of the letters.
  Font font;                                         ///< Of the whole text.
  TextAlignment alignment = TextAlignment::natural;  ///< Of its lines within the label.
  /// 0: as many as the text takes.
  int lines = 1;
  /// Of each line, in points; 0: the font's own.
  double lineHeight = 0;
  bool hidden = false;  ///< Not there, for eyes and for a screen reader.
  double alpha = 1;     ///< Of text, background and border, 0 to 1.
  /// None: clear.
  MaybeColour background;
  double cornerRadius = 0;  ///< Of background and border, in points.
  Border border;            ///< None unless it has a width.
  friend bool operator==(const Label&, const Label&) = default;
};

/// A button as it is to be seen.
struct Button {
  std::string title;            ///< UTF-8; also what a screen reader says.
  Colour titleColour = kWhite;  ///< Of its letters.
  Font font;                    ///< Of the title.
  bool hidden = false;          ///< Not there, and takes no room.
  bool enabled = true;          ///< False: is seen, and does nothing when it is pressed.
  double alpha = 1;             ///< Of title and background, 0 to 1.
  /// None: clear.
  MaybeColour background;
  double cornerRadius = 0;  ///< Of the background, in points.
  /// In points, at least: a title that needs more room has it.
  double height = 0;
  friend bool operator==(const Button&, const Button&) = default;
};

/// One button, which only dismisses it.
struct Alert {
  std::string title;    ///< What has happened.
  std::string message;  ///< What that means, and what to do.
  std::string button;   ///< The title of the one button.
  friend bool operator==(const Alert&, const Alert&) = default;
};

/// Fills arguments into a format of a string table. "%@", "%ld" and their kin take the arguments in
/// turn, "%2$@" takes the second; "%%" is a percent sign. A place without an argument stays empty,
/// an argument without a place is left out, anything else stands as it is written.
std::string formatted(std::string_view format, std::initializer_list<std::string_view> arguments);

}  // namespace v0
}  // namespace halvora
