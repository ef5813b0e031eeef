// SPDX-License-Identifier: Apache-2.0
#include "apps/console/desk_flashes.h"

#include <filesystem>
#include <memory>
#include <utility>

#include "adapters/standard/seeded_random.h"
#include "venue/show/scenario.h"
#include "venue/show/trace.h"

namespace halvora {

namespace {

constexpr Duration kBegin = milliseconds(1500);
// The slowest effects pause for some four seconds.
constexpr Duration kLength = milliseconds(6000);

// What a light does follows from these alone.
Broadcast lightOnly(Broadcast look) {
  look.sequence = 1;
  look.transmitter = 1;
  look.pixelMapId = 0;
  look.videoId = look.videoStatus = 0;
  look.minutes = look.seconds = look.hundredths = 0;
  look.vibrate = 0;
  return look;
}

}  // namespace

DeskFlashes::DeskFlashes(const std::string& assets, DemoLibraries& libraries)
    : assets_(std::filesystem::absolute(assets).string()), libraries_(libraries) {}

void DeskFlashes::judge(const Broadcast& look) {
  const Broadcast light = lightOnly(look);
  if (judged_ == light) return;
  judged_ = light;
  const FlashFigures before = std::exchange(figures_, measured(light));
  if (figures_ != before) emit changed();
}

FlashFigures DeskFlashes::measured(const Broadcast& look) const {
  const BroadcastBytes bytes = encodeBroadcast(look);
  Scenario scenario;
  scenario.device.brightness = 1;
  scenario.lines = {
      {.number = 1, .action = StartAction{}},
      {.number = 2, .action = PacketAction{{bytes.begin(), bytes.end()}}, .at = toSeconds(kBegin)}};
  TraceOptions options;
  options.assets = assets_;
  options.until = kBegin + kLength;
  PhoneMeter meter;
  FlashCurve curve;
  const TraceEnd end = measureFlashes(scenario, options, std::make_unique<SeededRandom>(1),
                                      {libraries_.json, libraries_.images}, meter, curve);
  // What cannot be judged is not sent by mistake.
  constexpr FlashFigure kUnknown{EyeMeter::kMostLights / 2, Duration::zero()};
  return end == TraceEnd::whole ? meter.worst() : FlashFigures{kUnknown, kUnknown};
}

void DeskFlashes::setArmed(bool isArmed) {
  if (std::exchange(isArmed_, isArmed) != isArmed) emit changed();
}

}  // namespace halvora
