// SPDX-License-Identifier: Apache-2.0
// One engine on a phone in memory, playing a scenario in the time of the run loop that it is given.
// Starts when it is made, and stops when it goes; everything handed in must outlive it. Main
// thread.
#pragma once

#include <cstdint>
#include <functional>

#include "apps/demo/libraries.h"
#include "apps/demo/show_files.h"
#include "engine/halvora_view_controller.h"
#include "light/timer_set.h"
#include "platform/bundle.h"
#include "platform/run_loop.h"
#include "platform/serial_queues.h"
#include "platform/standard/folder_bundle.h"
#include "platform/standard/seeded_random.h"
#include "platform/virtual/virtual_bluetooth.h"
#include "platform/virtual/virtual_devices.h"
#include "platform/virtual/virtual_media.h"
#include "platform/virtual/virtual_storage.h"
#include "tools/halvora/scenario_player.h"

namespace halvora {

class LiveShow {
 public:
  /// `ended` is called once, in a turn of its own; it may destroy the show.
  LiveShow(const ShowFiles& files, RunLoop& loop, SerialQueues& queues, DemoLibraries& libraries,
           std::function<void()> ended);

  ViewStack& views() { return engine_.views(); }
  std::uint32_t mode() const { return engine_.state().screen.currentMode; }
  /// Since the scenario began.
  Duration time() const { return loop_.now() - begin_; }

 private:
  void schedule(const ScenarioLine& line, std::uint64_t occurrence);

  const ShowFiles& files_;
  RunLoop& loop_;
  const Duration begin_;
  VirtualWallClock wallClock_;
  VirtualCalendar calendar_;
  SeededRandom random_{kShowSeed};
  VirtualBluetooth bluetooth_;
  VirtualScreen screen_;
  VirtualHaptics haptics_;
  VirtualApplication application_;
  VirtualDefaults defaults_;
  FolderBundle mainBundle_;
  FolderBundle kitBundle_;
  Bundles bundles_;
  VirtualHttp http_;
  VirtualTorch torch_;
  Log<VideoEvent> videoLog_;
  VirtualVideoPlayer playerA_;
  VirtualVideoPlayer playerB_;
  VideoPlayers videoPlayers_{playerA_, playerB_};
  HalvoraViewController engine_;
  const ScenarioStage stage_{bluetooth_, application_, defaults_, engine_};
  std::function<void()> ended_;
  TimerSet timers_;
};

}  // namespace halvora
