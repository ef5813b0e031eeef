// SPDX-License-Identifier: Apache-2.0
// An open file and what its boxes claim: what every demuxer of one asset reads from. Never changes;
// any thread.
#pragma once

#include <memory>
#include <string>

#include "adapters/ffmpeg/byte_source.h"
#include "adapters/ffmpeg/mp4_outline.h"

namespace halvora {

struct MovieFile {
  std::unique_ptr<const ByteSource> bytes;
  Mp4Outline outline;

  /// Null, and a short `reason` if one is asked for, where the file must not be read.
  static std::unique_ptr<const MovieFile> open(const std::string& path, std::string* reason);
  /// Like the source's, with the hidden boxes under a name that nobody looks into.
  std::size_t read(std::uint64_t offset, std::span<std::uint8_t> into) const;
};

}  // namespace halvora
