// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/trace.h"

#include <utility>

#include "engine/halvora_view_controller.h"
#include "platform/standard/folder_bundle.h"
#include "platform/virtual/virtual_phone.h"
#include "tools/halvora/scenario_player.h"
#include "tools/halvora/trace_writer.h"

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

}  // namespace

bool runTrace(const Scenario& scenario, const TraceOptions& options, std::unique_ptr<Random> random,
              const TraceLibraries& libraries, const std::function<void(std::string_view)>& write) {
  // Without string tables, so that a trace is the same on every machine.
  FolderBundle mainBundle(options.assets, "com.example.host");
  VirtualPhoneSetup setup = setupOf(scenario.device, std::move(random));
  setup.mainBundle = &mainBundle;
  setup.documents = options.documents;
  setup.images = &libraries.images;
  VirtualPhone phone(libraries.json, std::move(setup));
  // A trace never reads these two, and a long show would fill them.
  phone.bluetooth.log.isKept = false;
  phone.queues.log.isKept = false;

  HalvoraViewController engine(phone.platform(), {traceEndpoints()});
  engine.setAllowedTransmitterIds(options.allowedTransmitterIds);
  TraceWriter writer(phone, engine, {options.assets, options.documents}, write);
  phone.loop.onTurnEnded([&writer] { writer.turnEnded(); });

  const ScenarioStage stage{phone.bluetooth, phone.application, phone.defaults, engine};
  schedule(scenario, phone.loop, stage);
  return phone.loop.runUntil(options.until.value_or(scenario.lastAction() + kAfterLastAction));
}

}  // namespace halvora
