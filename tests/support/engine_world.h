// SPDX-License-Identifier: Apache-2.0
// A whole engine on a phone in memory, everything that can happen around it as one call each, and
// the rules that hold after every turn whatever happens: timers bounded, levels in range, nothing
// emitted outside the venue, a dropped show leaves what a fresh engine has. The fuzz target and the
// soak drive it. Owned by whoever drives it; one thread.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/support/pixmap_decoder.h"

namespace halvora {

class EngineWorld {
 public:
  /// What the host does when it is told that a show starts or stops.
  enum class Host : std::uint8_t { absent, listens, replacesItself, changesList, precomputes };
  enum class Clip : std::uint8_t { absent, whole, damaged, empty, unreadable };

  static constexpr int kVenue = 7;
  static constexpr int kMaps = 3;
  /// An engine that is started again has a second set of timers; a host that does it without end is
  /// no fault of the radio's.
  static constexpr int kMostStarts = 3;

  explicit EngineWorld(std::uint64_t chance, bool hasTorch = true);
  ~EngineWorld();
  EngineWorld(const EngineWorld&) = delete;
  EngineWorld& operator=(const EngineWorld&) = delete;

  /// The application begins to listen; nothing any more after the last of its starts.
  void start();
  /// The process ends and begins anew on the same phone. It is not started yet.
  void beginAnew();
  void pass(Duration span);

  void hear(std::span<const std::uint8_t> manufacturerData);
  void hear(const Broadcast& look);
  void hearNothing();

  void becomeActive();
  void resignActive();
  void turnPhone();
  void sit(std::int64_t x, std::int64_t y, const std::string& section);
  /// Somebody else's write; no value removes the key.
  void write(const std::string& key, std::optional<DefaultsValue> value);
  void setRadio(CentralState state);
  void setPermission(BluetoothAuthorization authorization);
  void setHost(Host host);
  void allow(std::vector<std::string> transmitters);
  /// The video of a map, 1 to kMaps.
  void putClip(int map, Clip clip);
  void putStill(int map, int frame, bool isWhite);
  void removeStills();
  void precompute(int venue, std::int64_t x, std::int64_t y);
  void invalidate(int venue);
  void playVideo(const std::string& name);
  void layOut(double width, double height);
  /// The user's own hand on the screen's level, and the day that the clock says.
  void dim(double level);
  void jumpClock(double seconds);

  /// Ends all faults and whatever is going on, waits until only an idle engine is left, and
  /// compares it with a fresh one: what is in its state, and what a look then makes of both.
  void settle();

  /// The first rule that was broken, with the time; empty while all hold.
  const std::string& complaint() const { return complaint_; }
  const ShowEngine& engine() const { return *engine_; }
  /// For tests of the rules: what breaks them.
  const Platform& platform() const { return *platform_; }
  ViewStack& views() { return engine_->views(); }
  Duration now() const { return phone_.loop.now(); }
  std::uint64_t turns() const { return phone_.loop.turns(); }
  std::size_t pendingTimers() const { return phone_.loop.pending(); }

 private:
  class WatchedScreen;
  class WatchedTorch;
  class WatchedHaptics;
  struct Picture;

  /// An engine that is being made, or is gone, is in no venue.
  bool isInside() const { return engine_ != nullptr && engine_->isInsideVenue(); }
  template <class Act>
  void act(const Act& act);
  void require(bool isTrue, const char* rule);
  std::unique_ptr<const Platform> watchedPlatform();
  void makeEngine();
  void checkTurn();
  void checkLevels();
  void checkState();
  void checkEmission();
  void checkTimers();
  void checkReset(std::size_t freshTimers);
  void noteLook(const Broadcast& look);
  Picture pictureOfProbe();

  ExactJsonReader json_;
  PixmapDecoder images_;
  VirtualPhone phone_;
  std::unique_ptr<WatchedScreen> screen_;
  std::unique_ptr<WatchedTorch> torch_;
  std::unique_ptr<WatchedHaptics> haptics_;
  std::unique_ptr<const Platform> platform_;
  std::unique_ptr<ShowEngine> engine_;
  bool hasTorch_;
  int starts_ = 0;
  std::string complaint_;

  bool wasInside_ = false;
  /// Until then the light may still fade although the venue was left.
  Duration mayFadeUntil_{};
  /// Until then a timer of a random torch mode that a later one has replaced may still act.
  Duration mayFlickerUntil_{};
  /// Looks since the last change of half, and in the half before: what they began may be pending.
  Duration half_{};
  std::size_t looks_ = 0;
  std::size_t looksBefore_ = 0;
};

}  // namespace halvora
