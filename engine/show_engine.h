// SPDX-License-Identifier: Apache-2.0
// The show engine behind its public face: owns the rooms' objects and wires them. Simulations, of
// which a process has tens of thousands, use it directly. Main thread only.
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/broadcast.h"
#include "engine/engine_state.h"
#include "engine/guarded_needs.h"
#include "engine/scanner.h"
#include "engine/show_assets.h"
#include "engine/steps.h"
#include "halvora/engine.h"
#include "halvora/platform/application.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/witness.h"
#include "light/brightness.h"
#include "light/gobo_animator.h"
#include "light/light_guard.h"
#include "light/notices.h"
#include "light/screen_modes.h"
#include "light/synchronised_video.h"
#include "light/torch_modes.h"
#include "light/view_stack.h"
#include "pixelmap/pixel_map_seat_luts.h"
#include "pixelmap/still_source.h"
#include "usage/usage_pings.h"

namespace halvora {

struct ShowEngineOptions : EngineOptions {
  /// What many engines of one process share instead of each reading its own: what a show takes from
  /// the bundles, and ready seat tables and stills, which must outlive the engine. Null: its own.
  std::shared_ptr<const ShowAssets> assets = nullptr;
  const SeatLutSource* seatLuts = nullptr;
  const StillSource* stills = nullptr;
  PictureMeans* pictures = nullptr;
  /// Whether `setAir` may be called, as a host may; a simulation knows its air beforehand.
  bool mayChangeAir = false;
};

class ShowEngine : private ScannerListener,
                   private SeatSight,
                   private SeatLutListener,
                   private ApplicationObserver {
 public:
  /// The needs of the platform, and the parts where given, must outlive it.
  explicit ShowEngine(const Platform& platform, ShowEngineOptions options = {},
                      std::optional<ShowParts> parts = std::nullopt);
  ~ShowEngine() override;
  ShowEngine(const ShowEngine&) = delete;
  ShowEngine& operator=(const ShowEngine&) = delete;

  /// Builds what the show needs: palettes, queues, views and the notices' timer. Once, before
  /// anything else.
  void viewDidLoad();
  /// Fits the view to its superview's bounds; to nothing when it has none.
  void viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds);
  const Rect& frame() const { return frame_; }

  /// Begins to listen if the user has allowed Bluetooth; otherwise only the status text says that
  /// it is not allowed.
  void start() { scanner_.start(); }
  /// Begins to listen, asking the user for permission where that is open. Each call starts the four
  /// timers anew.
  void initBluetoothPermission() { scanner_.initBluetoothPermission(); }
  bool isPermissionGranted() const { return scanner_.isPermissionGranted(); }
  bool isInsideVenue() const { return state_.presence.insideVenue; }
  bool prefersStatusBarHidden() const { return state_.isStatusBarHidden; }

  /// Who keeps the address of an engine that others may destroy has a `Witness` of this.
  Witnessed& life() { return life_; }

  /// Called on every change of mode or speed to a mode other than 0, in the middle of the look. May
  /// stay absent, may be replaced and may destroy the engine within a call, and may ask anything of
  /// it.
  std::function<void()>& lightShowStartedCallback() { return callbacks().lightShowStarted; }
  /// Called on every change of speed or mode to mode 0, as above.
  std::function<void()>& lightShowStoppedCallback() { return callbacks().lightShowStopped; }
  /// The transmitter keys ("application:number") to obey; none means all.
  void setAllowedTransmitterIds(std::vector<std::string> ids) {
    scanner_.setAllowedTransmitterIds(std::move(ids));
  }
  const std::vector<std::string>& allowedTransmitterIds() const {
    return scanner_.allowedTransmitterIds();
  }
  /// Whether the usage counters are sent, for a host that asks its user. Switching them off gives
  /// up those under way; while they are off nothing is counted, nor noted in the defaults.
  bool usageReports() const { return usageReports_; }
  void setUsageReports(bool isOn);
  /// What the host allows the show to do to eyes, and what whoever holds the phone, or the system
  /// for them, allows of that. Both hold.
  void setLimits(const LightLimits& limits);
  const LightLimits& limits() const { return hostLimits_; }
  void setViewerLimits(const LightLimits& limits);
  const LightLimits& viewerLimits() const { return viewerLimits_; }
  /// Whoever holds the phone has had enough, until they come back.
  void leave() { guard_.leave(brightness_.originalBrightness()); }
  /// The mean of what is on the screen now, in levels before the backlight.
  Levels shownScreen() { return guard_.shownScreen(); }
  LightGuard& guard() { return guard_; }
  /// The kit's own text for a key, or `fallback` when its table has none.
  std::string hvLocalizedStringForKey(std::string_view key, std::string_view fallback) const;

  /// Shows a look, as if it had just been heard and were new. `failed` where memory is short: some
  /// of it may be shown then, and the next one is shown whole. `engineGone` if a callback destroyed
  /// the engine.
  PacketFate processEffect(const Broadcast& broadcast) override;
  /// One of the 18 in which a look is processed.
  struct Step {
    const char* name;
    void (*run)(ShowEngine& engine, Command& command);
  };
  static const std::array<Step, 18>& steps();

