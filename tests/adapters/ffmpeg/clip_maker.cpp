// SPDX-License-Identifier: Apache-2.0
#include "tests/adapters/ffmpeg/clip_maker.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>
#include <system_error>

#include <gtest/gtest.h>
#include <unistd.h>

#include "tests/support/source_tree.h"

namespace halvora {
namespace {

namespace fs = std::filesystem;

constexpr int kCorner = 16;
// Far enough apart to survive an encoder that is almost exact.
constexpr int kFirstLevel = 20;
constexpr int kLevelStep = 3;

std::string bytesOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// FNV-1a: the same in every build.
std::uint64_t hashOf(const std::string& bytes) {
  std::uint64_t hash = 0xCBF29CE484222325;
  for (const char byte : bytes) {
    hash = (hash ^ static_cast<std::uint8_t>(byte)) * 0x100000001B3;
  }
  return hash;
}

// Of the command, which another version replaces.
std::string commandVersion() {
  std::error_code error;
  const auto changed = fs::last_write_time("/usr/bin/ffmpeg", error);
  return error ? ""
               : std::to_string(std::chrono::duration_cast<std::chrono::milliseconds>(
                                    changed.time_since_epoch())
                                    .count());
}

// A number without a pattern, the same for the same place.
unsigned int textureAt(unsigned int x, unsigned int y) {
  unsigned int value = x * 374761393U + y * 668265263U;
  value = (value ^ value >> 13) * 1274126177U;
  return value ^ value >> 16;
}

}  // namespace

RawVideo movingTexture(int frames, int fps, int width, int height) {
  RawVideo video{width, height, frames, fps, "yuv420p", {}};
  for (int frame = 0; frame < frames; ++frame) {
    const auto level = static_cast<char>(kFirstLevel + frame * kLevelStep);
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        const auto moved = static_cast<unsigned int>(x + 3 * frame);
        const auto texture = 40 + textureAt(moved / 2, static_cast<unsigned int>(y)) % 160;
        const bool isCorner = x < kCorner && y < kCorner;
        video.bytes.push_back(isCorner ? level : static_cast<char>(texture));
      }
    }
    const auto chroma = static_cast<std::size_t>((width + 1) / 2 * ((height + 1) / 2));
    video.bytes.append(chroma, static_cast<char>(128));
    video.bytes.append(chroma, static_cast<char>(128));
  }
  return video;
}

int frameNumberOf(std::uint32_t cornerWord) {
  const double luma = static_cast<double>(cornerWord & 0xFF) * 219 / 255 + 16;
  return static_cast<int>(std::floor((luma - kFirstLevel) / kLevelStep + 0.5));
}

void ClipMaker::run(const std::string& arguments) const {
  const std::string made = pathOf(arguments.substr(arguments.rfind('%') + 1));
  const fs::path kept = keptPath(arguments);
  std::error_code error;
  if (fs::copy_file(kept, made, fs::copy_options::overwrite_existing, error)) return;
  if (!make(arguments)) return;
  // Others make the same at the same time, and nobody sees half of it.
  const fs::path unfinished = kept.string() + "." + std::to_string(getpid());
  fs::create_directories(kept.parent_path(), error);
  if (fs::copy_file(made, unfinished, error)) fs::rename(unfinished, kept, error);
}

fs::path ClipMaker::keptPath(const std::string& arguments) const {
  std::string recipe = commandVersion();
  recipe += arguments;
  std::istringstream words(arguments.substr(0, arguments.rfind('%')));
  for (std::string word; words >> word;) {
    if (word.starts_with('%')) recipe += bytesOf(pathOf(word.substr(1)));
  }
  return sourceTree() + "/build/clips/" + std::to_string(hashOf(recipe));
}

bool ClipMaker::make(const std::string& arguments) const {
  std::string command = "ffmpeg -nostdin -v error -y " + arguments;
  for (std::size_t at = 0; (at = command.find('%', at)) != std::string::npos;) {
    command.replace(at, 1, folder_.path() + "/");
  }
  // Its encoders' own words go to stderr whatever the level.
  command += " 2> " + folder_.path() + "/messages";
  const bool isMade = std::system(command.c_str()) == 0;
  EXPECT_TRUE(isMade) << command << "\n" << bytesOf(pathOf("messages"));
  return isMade;
}

std::string ClipMaker::encode(const std::string& name, const RawVideo& video,
                              const std::string& arguments) const {
  folder_.write("raw", video.bytes);
  run("-f rawvideo -pix_fmt " + video.format + " -s " + std::to_string(video.width) + "x" +
      std::to_string(video.height) + " -r " + std::to_string(video.fps) + " -i %raw " + arguments +
      " %" + name);
  return pathOf(name);
}

std::string ClipMaker::decode(const std::string& path) const {
  run("-i %" + fs::path(path).filename().string() +
      " -map 0:v:0 -vsync passthrough -f rawvideo %decoded");
  return bytesOf(pathOf("decoded"));
}

std::string ClipMaker::changed(const std::string& path, const std::string& name,
                               const std::function<void(std::string&)>& change) const {
  std::string bytes = bytesOf(path);
  change(bytes);
  return folder_.write(name, bytes);
}

SeenFrame seen(const VideoFrame& frame) {
  std::vector<PixelPosition> positions;
  for (std::uint32_t y = 0; y < frame.height(); ++y) {
    for (std::uint32_t x = 0; x < frame.width(); ++x) positions.push_back({x, y});
  }
  SeenFrame all{frame.seconds(), frame.width(), frame.height(), {}};
  all.words.resize(positions.size());
  frame.sample(positions, all.words);
  return all;
}

std::vector<SeenFrame> framesOf(FrameReader& reader) {
  std::vector<SeenFrame> frames;
  while (const auto frame = reader.next()) frames.push_back(seen(*frame));
  return frames;
}

std::vector<SeenFrame> framesOf(const std::vector<std::unique_ptr<FrameReader>>& readers) {
  std::vector<SeenFrame> frames;
  for (const auto& reader : readers) {
    auto more = framesOf(*reader);
    std::move(more.begin(), more.end(), std::back_inserter(frames));
  }
  return frames;
}

}  // namespace halvora
