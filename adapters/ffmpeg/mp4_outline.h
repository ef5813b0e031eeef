// SPDX-License-Identifier: Apache-2.0
// What the boxes of an MP4 file claim, read before a demuxer trusts them: the tables are checked
// against the size of the file, and every box that is not needed for reading the first video track
// is listed, so that it can be hidden from the demuxer. Any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "adapters/ffmpeg/byte_source.h"

namespace halvora {

struct Mp4Outline {
  /// A track of more samples is refused.
  static constexpr std::uint64_t kMostSamples = 2'000'000;
  static constexpr std::uint64_t kMostEdits = 1'000;
  /// Each edit may visit every sample.
  static constexpr std::uint64_t kMostEditedSamples = 4'000'000;
  static constexpr int kMostBoxes = 1'000'000;
  static constexpr int kMostTracks = 200;

  std::uint32_t trackId = 0;
  /// Of the whole file; 0 where nothing in it says.
  double durationSeconds = 0;
  /// Parts of the track that its edit list presents one after the other.
  std::uint64_t edits = 0;
  /// Kinds of sample; a decoder is set up for the first.
  std::uint32_t sampleDescriptions = 0;
  /// Of the track's last sample, in units of the track.
  std::uint32_t lastSampleDuration = 0;
  /// Where the four letters of boxes are that are not to be looked into; ascending.
  std::vector<std::uint64_t> hiddenTypes;
};

/// None, and a short `reason` if one is asked for, where the file must not be read.
std::optional<Mp4Outline> readMp4Outline(const ByteSource& source, std::string* reason);

}  // namespace halvora
