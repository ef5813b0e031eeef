// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/venue_tables.h"

#include <algorithm>
#include <bit>
#include <new>

#include "pixelmap/frame_time.h"

namespace halvora {

VenueTables::VenueTables(std::span<const SeatPosition> seats)
    : slots_(std::bit_ceil(std::max<std::size_t>(seats.size() * 2, 2))) {
  for (const SeatPosition& seat : seats) {
    std::uint32_t& row = slots_[slotOf(seat)];
    if (row != 0) continue;
    seats_.push_back(seat);
    row = static_cast<std::uint32_t>(seats_.size());
  }
}

// Where the seat is, or would be.
std::size_t VenueTables::slotOf(SeatPosition seat) const {
  // The upper bits of the products depend on all bits of the position.
  const std::uint64_t hash = (static_cast<std::uint64_t>(seat.x) * 0x9E3779B97F4A7C15U) ^
                             (static_cast<std::uint64_t>(seat.y) * 0xC2B2AE3D27D4EB4FU);
  const std::size_t mask = slots_.size() - 1;
  std::size_t slot = static_cast<std::size_t>(hash >> 32) & mask;
  while (slots_[slot] != 0 && seats_[slots_[slot] - 1] != seat) slot = (slot + 1) & mask;
  return slot;
}

VenueTables::End VenueTables::build(const PixelMapVideoEntry& map, const VideoAssets& videos,
                                    const BuildControl& control, const Room& room) {
  const auto asset = videos.open(map.videoPath);
  if (!asset) return End::noVideo;
  const int frameCount = pixelMapFrameCount(asset->durationSeconds());
  const std::size_t size = seats_.size() * static_cast<std::size_t>(frameCount);
  const std::span<std::uint32_t> words = room(size);
  if (words.size() != size) return End::noRoom;
  switch (buildSeatTables(*asset, seats_, words, control)) {
    case BuildEnd::built:
      blocks_[map.videoPath] = {words, frameCount};
      return End::built;
    case BuildEnd::cancelled:
      return End::cancelled;
    case BuildEnd::noMemory:
      throw std::bad_alloc();
    case BuildEnd::noVideo:
    case BuildEnd::noFrames:
      break;
  }
  return End::noVideo;
}

SeatLut VenueTables::find(std::string_view videoPath, SeatPosition seat) const {
  const Block* const tables = block(videoPath);
  const auto row = rowOf(seat);
  return tables != nullptr && row ? SeatLut(tables->row(*row), nullptr) : nullptr;
}

const VenueTables::Block* VenueTables::block(std::string_view videoPath) const {
  const auto found = blocks_.find(videoPath);
  return found == blocks_.end() ? nullptr : &found->second;
}

std::optional<std::size_t> VenueTables::rowOf(SeatPosition seat) const {
  const std::uint32_t row = slots_[slotOf(seat)];
  return row == 0 ? std::nullopt : std::optional<std::size_t>(row - 1);
}

}  // namespace halvora
