// SPDX-License-Identifier: Apache-2.0
// The phone behind the C interface: an engine and a panel on a host's callbacks. It works within
// the host's calls only. Main thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/file_defaults.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/kit_bundle.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/system_clock.h"
#include "bindings/c/halvora.h"
#include "bindings/c/host_loop.h"
#include "bindings/c/host_media.h"
#include "bindings/c/host_needs.h"
#include "halvora/engine.h"
#include "halvora/light.h"
#include "halvora/panel.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/screen.h"
#include "halvora/wizard.h"

namespace halvora {

class HostPhone : private LightObserver {
 public:
  HostPhone(const halvora_callbacks& callbacks, const halvora_options& options);
  ~HostPhone() override;
  HostPhone(const HostPhone&) = delete;
  HostPhone& operator=(const HostPhone&) = delete;

  /// What is due by the host's clock; without one, nothing.
  void runToNow();
  /// After each of the host's calls: ends its turn, and says when the next one is due.
  void endCall();

  void openPanel();
  /// Null while it is not open.
  HalvoraStatusViewController* panel() const { return panel_.get(); }
  void closePanel() { panel_.reset(); }
  std::shared_ptr<HalvoraSeatSelectorViewController> wizard() const;

  HostLoop loop;
  Host host;
  HostScreen screen;
  HostRadio radio{loop, host};
  HostApplication application{host};
  HalvoraViewController& engine() { return *engine_; }
  UserDefaults& defaults() { return defaults_; }

  /// What was handed out last, and is good until the next call.
  DisplayList look;
  std::string text;
  Alert alert;
  /// Calls of the host that are under way, one within the other.
  int calls = 0;

 private:
  void lightChanged() override { host.tell(HALVORA_EVENT_LIGHT_CHANGED); }
  void lightEnds() override {}

  const std::vector<std::string> languages_;
  HostQueues queues_{loop};
  SystemWallClock wallClock_;
  SystemCalendar calendar_;
  SeededRandom random_;
  HostTorch torch_;
  HostHaptics haptics_{host};
  HostFiles files_{host};
  const halvora_media media_;
  const HostPictures pictures_{media_};
  const HostVideos videos_{media_};
  HostPlayer playerA_{loop, media_, 0};
  HostPlayer playerB_{loop, media_, 1};
  const VideoPlayers players_{playerA_, playerB_};
  const HostCodes codes_{host};
  const ExactJsonReader json_;
  DefaultsFile defaultsFile_;
  FileDefaults defaults_;
  KitBundle kit_;
  FolderBundle main_;
  Bundles bundles_;
  Platform platform_;
  const std::int64_t defaultVenue_;
  std::int64_t lastWake_ = -1;
  std::unique_ptr<HalvoraViewController> engine_;
  std::unique_ptr<HalvoraStatusViewController> panel_;
};

}  // namespace halvora
