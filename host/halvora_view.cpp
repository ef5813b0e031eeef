// SPDX-License-Identifier: Apache-2.0
#include "host/halvora_view.h"

#include <utility>

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

std::unique_ptr<HalvoraView::Coordinator> HalvoraView::makeCoordinator() const {
  return std::make_unique<Coordinator>(Coordinator{engine_.controller(), allowedTransmitterIds});
}

HalvoraViewController& HalvoraView::makeController(const Coordinator& coordinator) const {
  HalvoraViewController& engine = coordinator.mainViewController;
  engine.setAllowedTransmitterIds(allowedTransmitterIds);
  if (usageReports) engine.setUsageReports(*usageReports);
  RunLoop& loop = engine_.platform().runLoop;
  engine.setLightShowStartedCallback(inATurnOfItsOwn(loop, onLightShowStarted));
  engine.setLightShowStoppedCallback(inATurnOfItsOwn(loop, onLightShowStopped));
  return engine;
}

}  // namespace halvora
