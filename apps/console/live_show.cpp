// SPDX-License-Identifier: Apache-2.0
#include "apps/console/live_show.h"

#include <utility>
#include <variant>

namespace halvora {

LiveShow::LiveShow(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
                   DemoLibraries& libraries, std::function<void()> ended)
    : phone_(files.scenario.device, files.assets, loop, queues, libraries),
      engine_(phone_.platform()),
      run_(load(files.scenario), loop,
           [this](const ScenarioAction& action) { perform(action, stage_); }) {
  run_.endAfter(files.end(), std::move(ended));
}

ScenarioSchedule LiveShow::load(const Scenario& scenario) {
  ScenarioSchedule schedule(scenario);
  for (bool isLoaded = false; !isLoaded;) {
    const auto moment = schedule.next();
    perform(*moment->action, stage_);
    isLoaded = std::holds_alternative<LoadAction>(*moment->action);
  }
  return schedule;
}

}  // namespace halvora
