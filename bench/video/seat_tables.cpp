// SPDX-License-Identifier: Apache-2.0
// Builds the tables of N seats of a video in one pass and keeps them in memory, nothing else: what
// is measured from outside is decoding and gathering. Prints the number of frames and a sum over
// the tables, which tells whether two ways to build them agree.
//   halvora_seat_tables VIDEO SEATS THREADS
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/standard/thread_workers.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/seat_lut_builder.h"

namespace {

using namespace halvora;

// Spread over a picture of 1280 × 720, row by row as a hall's seats are.
std::vector<SeatPosition> spreadSeats(std::size_t count) {
  constexpr std::size_t kPixels = 1280 * 720;
  std::vector<SeatPosition> seats;
  for (std::size_t at = 0; at < count; ++at) {
    const std::size_t pixel = (at * kPixels + kPixels / 2) / count;
    seats.push_back(
        {static_cast<std::int64_t>(pixel % 1280), static_cast<std::int64_t>(pixel / 1280)});
  }
  return seats;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 4) {
    std::fputs("usage: halvora_seat_tables VIDEO SEATS THREADS\n", stderr);
    return 2;
  }
  const auto asset = FfmpegVideoAssets().open(arguments[1]);
  if (!asset) {
    std::fprintf(stderr, "%s: no video\n", arguments[1]);
    return 1;
  }
  const auto seats = spreadSeats(std::strtoul(arguments[2], nullptr, 10));
  const int frames = pixelMapFrameCount(asset->durationSeconds());
  ThreadWorkers workers(std::atoi(arguments[3]));
  // Pages that the system hands out zeroed, as a mapped table's are.
  auto* table = static_cast<std::uint32_t*>(
      std::calloc(seats.size() * static_cast<std::size_t>(frames), sizeof(std::uint32_t)));
  if (table == nullptr) return 1;
  const std::span<std::uint32_t> words(table, seats.size() * static_cast<std::size_t>(frames));
  if (buildSeatTables(*asset, seats, words, {.workers = workers}) != BuildEnd::built) return 1;
  std::uint32_t sum = 0;
  for (std::size_t seat = 0; seat < seats.size(); ++seat) {
    const std::uint32_t* row = words.data() + seat * static_cast<std::size_t>(frames);
    for (int frame = 0; frame < frames; frame += 97) sum = sum * 31 + row[frame];
  }
  std::printf("%d frames, %08X\n", frames, sum);
  std::free(table);
  return 0;
}
