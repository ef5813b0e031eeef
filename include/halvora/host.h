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
  std::optional<double> width;
  std::optional<double> height;
};

/// Which engine a view shows on a phone: one that the host made itself, else the process's, which
/// is made when it is first asked for.
struct EmbeddedEngine {
  EmbeddedEngine(const Platform& its)  // NOLINT(google-explicit-constructor)
      : platform(its) {}
  EmbeddedEngine(const Platform& its, HalvoraViewController& engine)
      : platform(its), own(&engine) {}

  HalvoraViewController& controller() const;

  Platform platform;
  HalvoraViewController* own = nullptr;
};

/// The light: two callbacks and the transmitters to obey. A face shows the controller that it gets,
/// loading its view with the first, and keeps the coordinator for as long as it shows it.
class HalvoraView {
 public:
  /// What a face keeps for as long as it shows the view.
  struct Coordinator {
    HalvoraViewController& mainViewController;
    std::vector<std::string> allowedTransmitterIds;
  };

  explicit HalvoraView(const EmbeddedEngine& engine, std::function<void()> lightShowStarted = {},
                       std::function<void()> lightShowStopped = {},
                       std::vector<std::string> transmitterIds = {});

  /// Called in a turn of their own, where they may do as they like. May stay absent.
  std::function<void()> onLightShowStarted;
  std::function<void()> onLightShowStopped;
  /// The transmitter keys ("application:number") to obey; none means all.
  std::vector<std::string> allowedTransmitterIds;
  /// Whether usage counters are sent; absent for whatever the engine does already.
  std::optional<bool> usageReports;
  /// Told in a turn of its own of how far the air can be believed; absent for whoever the engine
  /// tells already.
  std::function<void(AirTrust trust)> onAirTrustChanged;

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

  // What the engine of that name does.
  void start() const;
  void initBluetoothPermission() const;
  bool isPermissionGranted() const;
  bool isInsideVenue() const;

 private:
  EmbeddedEngine engine_;
};

/// The status panel: its style and the venue to begin with, in the order of the panel's fields. A
/// face loads the panel of the coordinator that it gets, and shows it for as long as it keeps that.
class HalvoraStatusView : public StatusPanelFields {
 public:
  /// What a face keeps for as long as it shows the view.
  struct Coordinator {
    HalvoraViewController& mainViewController;
    /// Never null.
    std::unique_ptr<HalvoraStatusViewController> statusViewController;
  };

  explicit HalvoraStatusView(const EmbeddedEngine& engine, StatusPanelFields fields = {});

  const StatusPanelFields& fields() const { return *this; }

  /// The panel has this description's fields; the engine is made if there is none yet.
  std::unique_ptr<Coordinator> makeCoordinator(StatusPanelFace face = {}) const;
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
