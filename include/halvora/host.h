// SPDX-License-Identifier: Apache-2.0
// The two views that a host places in its interface, as it describes them: the light of the show,
// and the status panel. Both are values; a face of each makes a coordinator once, shows what that
// stands for, and hands later descriptions to it.
//
// Main thread only. Nothing waits; every function may be called from within a callback. A view may
// go before what was made of it; its engine and the needs of its platform may not.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "halvora/engine.h"
#include "halvora/panel.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/version.h"

namespace halvora {
inline namespace HALVORA_PUBLIC v0 {

/// How large a face would like a view to be, in points: either dimension may be open.
struct ProposedSize {
  std::optional<double> width;   ///< None: as wide as it likes.
  std::optional<double> height;  ///< None: as high as it likes.
};

/// Which engine a view shows on a phone: one that the host made itself, else the process's, which
/// is made when it is first asked for.
struct EmbeddedEngine {
  /// The process's engine, on that platform if this is what makes it.
  EmbeddedEngine(const Platform& its)  // NOLINT(google-explicit-constructor)
      : platform(its) {}
  /// The host's own engine, which was made on that platform.
  EmbeddedEngine(const Platform& its, HalvoraViewController& engine)
      : platform(its), own(&engine) {}

  /// The engine itself; the process's is made by the first call.
  HalvoraViewController& controller() const;

  /// What panel and callbacks work on; its needs outlive all views.
  Platform platform;
  /// Null for the process's engine.
  HalvoraViewController* own = nullptr;
};

/// The light: two callbacks and the transmitters to obey. A face shows the controller that it gets,
/// loading its view with the first, and keeps the coordinator for as long as it shows it.
class HalvoraView {
 public:
  /// What a face keeps for as long as it shows the view.
  struct Coordinator {
    HalvoraViewController& mainViewController;       ///< The engine whose light is shown.
    std::vector<std::string> allowedTransmitterIds;  ///< The view's, when this was made.
  };

  /// The description of a light; nothing happens before a face makes something of it. Every
  /// argument but the first is the member of that name and may be set later.
  explicit HalvoraView(const EmbeddedEngine& engine, std::function<void()> lightShowStarted = {},
                       std::function<void()> lightShowStopped = {},
                       std::vector<std::string> transmitterIds = {});

  /// A show goes on with another mode or speed. Called in a turn of its own, where it may do as it
  /// likes. May stay absent.
  std::function<void()> onLightShowStarted;
  /// The show is over. Called likewise, and may stay absent.
  std::function<void()> onLightShowStopped;
  /// The transmitter keys ("application:number") to obey; none means all.
  std::vector<std::string> allowedTransmitterIds;
  /// Whether usage counters are sent; absent for whatever the engine does already.
  std::optional<bool> usageReports;
  /// Told in a turn of its own of how far the air can be believed; absent for whoever the engine
  /// tells already.
  std::function<void(AirTrust trust)> onAirTrustChanged;

  /// For a face, once; the process's engine is made if there is none yet.
  std::unique_ptr<Coordinator> makeCoordinator() const;
  /// The engine with this view's transmitters and callbacks, which stay on it until another view's
  /// take their place.
  HalvoraViewController& makeController(const Coordinator& coordinator) const;
  /// What a host changes later has no effect on the controller that was made.
  void updateController(HalvoraViewController& /*controller*/) const {}
  /// None: the face decides.
  std::optional<Size> sizeThatFits(const ProposedSize& /*proposal*/,
                                   const HalvoraViewController& /*controller*/) const {
    return std::nullopt;
  }

  void start() const;                    ///< As the engine's.
  void initBluetoothPermission() const;  ///< As the engine's.
  bool isPermissionGranted() const;      ///< As the engine's.
  bool isInsideVenue() const;            ///< As the engine's.

 private:
  EmbeddedEngine engine_;
};

/// The status panel: its style and the venue to begin with, in the order of the panel's fields. A
/// face loads the panel of the coordinator that it gets, and shows it for as long as it keeps that.
class HalvoraStatusView : public StatusPanelFields {
 public:
  /// What a face keeps for as long as it shows the view.
  struct Coordinator {
    HalvoraViewController& mainViewController;  ///< The engine that the panel tells of.
    /// Never null.
    std::unique_ptr<HalvoraStatusViewController> statusViewController;
  };

  /// The description of a panel; nothing happens before a face makes something of it.
  explicit HalvoraStatusView(const EmbeddedEngine& engine, StatusPanelFields fields = {});

  /// What of this the panel is handed.
  const StatusPanelFields& fields() const { return *this; }

  /// The panel has this description's fields; the engine is made if there is none yet.
  std::unique_ptr<Coordinator> makeCoordinator(StatusPanelFace face = {}) const;
  /// The coordinator's panel, with this description's fields from now on.
  HalvoraStatusViewController& makeController(const Coordinator& coordinator) const;
  /// Null, where a face shows something else, is left alone.
  void updateController(HalvoraStatusViewController* controller) const;
  /// The panel's preferred height, as wide as proposed, or as it prefers. None: the face decides.
  std::optional<Size> sizeThatFits(const ProposedSize& proposal,
                                   const HalvoraStatusViewController* controller) const;

 private:
  EmbeddedEngine engine_;
};

}  // namespace v0
}  // namespace halvora
