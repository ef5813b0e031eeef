// SPDX-License-Identifier: Apache-2.0
#include "pixelmap/seat_lut_builder.h"

#include <algorithm>
#include <atomic>
#include <deque>
#include <memory>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "pixelmap/frame_channel.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/pixel_map_assets.h"
#include "pixelmap/seat_gatherer.h"

namespace halvora {

namespace {

// From so many seats on, gathering a frame takes long enough to be worth a thread of its own.
constexpr std::size_t kSeatsGatheredApart = 512;

// What the stretches of one build have in common besides the tables.
class Watch {
 public:
  explicit Watch(const BuildControl& control) : control_(control) {}

  bool mayGoOn() {
    if (control_.isCancelled && control_.isCancelled()) isCancelled_ = true;
    return !isCancelled_;
  }
  void frameDone() {
    const int done = framesDone_.fetch_add(1) + 1;
    if (control_.onFrame) control_.onFrame(done);
  }
  bool isCancelled() const { return isCancelled_; }

 private:
  const BuildControl& control_;
  std::atomic<bool> isCancelled_{false};
  std::atomic<int> framesDone_{0};
};

// One stretch of the video on its way into the tables.
class Stretch {
 public:
  Stretch(std::unique_ptr<FrameReader> reader, std::span<const SeatPosition> seats,
          const SeatTables& tables, Watch& watch)
      : reader_(std::move(reader)), gatherer_(seats, tables), watch_(watch) {}

  void decodeAndGather() {
    while (const auto frame = next()) gatherer_.take(*frame);
    gatherer_.end();
  }
  void decode() {
    while (auto frame = next()) channel_.push(std::move(frame));
    channel_.close();
  }
  void gather() {
    while (const auto frame = channel_.pop()) gatherer_.take(*frame);
    gatherer_.end();
  }

  int settle(int firstBehind) { return gatherer_.settle(firstBehind); }

 private:
  std::unique_ptr<VideoFrame> next() {
    auto frame = watch_.mayGoOn() ? reader_->next() : nullptr;
    if (frame) watch_.frameDone();
    return frame;
  }

  std::unique_ptr<FrameReader> reader_;
  SeatGatherer gatherer_;
  FrameChannel channel_;
  Watch& watch_;
};

// Every frame that was not filled takes the colour of the last filled one before it; those before
// the first take the first one's.
void fillGaps(const SeatTables& tables, std::size_t seats) {
  const auto firstFilled = std::find(tables.filled.begin(), tables.filled.end(), 1);
  if (std::find(tables.filled.begin(), tables.filled.end(), 0) == tables.filled.end()) return;
  std::vector<std::pair<std::size_t, std::size_t>> copies;
  auto source = static_cast<std::size_t>(firstFilled - tables.filled.begin());
  for (std::size_t frame = 0; frame < tables.filled.size(); ++frame) {
    if (tables.filled[frame] != 0) {
      source = frame;
    } else {
      copies.emplace_back(frame, source);
    }
  }
  for (std::size_t seat = 0; seat < seats; ++seat) {
    std::uint32_t* row = tables.row(seat);
    for (const auto& [to, from] : copies) row[to] = row[from];
  }
}

}  // namespace

BuildEnd buildSeatTables(const VideoAsset& asset, std::span<const SeatPosition> seats,
                         std::span<std::uint32_t> table, const BuildControl& control) {
  const int frameCount = pixelMapFrameCount(asset.durationSeconds());
  std::vector<std::uint8_t> filled(static_cast<std::size_t>(frameCount), 0);
  const SeatTables tables{table, frameCount, filled};

  Watch watch(control);

  // Not a vector: a stretch stays where it is.
  std::deque<Stretch> stretches;
  for (auto& reader : asset.readers(control.workers.count())) {
    stretches.emplace_back(std::move(reader), seats, tables, watch);
  }

  const bool isApart = control.workers.areParallel() && seats.size() >= kSeatsGatheredApart;
  std::vector<Task> tasks;
  for (Stretch& stretch : stretches) {
    if (isApart) {
      tasks.emplace_back([&stretch] { stretch.decode(); });
      tasks.emplace_back([&stretch] { stretch.gather(); });
    } else {
      tasks.emplace_back([&stretch] { stretch.decodeAndGather(); });
    }
  }
  control.workers.run(tasks);
  if (watch.isCancelled()) return BuildEnd::cancelled;

  int firstBehind = frameCount;
  for (auto stretch = stretches.rbegin(); stretch != stretches.rend(); ++stretch) {
    firstBehind = stretch->settle(firstBehind);
  }
  if (std::find(filled.begin(), filled.end(), 1) == filled.end()) return BuildEnd::noFrames;
  fillGaps(tables, seats.size());
  return BuildEnd::built;
}

SeatLut buildPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoURL,
                                        SeatPosition seat, const BuildControl& control) {
  if (videoURL.empty()) return nullptr;
  const auto asset = videos.open(videoURL);
  if (!asset) return nullptr;
  try {
    const int frameCount = pixelMapFrameCount(asset->durationSeconds());
    std::vector<std::uint32_t> words(static_cast<std::size_t>(frameCount), kNoColourWord);
    if (buildSeatTables(*asset, {&seat, 1}, words, control) != BuildEnd::built) return nullptr;
    return SeatLut(std::move(words));
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

SeatLut buildSeedPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoURL,
                                            SeatPosition seat, std::int64_t centerFrame,
                                            std::int64_t radius) {
  if (videoURL.empty()) return nullptr;
  const auto asset = videos.open(videoURL);
  if (!asset) return nullptr;
  const auto generator = asset->generator();
  if (!generator) return nullptr;
  const int frameCount = pixelMapFrameCount(asset->durationSeconds());
  const int center = normalizedPixelMapFrameIndex(centerFrame, frameCount);
  const auto reach =
      static_cast<int>(std::min<std::int64_t>(std::max<std::int64_t>(radius, 1), frameCount - 1));

  // Which frames are visited is what counts; in ascending order they cost least.
  std::vector<std::uint8_t> isVisited(static_cast<std::size_t>(frameCount), 0);
  for (int distance = 0; distance <= reach; ++distance) {
    for (const int frame : {center - distance, center + distance}) {
      isVisited[static_cast<std::size_t>(normalizedPixelMapFrameIndex(frame, frameCount))] = 1;
    }
  }
  std::vector<std::uint32_t> words(static_cast<std::size_t>(frameCount), kNoColourWord);
  bool hasAny = false;
  for (int frame = 0; frame < frameCount; ++frame) {
    const auto at = static_cast<std::size_t>(frame);
    if (isVisited[at] == 0) continue;
    const std::optional<Image> image = generator->imageAt(pixelMapFrameTime(frame));
    if (!image) continue;
    const MaybeColour colour = PixelMapAssets::sampleColorFromImage(*image, seat.x, seat.y);
    if (!colour) continue;
    words[at] = wordOfColour(*colour);
    hasAny = true;
  }
  if (!hasAny) return nullptr;
  return SeatLut(std::move(words));
}

}  // namespace halvora
