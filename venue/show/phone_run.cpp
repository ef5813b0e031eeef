// SPDX-License-Identifier: Apache-2.0
#include "venue/show/phone_run.h"

#include <algorithm>
#include <utility>

#include "venue/show/scenario_player.h"
#include "venue/show/scenario_run.h"

namespace halvora {

namespace {

constexpr Duration kAfterLastAction = milliseconds(10'000);

// Three hosts that can never be real.
const UsageEndpoints& traceEndpoints() {
  static const UsageEndpoints kEndpoints{"https://app-opened.halvora.example",
                                         "https://device.halvora.example",
                                         "https://received-signal.halvora.example"};
  return kEndpoints;
}

// The same turns as in one go.
bool runInParts(VirtualRunLoop& loop, Duration end, const std::function<bool()>& goesOn) {
  constexpr int kMostParts = 1000;
  const Duration part = std::max(milliseconds(1000), end / kMostParts);
  do {
    if (!loop.runUntil(std::min(loop.now() + part, end))) return false;
  } while (loop.now() < end && goesOn());
  return true;
}

VirtualPhoneSetup setupOf(const Scenario& scenario, const TraceOptions& options,
                          std::unique_ptr<Random> random, const TraceLibraries& libraries,
                          Bundle& mainBundle) {
  VirtualPhoneSetup setup = setupOf(scenario.device, std::move(random));
  setup.mainBundle = &mainBundle;
  setup.documents = options.documents;
  setup.images = &libraries.images;
  setup.files = libraries.files;
  setup.videoAssets = libraries.videos;
  setup.workers = libraries.workers;
  return setup;
}

// Pictures are judged in the turn that shows them, so that a trace tells what a show is, and not
// how long a machine takes for it.
ShowEngineOptions engineOptionsOf(const TraceOptions& options, PictureMeans& pictures) {
  ShowEngineOptions engine{{traceEndpoints()}};
  engine.limits.flash = options.flash;
  engine.air = options.air;
  engine.pictures = &pictures;
  return engine;
}

Platform platformOf(VirtualPhone& phone, const TraceLibraries& libraries) {
  Platform platform = phone.platform();
  if (libraries.codes != nullptr) platform.codes = *libraries.codes;
  return platform;
}

}  // namespace

Duration endOf(const Scenario& scenario, const TraceOptions& options) {
  return options.until.value_or(scenario.lastAction() + kAfterLastAction);
}

// Without string tables, so that a trace is the same on every machine.
PhoneRun::PhoneRun(const Scenario& scenario, const TraceOptions& options,
                   std::unique_ptr<Random> random, const TraceLibraries& libraries)
    : scenario_(scenario),
      options_(options),
      mainBundle_(libraries.files != nullptr ? std::as_const(*libraries.files) : disk_,
                  options.assets, "com.example.host"),
      phone_(libraries.json, setupOf(scenario, options, std::move(random), libraries, mainBundle_)),
      pictures_(Pictures(phone_.platform())),
      engine_(platformOf(phone_, libraries), engineOptionsOf(options, pictures_)) {
  // Nobody ever reads these two, and a long show would fill them.
  phone_.bluetooth.log.isKept = false;
  phone_.queues.log.isKept = false;
  engine_.setAllowedTransmitterIds(options.allowedTransmitterIds);
}

// The engine goes on without what there is no memory for; who watched that would tell a lie.
bool PhoneRun::hasFailed() const {
  const ScanDiagnostics& diagnostics = engine_.diagnostics();
  const SeatLutFailures tables = engine_.seatLuts().failures();
  return phone_.loop.failures() > 0 || diagnostics.failedCalls > 0 ||
         diagnostics.failedCallbacks > 0 || diagnostics[PacketFate::failed] > 0 ||
         tables[SeatLutFailure::noMemory] != 0 || tables[SeatLutFailure::noThread] != 0;
}

TraceEnd PhoneRun::run(const Watcher& watcher) {
  // A phone goes on after a turn that failed, but then it shows what no other one would.
  phone_.loop.onTurnEnded([&] {
    if (!hasFailed()) watcher.turnEnded();
  });
  ScenarioStage stage{{phone_.bluetooth, phone_.application, engine_}, phone_.defaults};
  stage.progress = watcher.progress;
  stage.completion = watcher.completion;
  const ScenarioRun run(ScenarioSchedule(scenario_), phone_.loop,
                        [&stage](const ScenarioAction& action) { perform(action, stage); });
  const Duration end = endOf(scenario_, options_);
  const bool isWhole =
      options_.goesOn ? runInParts(phone_.loop, end, options_.goesOn) : phone_.loop.runUntil(end);
  phone_.loop.onTurnEnded({});
  if (hasFailed()) return TraceEnd::noMemory;
  return isWhole ? TraceEnd::whole : TraceEnd::endless;
}

}  // namespace halvora
