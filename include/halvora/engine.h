// SPDX-License-Identifier: Apache-2.0
// The show engine: hears transmitters, obeys the newest look and renders it on the light, the
// screen and the phone. A process usually has one, `sharedInstance`; a program may make as many as
// it likes.
//
// Main thread only, but for `sharedInstance`. Nothing here waits for a disk, a network or another
// thread, but for the destructor, which waits for the frame that is being decoded. Every function
// may be called from within a callback, and the engine may be destroyed there, unless it says
// otherwise. None throws, but for want of memory.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "halvora/air.h"
#include "halvora/diagnostics.h"
#include "halvora/light.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/precompute.h"
#include "halvora/safety.h"
#include "halvora/usage.h"
#include "halvora/version.h"
#include "halvora/witness.h"

namespace halvora {
class ShowEngine;

inline namespace HALVORA_PUBLIC v0 {

class CentralManager;

/// What an engine is made with.
struct EngineOptions {
  /// Where the usage counters go; none are sent as it stands.
  UsageEndpoints usageEndpoints = {};
  /// Whether the usage counters are sent at all, from the start; `setUsageReports` changes it.
  bool usageReports = true;
  /// What the show may do to eyes, from the start; `setLimits` changes it.
  LightLimits limits = {};
  /// What the engine believes of the air; `exact` and without a key, unless the host asks for more.
  AirOptions air = {};
};

/// The engine: one phone of the audience, from the packets that it hears to the light it shows.
class HalvoraViewController {
 public:
  /// What a host is told by; on the main thread, and absent where it is empty.
  using Callback = std::function<void()>;
  using Progress = PrecomputeProgress;      ///< How far tables ahead of the show have come.
  using Completion = PrecomputeCompletion;  ///< That they have come to their end.

  /// The process's one engine. The first call makes it, on that platform, which must live as long
  /// as the process; later calls answer with the same engine whatever they hand in. It is never
  /// destroyed. Safe from any thread.
  static HalvoraViewController& sharedInstance(const Platform& platform,
                                               const EngineOptions& options = {});

  /// An engine of one's own; the needs of the platform must outlive it.
  explicit HalvoraViewController(const Platform& platform, const EngineOptions& options = {});
  ~HalvoraViewController();
  HalvoraViewController(const HalvoraViewController&) = delete;
  HalvoraViewController& operator=(const HalvoraViewController&) = delete;

  /// Builds what the show needs: palettes, queues, views and the notices' timer; reads a few files.
  /// Once, before anything else.
  void viewDidLoad();
  /// Fits the view to its superview's bounds, in points; to nothing when it has none.
  void viewWillLayoutSubviews(const std::optional<Rect>& superviewBounds);
  /// Where the view lies in its superview, in points; as it was laid out last.
  const Rect& frame() const;
  /// What a face draws.
  Light light();

  /// Begins to listen if the user has allowed Bluetooth; otherwise only the status text says that
  /// it is not allowed.
  void start();
  /// Begins to listen, asking the user for permission where that is open. Each call starts the four
  /// timers of listening anew.
  void initBluetoothPermission();
  /// Whether the user has allowed Bluetooth, as the radio says at this moment.
  bool isPermissionGranted() const;
  /// Whether a transmitter that is obeyed was heard within the last seconds.
  bool isInsideVenue() const;
  /// The screen mode that is shown, 0 for none: that of the look in force, or the pixel map's in
  /// its place. A change of it calls one of the two callbacks below, which find the new one here; a
  /// show that ends because its venue was left tells only who watches the presence.
  std::uint32_t screenMode() const;
  /// Whether the show wants the whole screen at present: the host hides the system's bars for as
  /// long.
  bool prefersStatusBarHidden() const;
  /// Tells in a turn of its own that one of these three may have changed, for as long as the answer
  /// is kept, which may outlive the engine. Any number may watch; each may destroy the engine. One
  /// that throws is counted. A permission that changes while nobody listens is told of when the
  /// application becomes active again.
  [[nodiscard]] std::shared_ptr<const void> watchPresence(Callback callback);

  /// The transmitter keys ("application:number") to obey; none means all.
  void setAllowedTransmitterIds(std::vector<std::string> ids);
  /// As they were set last.
  const std::vector<std::string>& allowedTransmitterIds() const;

  /// Called on every change of mode or speed to a mode other than 0, in the middle of the look. May
  /// be absent. One that throws is counted, and the show goes on.
  void setLightShowStartedCallback(Callback callback);
  /// As it was set last; empty for none.
  const Callback& lightShowStartedCallback() const;
  /// Called on every change of speed or mode to mode 0, as above.
  void setLightShowStoppedCallback(Callback callback);
  /// As it was set last; empty for none.
  const Callback& lightShowStoppedCallback() const;

  /// Whether the usage counters are sent, for a host that asks its user. Switching them off gives
  /// up those under way; while they are off nothing is counted, nor noted in the defaults.
  bool usageReports() const;
  /// In force at once; not kept for later runs of the application.
  void setUsageReports(bool isOn);

  /// What the host allows of the light, and what whoever holds the phone, or the system in their
  /// name, allows of that: the stricter of both is in force at once. A brightness beyond 0 to 1
  /// counts as the nearest of these.
  void setLimits(const LightLimits& limits);
  /// The host's alone, as they were set last.
  const LightLimits& limits() const;
  /// The viewer's part of both, by the same rules.
  void setViewerLimits(const LightLimits& limits);
  /// The viewer's alone, as they were set last.
  const LightLimits& viewerLimits() const;
  /// The light fades out within 300 ms and stays away, torch and motor with it, while the show goes
  /// on unseen; `comeBack` shows what it has come to by then.
  void leave();
  /// Nothing for who has not left.
  void comeBack();
  /// Whether the light stays away because of `leave`.
  bool hasLeft() const;

  /// Plays the kit's clip of that name over the light, without end, as a look that names it does;
  /// it begins when its player is ready and a look says at which time. A missing one never begins.
  void playVideo(const std::string& name);

  /// Builds the seat's table for every pixel map of the venue that has none yet, in the background;
  /// the seat is its pixel in the videos. `progress` is told of each map, `completion` once at the
  /// end; (0, 0) where there is nothing to do, and fewer done than there are where some cannot be
  /// built. Either may be absent and is called in a turn of its own. A newer call, and
  /// invalidation, end this one at its next map: its completion is never called then.
  void precomputePixelMapLUTsForVenueId(std::int64_t venueId, std::int64_t seatX,
                                        std::int64_t seatY, Progress progress = {},
                                        Completion completion = {});
  /// Forgets all tables in memory, and deletes those of the venue.
  void invalidatePixelMapSeatLUTCacheForVenueId(std::int64_t venueId);
  /// Another number with each precompute that has maps to go through and with each invalidation,
  /// whoever asked for it: what was begun under an earlier one has been given up.
  std::uint64_t pixelMapPrecomputeGeneration() const;
  /// Whether a precompute has been begun that has neither ended nor been given up.
  bool isPrecomputingPixelMapLUTs() const;

  /// The kit's own text for a key, or `fallback` when its table has none.
  std::string hvLocalizedStringForKey(std::string_view key, std::string_view fallback) const;
  /// Where the application's own files lie; empty for nowhere.
  const std::string& getPrivateDocumentsDirectory() const;
  /// Name of the folder with a venue's downloaded content; empty for none.
  const std::string& pairedBucketID() const;
  /// How many advertisements met which fate since the engine was made.
  const ScanDiagnostics& diagnostics() const;

  /// What is believed of the air from now on. What was learnt and proven is forgotten, and the
  /// counts of what was doubted begin anew; the show goes on with the next packet that is believed.
  void setAir(const AirOptions& air);
  /// Told in a turn of its own whenever the answer of `airTrust` has become another. May be absent,
  /// may be replaced and may destroy the engine within a call. One that throws is counted.
  void setAirTrustCallback(std::function<void(AirTrust trust)> callback);
  /// `unproven` at all times where the air is taken exactly and without a key.
  AirTrust airTrust() const;
  /// What was doubted since the engine was made or its air was set, and what was held back.
  AirDiagnostics airDiagnostics() const;

  /// For the host: the view that it placed the engine in, and a central manager of its own. The
  /// engine uses neither.
  void* halvoraView = nullptr;
  CentralManager* centralManager = nullptr;  ///< See `halvoraView`.

  /// Who keeps the address of an engine that others may destroy has a `Witness` of this.
  Witnessed& life();

 private:
  friend ShowEngine& insideOf(HalvoraViewController& engine);
  friend const ShowEngine& insideOf(const HalvoraViewController& engine);
  friend std::unique_ptr<HalvoraViewController> controllerOf(std::unique_ptr<ShowEngine> inside);

  explicit HalvoraViewController(std::unique_ptr<ShowEngine> inside);

  std::unique_ptr<ShowEngine> inside_;
};

}  // namespace v0
}  // namespace halvora
