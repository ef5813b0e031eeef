// SPDX-License-Identifier: Apache-2.0
// Measures flashes in light, as WCAG 2.2 defines them: pairs of opposing changes of relative
// luminance by a tenth or more whose darker side is below 0.8 (general), and of a saturated red
// against colours that are more than 0.2 from it in u'v' (red). ITU-R BT.1702 comes to the same
// figures on a screen whose white is 200 cd/m². Has nothing in common with the limiter whose work
// it judges. Values; one thread at a time.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "halvora/platform/time.h"

namespace halvora {

/// Linear light, each 0 to 1.
struct LinearColour {
  double red = 0;
  double green = 0;
  double blue = 0;
  friend bool operator==(const LinearColour&, const LinearColour&) = default;
};

/// An sRGB level, 0 to 1, as linear light.
double linearOfLevel(double level);
/// Relative luminance of sRGB primaries, 0 to 1.
double relativeLuminance(const LinearColour& colour);

/// The most flashes in any second, and when the first such second begins.
struct FlashFigure {
  int flashes = 0;
  Duration at{};

  /// The worse of both; of equals the one that comes first.
  void take(const FlashFigure& other);
  friend bool operator==(const FlashFigure&, const FlashFigure&) = default;
};

struct FlashFigures {
  FlashFigure general;
  FlashFigure red;

  void take(const FlashFigures& other);
  /// Fewer than four of either in every second.
  bool areHarmless() const;
  /// The second that a person should look at.
  Duration at() const;
  friend bool operator==(const FlashFigures&, const FlashFigures&) = default;
};

/// How many flashes the worst second has that a moment lies in, tenth by tenth of a second.
class FlashCurve {
 public:
  static constexpr Duration kStep = milliseconds(100);

  struct Point {
    std::uint8_t general = 0;
    std::uint8_t red = 0;
  };

  void addGeneral(Duration from, Duration to, int flashes);
  void addRed(Duration from, Duration to, int flashes);
  void take(const FlashCurve& other);
  const std::vector<Point>& points() const { return points_; }

 private:
  void add(std::uint8_t Point::*what, Duration from, Duration to, int flashes);

  std::vector<Point> points_;
};

/// The times of opposing changes, of which two make a flash.
class ChangeRow {
 public:
  /// More in a second count as so many.
  static constexpr std::size_t kMost = 254;

  void add(Duration time);
  const FlashFigure& worst() const { return worst_; }
  /// Of the second that ends with the latest change: when it begins, and its flashes.
  Duration begin() const { return times_.front(); }
  int flashes() const { return static_cast<int>(times_.size() / 2); }

 private:
  std::vector<Duration> times_;
  FlashFigure worst_;
};

/// What one eye sees.
class EyeMeter {
 public:
  /// Light of no more than that luminance has no colour for this eye.
  explicit EyeMeter(double darkUpTo = 0) : darkUpTo_(darkUpTo) {}

  /// Times only go forward. `curve` is told of each change, and may be null.
  void add(Duration time, const LinearColour& colour, FlashCurve* curve = nullptr);
  FlashFigures worst() const { return {general_.worst(), red_.worst()}; }

 private:
  struct Place {
    double u = 0;
    double v = 0;
    bool isDark = false;
  };
  /// The outermost of the colours seen since the last change, in each direction, and darkness.
  struct Places {
    std::array<Place, 4> outer{};
    bool isAny = false;
    bool hasDark = false;

    void add(const Place& place);
    bool anyFarFrom(const Place& place) const;
  };

  void addLuminance(Duration time, double luminance, FlashCurve* curve);
  void addColour(Duration time, const LinearColour& colour, FlashCurve* curve);

  double darkUpTo_;
  bool hasBegun_ = false;
  LinearColour last_;
  /// Of the luminance since the last change. The last change went up: 1, down: -1, none yet: 0.
  double low_ = 0;
  double high_ = 0;
  int direction_ = 0;
  ChangeRow general_;
  /// The last change led to a red: 1, away from one: -1, none yet: 0.
  int redness_ = 0;
  Places reds_;
  Places others_;
  ChangeRow red_;
};

/// What a phone emits: its screen, backlight included, and its torch, whose light has luminance 1.
struct PhoneLight {
  LinearColour screen;
  bool torch = false;
  friend bool operator==(const PhoneLight&, const PhoneLight&) = default;
};

/// One phone for three eyes: one sees its screen, one its torch, and one both.
class PhoneMeter {
 public:
  void add(Duration time, const PhoneLight& light, FlashCurve* curve = nullptr);
  FlashFigures worst() const;

 private:
  struct Lit {
    EyeMeter torch;
    EyeMeter both;
  };

  EyeMeter screen_;
  /// Null until the torch has been lit for the first time: both are the screen until then.
  std::unique_ptr<Lit> lit_;
};

/// What an eye sees of both.
LinearColour lightOf(const PhoneLight& light);

}  // namespace halvora
