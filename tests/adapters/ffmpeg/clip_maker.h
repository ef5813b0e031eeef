// SPDX-License-Identifier: Apache-2.0
// Clips for tests, made by the `ffmpeg` command out of pictures that the test computes, and what
// that command decodes from a clip. Files live in the folder of one test. What the command makes is
// kept in build/clips of the source tree, so that it is made once for all tests and builds.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "halvora/platform/video_asset.h"
#include "tests/adapters/standard/temporary_folder.h"

namespace halvora {

/// Pictures as bytes, in a pixel format of the command.
struct RawVideo {
  int width = 64;
  int height = 64;
  int frames = 30;
  int fps = 30;
  std::string format = "yuv420p";
  std::string bytes;
};

/// A texture that moves, so that pictures are made from others, with the frame's number as the gray
/// level of its upper left corner. 60 frames at most.
RawVideo movingTexture(int frames, int fps = 30, int width = 64, int height = 64);
/// The number of the frame that such a word is from, if the encoder was almost exact.
int frameNumberOf(std::uint32_t cornerWord);

class ClipMaker {
 public:
  /// Encodes a video; `arguments` are those of the output. Fails the test where that fails.
  std::string encode(const std::string& name, const RawVideo& video,
                     const std::string& arguments) const;
  /// The command with any arguments; `%` stands for the folder and a slash, the last one begins the
  /// name of what is made. The same arguments and files in the folder make the same.
  void run(const std::string& arguments) const;
  /// What the command decodes of a file in the folder: all pictures of the clip's own pixel format,
  /// one after the other.
  std::string decode(const std::string& path) const;
  std::string pathOf(const std::string& name) const { return folder_.path() + "/" + name; }
  /// A copy of a file with its bytes changed.
  std::string changed(const std::string& path, const std::string& name,
                      const std::function<void(std::string&)>& change) const;

 private:
  /// Where what these arguments make is kept.
  std::filesystem::path keptPath(const std::string& arguments) const;
  bool make(const std::string& arguments) const;

  TemporaryFolder folder_;
};

/// All that a reader hands out of a frame.
struct SeenFrame {
  double seconds = 0;
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  /// Of every pixel, row by row.
  std::vector<std::uint32_t> words;

  bool operator==(const SeenFrame&) const = default;
};

SeenFrame seen(const VideoFrame& frame);
std::vector<SeenFrame> framesOf(FrameReader& reader);
/// Of all readers, one after the other.
std::vector<SeenFrame> framesOf(const std::vector<std::unique_ptr<FrameReader>>& readers);

}  // namespace halvora
