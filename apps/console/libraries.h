// SPDX-License-Identifier: Apache-2.0
// What the demo reads with: real files, pictures and videos. Made once by the program; shows are
// handed it and must go before it does.
#pragma once

#include <string>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/thread_workers.h"

namespace halvora {

struct DemoLibraries {
  ExactJsonReader json = {};
  PictureDecoder images = {};
  FfmpegVideoAssets videos = {};
  LinuxFiles files = {};
  ThreadWorkers workers = ThreadWorkers();
  /// Where seat tables are kept from one start to the next; empty for nowhere.
  std::string documents = {};
};

}  // namespace halvora
