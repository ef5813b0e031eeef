// SPDX-License-Identifier: Apache-2.0
#include "apps/demo/live_show.h"

#include <utility>

namespace halvora {

LiveShow::LiveShow(const ShowFiles& files, RunLoop& loop, SerialQueues& queues,
                   DemoLibraries& libraries, std::function<void()> ended)
    : files_(files),
      loop_(loop),
      begin_(loop.now()),
      wallClock_(loop),
      bluetooth_(loop),
      screen_(files.scenario.device.bounds, files.scenario.device.brightness),
      mainBundle_(files.assets, "com.example.host"),
      kitBundle_("", "com.halvora.sdk"),
      bundles_{mainBundle_, kitBundle_, libraries.documents},
      playerA_(loop, 'A', videoLog_),
      playerB_(loop, 'B', videoLog_),
      engine_({loop, queues, wallClock_, calendar_, random_, bluetooth_, screen_, haptics_,
               application_, defaults_, bundles_, http_, libraries.json, torch_, libraries.images,
               videoPlayers_, libraries.files, libraries.videos, libraries.workers}),
      ended_(std::move(ended)),
      timers_(loop) {
  bluetooth_.setAuthorization(files.scenario.device.authorization);
  bluetooth_.setState(files.scenario.device.state);
  const std::vector<ScenarioLine>& lines = files_.scenario.lines;
  const std::size_t before = files_.scenario.linesBeforeLoading();
  for (std::size_t at = 0; at < before; ++at) perform(lines[at].action, stage_);
  engine_.viewDidLoad();
  for (std::size_t at = before; at < lines.size(); ++at) schedule(lines[at], 0);
  timers_.after(files_.end(), [this] {
    const auto callback = std::move(ended_);
    callback();
  });
}

// One occurrence schedules the next, so that a long repeat takes no more room than a short one.
void LiveShow::schedule(const ScenarioLine& line, std::uint64_t occurrence) {
  const auto time = line.timeOf(occurrence);
  if (!time) return;
  timers_.after(begin_ + *time - loop_.now(), [this, &line, occurrence] {
    perform(line.action, stage_);
    schedule(line, occurrence + 1);
  });
}

}  // namespace halvora
