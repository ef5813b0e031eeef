// SPDX-License-Identifier: Apache-2.0
#include "venue/show/trace.h"

#include <algorithm>
#include <utility>

#include "adapters/standard/folder_bundle.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "venue/show/scenario_player.h"
#include "venue/show/scenario_run.h"
#include "venue/show/trace_writer.h"

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

// The engine goes on without what there is no memory for; a trace that did would lie.
bool wasShortOfMemory(const ShowEngine& engine) {
  const ScanDiagnostics& diagnostics = engine.diagnostics();
  const SeatLutFailures tables = engine.seatLuts().failures();
  return diagnostics.failedCalls > 0 || diagnostics.failedCallbacks > 0 ||
         diagnostics[PacketFate::failed] > 0 || tables[SeatLutFailure::noMemory] != 0 ||
         tables[SeatLutFailure::noThread] != 0;
}

}  // namespace

TraceEnd runTrace(const Scenario& scenario, const TraceOptions& options,
                  std::unique_ptr<Random> random, const TraceLibraries& libraries,
                  const std::function<void(std::string_view)>& write) {
  // Without string tables, so that a trace is the same on every machine.
  FolderBundle mainBundle(options.assets, "com.example.host");
  VirtualPhoneSetup setup = setupOf(scenario.device, std::move(random));
  setup.mainBundle = &mainBundle;
  setup.documents = options.documents;
  setup.images = &libraries.images;
  setup.files = libraries.files;
  setup.videoAssets = libraries.videos;
  setup.workers = libraries.workers;
  VirtualPhone phone(libraries.json, std::move(setup));
  // A trace never reads these two, and a long show would fill them.
  phone.bluetooth.log.isKept = false;
  phone.queues.log.isKept = false;

  ShowEngine engine(phone.platform(), {{traceEndpoints()}});
  engine.setAllowedTransmitterIds(options.allowedTransmitterIds);
  TraceWriter writer(phone, engine, {options.assets, options.documents}, write);
  // A phone goes on after a turn that failed, but then it shows what no other one would.
  const auto hasFailed = [&] { return phone.loop.failures() > 0 || wasShortOfMemory(engine); };
  phone.loop.onTurnEnded([&] {
    if (!hasFailed()) writer.turnEnded();
  });

  ScenarioStage stage{{phone.bluetooth, phone.application, engine}, phone.defaults};
  stage.progress = [&writer](int done, int total, const std::string& mapId) {
    writer.precomputeProgressed(done, total, mapId);
  };
  stage.completion = [&writer](int done, int total) { writer.precomputeCompleted(done, total); };
  const ScenarioRun run(ScenarioSchedule(scenario), phone.loop,
                        [&stage](const ScenarioAction& action) { perform(action, stage); });
  const Duration end = options.until.value_or(scenario.lastAction() + kAfterLastAction);
  const bool isWhole =
      options.goesOn ? runInParts(phone.loop, end, options.goesOn) : phone.loop.runUntil(end);
  if (hasFailed()) return TraceEnd::noMemory;
  return isWhole ? TraceEnd::whole : TraceEnd::endless;
}

}  // namespace halvora
