// SPDX-License-Identifier: Apache-2.0
// A whole phone in virtual time: everything an engine needs, ready to be watched and driven.
// Whoever makes it owns it and drives its run loop; an engine on it must go before it goes.
#pragma once

#include <memory>
#include <string>

#include "adapters/standard/seeded_random.h"
#include "adapters/virtual/virtual_bluetooth.h"
#include "adapters/virtual/virtual_devices.h"
#include "adapters/virtual/virtual_files.h"
#include "adapters/virtual/virtual_media.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "adapters/virtual/virtual_storage.h"
#include "adapters/virtual/virtual_video.h"
#include "halvora/platform/json.h"
#include "halvora/platform/platform.h"

namespace halvora {

struct VirtualPhoneSetup {
  double brightness = 0.5;
  Size bounds{390, 844};
  BluetoothAuthorization authorization = BluetoothAuthorization::allowedAlways;
  CentralState state = CentralState::poweredOn;
  /// Null for a generator seeded with 1. The phone takes it over.
  std::unique_ptr<Random> random;
  /// The bundles to use in place of the phone's own, which are empty; they must outlive the phone.
  Bundle* mainBundle = nullptr;
  Bundle* kitBundle = nullptr;
  /// The phone's private documents folder; empty for none.
  std::string documents = {};
  /// Null for none; must outlive the phone.
  const ImageDecoder* images = nullptr;
  bool hasTorch = true;
  /// Null for the phone's own files and videos, which are in memory; both must outlive the phone.
  Files* files = nullptr;
  const VideoAssets* videoAssets = nullptr;
  /// Null for one that does everything on the calling thread; must outlive the phone.
  Workers* workers = nullptr;
};

class VirtualPhone {
 public:
  explicit VirtualPhone(const JsonReader& json, VirtualPhoneSetup setup = {});
  VirtualPhone(const VirtualPhone&) = delete;
  VirtualPhone& operator=(const VirtualPhone&) = delete;

  Platform platform();

  VirtualRunLoop loop;
  VirtualQueues queues{loop};
  VirtualWallClock wallClock{loop};
  VirtualCalendar calendar;
  std::unique_ptr<Random> random;
  VirtualBluetooth bluetooth{loop};
  VirtualScreen screen;
  VirtualHaptics haptics;
  VirtualApplication application;
  VirtualDefaults defaults;
  VirtualBundle mainBundle{"com.example.host"};
  VirtualBundle kitBundle{"com.halvora.sdk"};
  Bundles bundles;
  VirtualHttp http;
  const JsonReader& json;
  VirtualTorch torch;
  const ImageDecoder& images;
  /// What either player was asked to do, in order.
  Log<VideoEvent> videoLog;
  VirtualVideoPlayer playerA{loop, 'A', videoLog};
  VirtualVideoPlayer playerB{loop, 'B', videoLog};
  VideoPlayers videoPlayers{playerA, playerB};
  VirtualFiles virtualFiles;
  VirtualVideoAssets virtualVideos;
  InlineWorkers inlineWorkers;
  Files& files;
  const VideoAssets& videoAssets;
  Workers& workers;
};

}  // namespace halvora
