// SPDX-License-Identifier: Apache-2.0
#include "adapters/virtual/virtual_phone.h"

#include <utility>

#include "halvora/platform/absent.h"

namespace halvora {

VirtualPhone::VirtualPhone(const JsonReader& reader, VirtualPhoneSetup setup)
    : random(setup.random ? std::move(setup.random) : std::make_unique<SeededRandom>(1)),
      screen(setup.bounds, setup.brightness),
      bundles{setup.mainBundle != nullptr ? *setup.mainBundle : mainBundle,
              setup.kitBundle != nullptr ? *setup.kitBundle : kitBundle,
              std::move(setup.documents)},
      json(reader),
      images(setup.images != nullptr ? *setup.images : absent::images()),
      files(setup.files != nullptr ? *setup.files : virtualFiles),
      videoAssets(setup.videoAssets != nullptr ? *setup.videoAssets : virtualVideos),
      workers(setup.workers != nullptr ? *setup.workers : inlineWorkers) {
  mainBundle.files = &files;
  kitBundle.files = &files;
  torch.isFitted = setup.hasTorch;
  torch.isFlashFitted = setup.hasTorch;
  bluetooth.setAuthorization(setup.authorization);
  bluetooth.setState(setup.state);
}

Platform VirtualPhone::platform() {
  return {.runLoop = loop,
          .queues = queues,
          .wallClock = wallClock,
          .calendar = calendar,
          .random = *random,
          .bluetooth = bluetooth,
          .screen = screen,
          .haptics = haptics,
          .application = application,
          .defaults = defaults,
          .bundles = bundles,
          .http = http,
          .json = json,
          .torch = torch,
          .images = images,
          .videoPlayers = videoPlayers,
          .files = files,
          .videoAssets = videoAssets,
          .workers = workers};
}

}  // namespace halvora
