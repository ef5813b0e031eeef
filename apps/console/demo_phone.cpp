// SPDX-License-Identifier: Apache-2.0
#include "apps/console/demo_phone.h"

#include <QString>

namespace halvora {

void DemoTorch::setOn(bool on) {
  if (on == isOn) return;
  isOn = on;
  if (changed) changed();
}

void DemoHaptics::impact(ImpactStyle style) {
  if (felt) felt(style == ImpactStyle::light ? Shake::light : Shake::heavy);
}

void DemoHaptics::playSystemSound(std::uint32_t sound) {
  if (felt && sound == kVibrationSound) felt(Shake::buzz);
}

DemoPhone::DemoPhone(const ScenarioDevice& device, const std::string& assets, RunLoop& runLoop,
                     SerialQueues& serialQueues, DemoLibraries& demoLibraries)
    : loop(runLoop),
      queues(serialQueues),
      libraries(demoLibraries),
      wallClock(loop),
      bluetooth(loop),
      screen(device.bounds, device.brightness),
      mainBundle(libraries.files, assets, "com.example.host", languagesOfEnvironment(),
                 libraries.json),
      kitBundle(QStringLiteral(":/halvora/kit"), "com.halvora.sdk", languagesOfEnvironment(),
                libraries.json),
      bundles{mainBundle, kitBundle, libraries.documents},
      playerA(loop, 'A', videoLog),
      playerB(loop, 'B', videoLog) {
  // A demo may stand on a desk for days, and nobody reads what is kept.
  bluetooth.log.isKept = false;
  screen.log.isKept = false;
  defaults.log.isKept = false;
  http.log.isKept = false;
  videoLog.isKept = false;
  torch.isFitted = device.torch;
  bluetooth.setAuthorization(device.authorization);
  bluetooth.setState(device.state);
}

Platform DemoPhone::platform() {
  return {.runLoop = loop,
          .queues = queues,
          .wallClock = wallClock,
          .calendar = calendar,
          .random = random,
          .bluetooth = bluetooth,
          .screen = screen,
          .haptics = haptics,
          .application = application,
          .defaults = defaults,
          .bundles = bundles,
          .http = http,
          .json = libraries.json,
          .torch = torch,
          .images = libraries.images,
          .videoPlayers = videoPlayers,
          .files = libraries.files,
          .videoAssets = libraries.videos,
          .workers = libraries.workers};
}

}  // namespace halvora
