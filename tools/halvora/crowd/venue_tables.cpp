// SPDX-License-Identifier: Apache-2.0
#include "tools/halvora/crowd/venue_tables.h"

#include "pixelmap/frame_time.h"

namespace halvora {

VenueTables::VenueTables(std::span<const SeatPosition> seats) {
  for (const SeatPosition& seat : seats) {
    if (rows_.try_emplace(seat, seats_.size()).second) seats_.push_back(seat);
  }
}

VenueTables::End VenueTables::build(const PixelMapVideoEntry& map, const VideoAssets& videos,
                                    const BuildControl& control, const Room& room) {
  const auto asset = videos.open(map.videoURL);
  if (!asset) return End::noVideo;
  const int frameCount = pixelMapFrameCount(asset->durationSeconds());
  const std::size_t size = seats_.size() * static_cast<std::size_t>(frameCount);
  const std::span<std::uint32_t> words = room(size);
  if (words.size() != size) return End::noRoom;
  const BuildEnd end = buildSeatTables(*asset, seats_, words, control);
  if (end == BuildEnd::cancelled) return End::cancelled;
  if (end == BuildEnd::noFrames) return End::noVideo;
  blocks_[map.videoURL] = {words, frameCount};
  return End::built;
}

SeatLut VenueTables::find(std::string_view videoURL, SeatPosition seat) const {
  const auto block = blocks_.find(videoURL);
  const auto row = rows_.find(seat);
  if (block == blocks_.end() || row == rows_.end()) return nullptr;
  const auto frames = static_cast<std::size_t>(block->second.frameCount);
  return SeatLut(block->second.words.subspan(row->second * frames, frames), nullptr);
}

int VenueTables::frameCount(std::string_view videoURL) const {
  const auto block = blocks_.find(videoURL);
  return block == blocks_.end() ? 0 : block->second.frameCount;
}

}  // namespace halvora
