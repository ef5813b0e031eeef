// SPDX-License-Identifier: Apache-2.0
// Pictures, videos, clips and message codes, served by a host's callbacks. What the host has not is
// never there. Owned by a phone; main thread.
#pragma once

#include <memory>
#include <string>

#include "bindings/c/halvora.h"
#include "bindings/c/host_needs.h"
#include "halvora/platform/image.h"
#include "halvora/platform/message_codes.h"
#include "halvora/platform/run_loop.h"
#include "halvora/platform/video_asset.h"
#include "halvora/platform/video_player.h"

namespace halvora {

/// Whether the size is that of a version, and whoever opens something can also read and close it.
bool isComplete(const halvora_media& media);

class HostPictures final : public ImageDecoder {
 public:
  explicit HostPictures(const halvora_media& media) : media_(media) {}
  std::optional<Image> decode(std::string_view bytes) const override;

 private:
  const halvora_media& media_;
};

class HostVideos final : public VideoAssets {
 public:
  explicit HostVideos(const halvora_media& media) : media_(media) {}
  std::unique_ptr<VideoAsset> open(const std::string& path, std::string* reason) const override;

 private:
  const halvora_media& media_;
};

class HostPlayer final : public VideoPlayer {
 public:
  HostPlayer(RunLoop& loop, const halvora_media& media, int number)
      : loop_(loop), media_(media), number_(number) {}
  void load(const VideoItem& item) override;
  void play() override { setPlaying(true); }
  void pause() override { setPlaying(false); }
  bool isReadyToPlay() const override { return media_.load_clip != nullptr; }
  bool isItemReadyToPlay() const override;
  void setPreferredForwardBuffer(Duration /*duration*/) override {}
  void seek(Duration position, Task completion) override;

 private:
  void setPlaying(bool isPlaying);

  RunLoop& loop_;
  const halvora_media& media_;
  const int number_;
  bool hasClip_ = false;
};

class HostCodes final : public MessageCodes {
 public:
  explicit HostCodes(const Host& host) : host_(host) {}
  std::unique_ptr<MessageCode> withKey(const ShowKey& key) const override;

 private:
  const Host& host_;
};

}  // namespace halvora
