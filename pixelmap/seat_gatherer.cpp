// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_gatherer.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "pixelmap/frame_time.h"
#include "pixelmap/seat_pixel.h"

namespace halvora {

namespace {

// Seats that are transposed together: a line of the cache of each frame.
constexpr std::size_t kTileSeats = 16;

}  // namespace

SeatGatherer::SeatGatherer(std::span<const SeatPosition> seats, const SeatTables& tables)
    : seats_(seats),
      tables_(tables),
      positions_(seats.size()),
      block_(kBlockFrames * seats.size()) {
  frames_.reserve(kBlockFrames);
}

void SeatGatherer::take(const VideoFrame& frame) {
  const auto number = pixelMapFrameAt(frame.seconds(), tables_.frameCount);
  if (!number || frame.width() == 0 || frame.height() == 0) return;
  place(frame.width(), frame.height());
  lowestFrame_ = std::min(lowestFrame_, *number);
  // Of samples with one number the last one counts.
  if (frames_.empty() || frames_.back() != *number) {
    if (frames_.size() == kBlockFrames) flush(1);
    frames_.push_back(*number);
  }
  frame.sample(positions_, blockRow(frames_.size() - 1));
}

void SeatGatherer::place(std::uint32_t width, std::uint32_t height) {
  if (width == width_ && height == height_) return;
  width_ = width;
  height_ = height;
  std::transform(seats_.begin(), seats_.end(), positions_.begin(), [&](const SeatPosition& seat) {
    return seatPixel(seat.x, seat.y, width, height);
  });
}

int SeatGatherer::settle(int firstBehind) {
  if (!frames_.empty()) {
    const int number = frames_.back();
    // A frame below theirs has been filled by this stretch itself, from an earlier sample.
    const bool isTheirs =
        number >= firstBehind && tables_.filled[static_cast<std::size_t>(number)] != 0;
    if (!isTheirs) flush(0);
  }
  return std::min(lowestFrame_, firstBehind);
}

void SeatGatherer::flush(std::size_t kept) {
  if (frames_.size() <= kept) return;
  const std::size_t count = frames_.size() - kept;
  for (std::size_t seat = 0; seat < seats_.size(); seat += kTileSeats) {
    writeSeats(seat, std::min(kTileSeats, seats_.size() - seat), count);
  }
  for (std::size_t at = 0; at < count; ++at) {
    tables_.filled[static_cast<std::size_t>(frames_[at])] = 1;
  }
  for (std::size_t at = 0; at < kept; ++at) {
    frames_[at] = frames_[count + at];
    std::ranges::copy(blockRow(count + at), blockRow(at).begin());
  }
  frames_.resize(kept);
}

void SeatGatherer::writeSeats(std::size_t first, std::size_t count, std::size_t frames) {
  std::array<std::array<std::uint32_t, kBlockFrames>, kTileSeats> tile;
  for (std::size_t at = 0; at < frames; ++at) {
    const std::uint32_t* from = block_.data() + at * seats_.size() + first;
    for (std::size_t seat = 0; seat < count; ++seat) tile[seat][at] = from[seat];
  }
  const bool isRun = frames_[frames - 1] - frames_[0] == static_cast<int>(frames) - 1 &&
                     std::is_sorted(frames_.begin(), frames_.begin() + static_cast<int>(frames));
  for (std::size_t seat = 0; seat < count; ++seat) {
    std::uint32_t* row = tables_.row(first + seat);
    if (isRun) {
      std::memcpy(row + frames_[0], tile[seat].data(), frames * sizeof(std::uint32_t));
      continue;
    }
    for (std::size_t at = 0; at < frames; ++at) row[frames_[at]] = tile[seat][at];
  }
}

}  // namespace halvora
