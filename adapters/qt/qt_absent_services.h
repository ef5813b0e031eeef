// SPDX-License-Identifier: Apache-2.0
// The needs of a machine that lacks a device, or whose adapter for it is not there: every call is
// allowed and does nothing. Owned by QtPlatform; main thread.
#pragma once

#include <memory>
#include <string>

#include "halvora/platform/bluetooth.h"
#include "halvora/platform/haptics.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/torch.h"
#include "halvora/platform/video_player.h"

namespace halvora {

/// Allowed, but there is no radio: "Bluetooth is off", and never a question to the user.
class AbsentBluetooth final : public BluetoothCentral {
 public:
  explicit AbsentBluetooth(RunLoop& loop) : loop_(loop) {}
  BluetoothAuthorization authorization() const override {
    return BluetoothAuthorization::allowedAlways;
  }
  std::unique_ptr<CentralManager> makeManager(CentralManagerDelegate& delegate) override;

 private:
  RunLoop& loop_;
};

class AbsentHaptics final : public Haptics {
 public:
  void impact(ImpactStyle /*style*/) override {}
  void playSystemSound(std::uint32_t /*sound*/) override {}
  void disposeSystemSound(std::uint32_t /*sound*/) override {}
};

class AbsentTorch final : public Torch {
 public:
  bool hasTorch() const override { return false; }
  bool hasFlash() const override { return false; }
  void setOn(bool /*on*/) override {}
};

/// Never ready to play.
class AbsentVideoPlayer final : public VideoPlayer {
 public:
  explicit AbsentVideoPlayer(RunLoop& loop) : loop_(loop) {}
  void load(const VideoItem& /*item*/) override {}
  void play() override {}
  void pause() override {}
  bool isReadyToPlay() const override { return false; }
  bool isItemReadyToPlay() const override { return false; }
  void setPreferredForwardBuffer(Duration /*duration*/) override {}
  void seek(Duration /*position*/, Task completion) override { loop_.soon(std::move(completion)); }

 private:
  RunLoop& loop_;
};

}  // namespace halvora
