// SPDX-License-Identifier: Apache-2.0
// Measures flashes in light, as WCAG 2.2 defines them: pairs of opposing changes of relative
// luminance by a tenth or more whose darker side is below 0.8 (general), and of a saturated red
// against colours that are more than 0.2 from it in u'v' (red). ITU-R BT.1702 comes to the same
// figures on a screen whose white is 200 cd/m². Has nothing in common with the limiter whose work
// it judges. Values; one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
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

/// What one eye sees, second by second: each second is counted from the light that it begins with,
/// however long that has been there, and knows nothing of what was before.
class EyeMeter {
 public:
  /// A second with more than so many different lights counts from the last of them only.
  static constexpr std::size_t kMostLights = 1024;

  /// Light of no more than that luminance has no colour for this eye.
  explicit EyeMeter(double darkUpTo = 0) : darkUpTo_(darkUpTo) {}

  /// Times only go forward. `curve` is told of each change, and may be null.
  void add(Duration time, const LinearColour& colour, FlashCurve* curve = nullptr);
  FlashFigures worst() const { return {general_, red_}; }

 private:
  struct Seen {
    Duration time{};
    double luminance = 0;
    /// The colour's place in the CIE 1976 diagram; of darkness nothing.
    double u = 0;
    double v = 0;
    /// Rises and falls since the first light, each however long, and how often it has become red or
    /// ceased to be, both counted round: no second has more changes than it has of these.
    std::uint16_t runs = 0;
    std::uint16_t crossings = 0;
    /// The luminance has risen to here: 1, fallen: -1, neither since the first light: 0.
    std::int8_t way = 0;
    bool isDark = false;
    bool isRed = false;
  };
  using Second = std::span<const Seen>;
  /// The longest row of changes that go to and fro by turns.
  struct Changes {
    int count = 0;
    Duration first{};
    Duration last{};

    void add(Duration time);
    int flashes() const { return count / 2; }
  };

  Seen seenOf(Duration time, const LinearColour& colour) const;
  void remember(Seen seen);
  void forget(Duration before);
  /// The second that ends with the latest light, and the light that it begins with.
  Second second() const { return Second(lights_).subspan(begin_); }
  static bool isRedChange(const Seen& one, const Seen& other);
  static Changes generalChanges(Second second);
  static Changes redChanges(Second second);

  double darkUpTo_;
  LinearColour last_;
  std::vector<Seen> lights_;
  std::size_t begin_ = 0;
  FlashFigure general_;
  FlashFigure red_;
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
