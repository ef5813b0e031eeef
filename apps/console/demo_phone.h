// SPDX-License-Identifier: Apache-2.0
// A phone in memory that lives in the time of a run loop: real files, pictures and videos, and a
// radio, a torch and a motor that whoever owns it can watch. Everything handed in must outlive it,
// and it must outlive its engine. Main thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "adapters/qt/qt_resource_bundle.h"
#include "adapters/standard/folder_bundle.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_media.h"
#include "adapters/virtual/virtual_storage.h"
#include "apps/console/libraries.h"
#include "apps/console/show_files.h"
#include "halvora/platform/bundle.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/platform.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/serial_queues.h"
#include "halvora/platform/torch.h"
#include "venue/show/scenario.h"

namespace halvora {

class DemoTorch final : public Torch {
 public:
  bool hasTorch() const override { return isFitted; }
  bool hasFlash() const override { return isFitted; }
  void setOn(bool on) override;

  bool isFitted = true;
  bool isOn = false;
  /// After each change; may stay absent.
  std::function<void()> changed;
};

/// How hard a phone shakes.
enum class Shake : std::uint8_t { light = 1, heavy, buzz };

class DemoHaptics final : public Haptics {
 public:
  void impact(ImpactStyle style) override;
  void playSystemSound(std::uint32_t sound) override;
  void disposeSystemSound(std::uint32_t /*sound*/) override {}

  /// May stay absent.
  std::function<void(Shake)> felt;
};

struct DemoPhone {
  DemoPhone(const ScenarioDevice& device, const std::string& assets, RunLoop& loop,
            SerialQueues& queues, DemoLibraries& libraries);
  DemoPhone(const DemoPhone&) = delete;
  DemoPhone& operator=(const DemoPhone&) = delete;

  Platform platform();

  RunLoop& loop;
  SerialQueues& queues;
  DemoLibraries& libraries;
  VirtualWallClock wallClock;
  VirtualCalendar calendar;
  SeededRandom random{kShowSeed};
  VirtualBluetooth bluetooth;
  VirtualScreen screen;
  DemoHaptics haptics;
  VirtualApplication application;
  VirtualDefaults defaults;
  FolderBundle mainBundle;
  QtResourceBundle kitBundle;
  Bundles bundles;
  VirtualHttp http;
  DemoTorch torch;
  Log<VideoEvent> videoLog;
  VirtualVideoPlayer playerA;
  VirtualVideoPlayer playerB;
  VideoPlayers videoPlayers{playerA, playerB};
};

}  // namespace halvora
