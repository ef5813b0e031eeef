// SPDX-License-Identifier: Apache-2.0
// What leaves a phone at a moment, as far as eyes are concerned: the mean of its screen, the
// backlight behind that, and the torch; and what it is as light. Values, any thread.
#pragma once

namespace halvora {

/// sRGB levels, each 0 to 1.
struct Levels {
  double red = 0;
  double green = 0;
  double blue = 0;
  friend bool operator==(const Levels&, const Levels&) = default;
};

struct Emission {
  /// The mean over the screen of the picture, before the backlight.
  Levels screen;
  /// 0 to 1.
  double backlight = 0;
  bool torch = false;
  friend bool operator==(const Emission&, const Emission&) = default;
};

/// The same phone without any light.
constexpr Emission darkness(const Emission& emission) { return {{}, emission.backlight, false}; }

/// Linear light, each channel 0 to 1.
struct LinearLight {
  double red = 0;
  double green = 0;
  double blue = 0;

  bool isDark() const { return red <= 0 && green <= 0 && blue <= 0; }
  /// Relative, with sRGB's primaries: 0 to 1.
  double luminance() const { return 0.2126 * red + 0.7152 * green + 0.0722 * blue; }
};

inline constexpr LinearLight kTorchLight{1, 1, 1};

/// Of the screen alone, backlight included.
LinearLight screenLight(const Emission& emission);

/// CIE 1976 u'v'; of darkness, which has none, nothing that means anything.
struct Chromaticity {
  double u = 0;
  double v = 0;
};
Chromaticity chromaticityOf(const LinearLight& light);

}  // namespace halvora
