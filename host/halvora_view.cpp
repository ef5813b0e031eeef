// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "halvora/host.h"
#include "halvora/platform/run_loop.h"

namespace halvora {

namespace {

// The engine may call in the middle of a look; the host hears of it when that is done.
std::function<void()> inATurnOfItsOwn(RunLoop& loop, const std::function<void()>& callback) {
  auto shared = std::make_shared<const std::function<void()>>(callback);
  return [&loop, shared = std::move(shared)] {
    loop.post([called = shared] {
      if (*called) (*called)();
    });
  };
}

}  // namespace

HalvoraViewController& EmbeddedEngine::controller() const {
  return own != nullptr ? *own : HalvoraViewController::sharedInstance(platform);
}

HalvoraView::HalvoraView(const EmbeddedEngine& engine, std::function<void()> lightShowStarted,
                         std::function<void()> lightShowStopped,
                         std::vector<std::string> transmitterIds)
    : onLightShowStarted(std::move(lightShowStarted)),
      onLightShowStopped(std::move(lightShowStopped)),
      allowedTransmitterIds(std::move(transmitterIds)),
      engine_(engine) {}

std::unique_ptr<HalvoraView::Coordinator> HalvoraView::makeCoordinator() const {
  return std::make_unique<Coordinator>(Coordinator{engine_.controller(), allowedTransmitterIds});
}

HalvoraViewController& HalvoraView::makeController(const Coordinator& coordinator) const {
  HalvoraViewController& engine = coordinator.mainViewController;
  engine.setAllowedTransmitterIds(allowedTransmitterIds);
  if (usageReports) engine.setUsageReports(*usageReports);
  RunLoop& loop = engine_.platform.runLoop;
  engine.setLightShowStartedCallback(inATurnOfItsOwn(loop, onLightShowStarted));
  engine.setLightShowStoppedCallback(inATurnOfItsOwn(loop, onLightShowStopped));
  if (onAirTrustChanged) engine.setAirTrustCallback(onAirTrustChanged);
  return engine;
}

void HalvoraView::start() const { engine_.controller().start(); }

void HalvoraView::initBluetoothPermission() const {
  engine_.controller().initBluetoothPermission();
}

bool HalvoraView::isPermissionGranted() const { return engine_.controller().isPermissionGranted(); }

bool HalvoraView::isInsideVenue() const { return engine_.controller().isInsideVenue(); }

}  // namespace halvora
