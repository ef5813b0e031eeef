// SPDX-License-Identifier: Apache-2.0
// What a face draws: an engine's light at this moment as a flat list from bottom to top, most often
// one plain colour, and a word whenever it may have become another. Main thread; the values may go
// to any.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "halvora/colour.h"
#include "halvora/platform/screen.h"
#include "halvora/version.h"

namespace halvora {
class ViewStack;

inline namespace HALVORA_PUBLIC v0 {

/// What a display item is: a `fill` of one colour, a `text`, an `image` to be read, or the `video`
/// of a player of clips.
enum class ViewContent : std::uint8_t { fill, text, image, video };

/// The names under which the two players of clips are listed.
inline constexpr const char* kClipA = "playerViewA";
/// See `kClipA`.
inline constexpr const char* kClipB = "playerViewB";

/// One thing to draw, over those before it.
struct DisplayItem {
  /// Which of the members below count.
  ViewContent content = ViewContent::fill;
  /// In the container's coordinates, in points.
  Rect frame;
  /// Of the fill or the text; of an image or a clip, what each of its channels is multiplied with.
  /// Opaque: what a colour lets through is in the opacity.
  Colour colour;
  /// Over what lies below: 0 clear to 1.
  double opacity = 1;
  /// The label's text, the picture's name for `Pictures`, or that of the view a clip is played in.
  std::string text;
  /// Points; 0 without text.
  double fontSize = 0;

  friend bool operator==(const DisplayItem&, const DisplayItem&) = default;
};

/// All that is to be seen, from bottom to top.
using DisplayList = std::vector<DisplayItem>;

/// Hears of a light. It is called in the middle of what the show does and must not destroy the
/// engine.
class LightObserver {
 public:
  virtual ~LightObserver() = default;
  /// It may look different from now on, or begin to move: a face asks for a frame.
  virtual void lightChanged() = 0;
  /// The engine is going: nothing of its light may be asked for any more.
  virtual void lightEnds() = 0;
};

/// One engine's light, as a handle that may be copied; the engine outlives its use.
class Light {
 public:
  /// Of a stack of views that lies outside of an engine, such as a simulated phone's.
  explicit Light(ViewStack& views) : views_(&views) {}

  /// What is to be seen in a container of that size, in points. Nothing that cannot be seen is
  /// listed; the first item, if there is one, is the light, over the whole container. Opacities of
  /// parent and child are multiplied, the light's black ground and the dimmer reckoned in.
  DisplayList displayList(Size container) const;
  /// Whether a later moment may show something else without a word to the observer.
  bool isAnimating() const;
  /// At most one, which takes itself off with null if it goes before the engine does.
  void setObserver(LightObserver* observer) const;

 private:
  ViewStack* views_;
};

}  // namespace v0
}  // namespace halvora
