// SPDX-License-Identifier: Apache-2.0
#include "apps/console/live_show.h"

#include <utility>

namespace halvora {

LiveShow::LiveShow(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
                   DemoLibraries& libraries, std::function<void()> ended)
    : phone_(files.scenario.device, files.assets, loop, queues, libraries),
      engine_(phone_.platform()),
      run_(files.scenario.lines, load(files.scenario), loop,
           [this](const ScenarioAction& action) { perform(action, stage_); }) {
  run_.endAfter(files.end(), std::move(ended));
}

std::size_t LiveShow::load(const Scenario& scenario) {
  const std::size_t before = scenario.linesBeforeLoading();
  for (std::size_t at = 0; at < before; ++at) perform(scenario.lines[at].action, stage_);
  engine_.viewDidLoad();
  return before;
}

}  // namespace halvora
