// SPDX-License-Identifier: Apache-2.0
// The light view as a host describes it: two callbacks and the transmitters to obey. A value; a
// face makes the coordinator once, shows the controller that it gets, loading its view with the
// first, and keeps the coordinator for as long as it shows it. Main thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "halvora/engine.h"
#include "host/embedded_engine.h"
#include "host/proposed_size.h"

namespace halvora {

class HalvoraView {
 public:
  struct Coordinator {
    HalvoraViewController& mainViewController;
    std::vector<std::string> allowedTransmitterIds;
  };

  explicit HalvoraView(const EmbeddedEngine& engine, std::function<void()> lightShowStarted = {},
                       std::function<void()> lightShowStopped = {},
                       std::vector<std::string> transmitterIds = {})
      : onLightShowStarted(std::move(lightShowStarted)),
        onLightShowStopped(std::move(lightShowStopped)),
        allowedTransmitterIds(std::move(transmitterIds)),
        engine_(engine) {}

  /// Called in a turn of their own. May stay absent.
  std::function<void()> onLightShowStarted;
  std::function<void()> onLightShowStopped;
  /// The transmitter keys ("application:number") to obey; none means all.
  std::vector<std::string> allowedTransmitterIds;
  /// Whether usage counters are sent; absent for whatever the engine does already.
  std::optional<bool> usageReports;

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

  void start() const { engine_.controller().start(); }
  void initBluetoothPermission() const { engine_.controller().initBluetoothPermission(); }
  bool isPermissionGranted() const { return engine_.controller().isPermissionGranted(); }
  bool isInsideVenue() const { return engine_.controller().isInsideVenue(); }

 private:
  EmbeddedEngine engine_;
};

}  // namespace halvora