  void playVideo(const std::string& name) { parts_.video.playVideo(name); }

  /// Builds the seat's table for every pixel map of the venue that has none yet, in the background.
  /// `progress` is told of each map, `completion` once at the end; (0, 0) where there is nothing to
  /// do. Either may be absent, is called in a turn of its own, and may destroy the engine. A newer
  /// call, and invalidation, end this one at its next map: its completion is never called then.
  void precomputePixelMapLUTsForVenueId(std::int64_t venueId, std::int64_t seatX,
                                        std::int64_t seatY, PrecomputeProgress progress = {},
                                        PrecomputeCompletion completion = {}) {
    seatLut_.precomputePixelMapLUTsForVenueId(venueId, {seatX, seatY}, std::move(progress),
                                              std::move(completion));
  }
  /// Forgets all tables in memory, and deletes those of the venue.
  void invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId) {
    seatLut_.invalidatePixelMapSeatLUTCacheForVenueId(venueId);
  }
  /// Another number with each precompute that has maps to go through and with each invalidation,
  /// whoever asked for it: what was begun under an earlier one has been given up.
  std::uint64_t pixelMapPrecomputeGeneration() const { return seatLut_.precomputeGeneration(); }
  /// Whether a precompute has been begun that has neither ended nor been given up.
  bool isPrecomputingPixelMapLUTs() const { return seatLut_.isPrecomputing(); }

  void handleOrientationChange() override {}
  void appDidBecomeActive() override;
  void appWillResignActive() override;

  ViewStack& views() { return views_; }
  const ViewStack& views() const { return views_; }
  const EngineState& state() const { return state_; }
  const std::vector<Palette>& palettes() const { return assets_->palettes; }
  BrightnessRamps& brightness() { return brightness_; }
  Scanner& scanner() { return scanner_; }
  const PixelMapSeatLuts& seatLuts() const { return seatLut_; }
  const ScanDiagnostics& diagnostics() const { return scanner_.diagnostics(); }
  /// What is believed of the air from now on; only of an engine that may change it.
  void setAir(const AirOptions& air);
  /// Told in a turn of its own; may destroy the engine.
  std::function<void(AirTrust)>& airTrustCallback() { return callbacks().airTrust; }
  AirTrust airTrust() const;
  /// Told in a turn of its own that `isInsideVenue` or `isPermissionGranted` may have changed, for
  /// as long as the answer is kept; may destroy the engine.
  std::shared_ptr<const void> watchPresence(std::function<void()> callback);
  AirDiagnostics airDiagnostics() const;
  /// Where the application's own files lie; empty for nowhere.
  const std::string& getPrivateDocumentsDirectory() const { return platform_.bundles->documents; }
  /// Name of the folder with a venue's downloaded content; empty for none.
  const std::string& pairedBucketID() const { return pairedBucketID_; }

 private:
  void recievedSignal() override;
  void showReceptionRate(int packets) override;
  void dropShow() override;
  void videoReady() override { state_.video.videoCanPlay = true; }
  PacketFate contestBegan(const Broadcast* undisputed) override;
  void contestEnded() override;
  void airTrustChanged() override;
  void presenceChanged() override;
  ShowCallbacks& callbacks();
  SharedText goboDocuments() const;
  SeatLight seatLight() override;
  std::optional<bool> seatIsWhite() override;
  int currentVideoMinutes() const override { return state_.seat.currentVideoMinutes; }
  void refreshMode21ColorIfNeeded() override;
  bool hasSeat() const;
  ShowStage stage();
  bool isGuarded() const { return guarded_ && guarded_->isBounded(); }

  /// Null where the air is taken exactly for ever. What is bounded is used below, by way of the
  /// platform.
  std::unique_ptr<GuardedNeeds> guarded_;
  Platform platform_;
  EngineState state_;
  /// Null until the host asks for one.
  std::unique_ptr<ShowCallbacks> callbacks_;
  bool hasOwnAssets_;
  bool usageReports_;
  std::shared_ptr<const ShowAssets> assets_;
  const StillSource* stills_;
  std::string pairedBucketID_;
  Rect frame_;
  TimerSet timers_;
  ViewStack views_;
  LightLimits hostLimits_;
  LightLimits viewerLimits_;
  LightGuard guard_;
  Notices notices_;
  TorchModes torch_;
  GoboAnimator gobo_;
  SynchronisedVideo video_;
  PixelMapSeatLuts seatLut_;
  ShowParts parts_;
  BrightnessRamps brightness_;
  ScreenModes modes_;
  UsagePings usage_;
  Scanner scanner_;
  TimerId lowLightHintTimer_ = 0;
  std::unique_ptr<SerialQueue> pixelMapLUTDecodeQueue_;
  std::unique_ptr<SerialQueue> pixelMapLiveDecodeQueue_;
  Witnessed life_;
};

}  // namespace halvora
