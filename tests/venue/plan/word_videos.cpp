// SPDX-License-Identifier: Apache-2.0
#include "tests/venue/plan/word_videos.h"

#include <ios>
#include <optional>
#include <sstream>
#include <utility>
#include <vector>

#include "adapters/standard/standard_files.h"

namespace halvora {

namespace {

constexpr std::size_t kLargestVideo = 1 << 20;

std::optional<VirtualVideo> parsed(const std::string& text) {
  std::istringstream stream(text);
  std::string magic;
  VirtualVideo video;
  int frames = 0;
  stream >> magic >> video.width >> video.height >> frames;
  if (!stream || magic != "words") return std::nullopt;
  video.durationSeconds = frames / 30.0;
  std::vector<std::uint32_t> words;
  const std::size_t pixels = std::size_t{video.width} * video.height;
  for (std::uint32_t word = 0; stream >> std::hex >> word;) {
    words.push_back(word);
    if (words.size() < pixels) continue;
    const double seconds = static_cast<double>(video.frames.size()) / 30;
    video.frames.push_back({seconds, [words, width = video.width](PixelPosition place) {
                              return words[std::size_t{place.y} * width + place.x];
                            }});
    words.clear();
  }
  return video;
}

}  // namespace

std::unique_ptr<VideoAsset> WordVideos::open(const std::string& path, std::string* reason) const {
  const auto text = readFile(path, kLargestVideo);
  auto video = text ? parsed(*text) : std::nullopt;
  const std::lock_guard lock(mutex_);
  if (video) {
    videos_.put(path, std::move(*video));
    return videos_.open(path, reason);
  }
  if (reason != nullptr) *reason = "no video track in it";
  return nullptr;
}

}  // namespace halvora
