// SPDX-License-Identifier: Apache-2.0
// A Qt platform with the libraries that a real one has, and none of the system's services. Main
// thread.
#pragma once

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/image/picture_decoder.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/qt/qt_platform.h"

namespace halvora {

struct QtPhoneLibraries {
  const ExactJsonReader json;
  LinuxFiles files;
  const PictureDecoder images;
  const FfmpegVideoAssets videoAssets;
};

class QtPhone : private QtPhoneLibraries, public QtPlatform {
 public:
  explicit QtPhone(const QtPlatformOptions& options)
      : QtPlatform(options, {.json = QtPhoneLibraries::json,
                             .files = QtPhoneLibraries::files,
                             .images = QtPhoneLibraries::images,
                             .videoAssets = QtPhoneLibraries::videoAssets}) {}
};

}  // namespace halvora
