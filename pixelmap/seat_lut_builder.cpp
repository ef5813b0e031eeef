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
    return !isCancelled_ && !hasFailed_;
  }
  void frameDone() {
    const int done = framesDone_.fetch_add(1) + 1;
    if (control_.onFrame) control_.onFrame(done);
  }
  bool isCancelled() const { return isCancelled_; }

  /// Runs one stretch's share. What it throws ends all stretches at their next frame.
  template <class Work>
  void guard(const Work& work) noexcept {
    try {
      work();
    } catch (...) {
      hasFailed_ = true;
    }
  }
  bool hasFailed() const { return hasFailed_; }

 private:
  const BuildControl& control_;
  std::atomic<bool> isCancelled_{false};
  std::atomic<bool> hasFailed_{false};
  std::atomic<int> framesDone_{0};
};

// One stretch of the video on its way into the tables.
class Stretch {
 public:
  Stretch(std::unique_ptr<FrameReader> reader, std::span<const SeatPosition> seats,
          const SeatTables& tables, Watch& watch)
      : reader_(std::move(reader)), gatherer_(seats, tables), watch_(watch) {}

  void decodeAndGather() {
    watch_.guard([this] {
      while (const auto frame = next()) gatherer_.take(*frame);
      gatherer_.end();
    });
  }
  void decode() {
    watch_.guard([this] {
      for (auto frame = next(); frame && channel_.push(std::move(frame)); frame = next()) {
      }
    });
    channel_.close();
  }
  void gather() {
    watch_.guard([this] {
      while (const auto frame = channel_.pop()) gatherer_.take(*frame);
      gatherer_.end();
    });
    channel_.abandon();
  }

  int settle(int firstBehind) { return gatherer_.settle(firstBehind); }
  bool hasLostPictures() const { return reader_->hasLostPictures(); }

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

// Every stretch from end to end. Where there are no threads for that, this one does it all.
void run(std::deque<Stretch>& stretches, Workers& workers, bool isApart) {
  std::vector<Task> tasks;
  if (isApart) {
    for (Stretch& stretch : stretches) {
      tasks.emplace_back([&stretch] { stretch.decode(); });
      tasks.emplace_back([&stretch] { stretch.gather(); });
    }
    if (workers.run(tasks) != WorkEnd::notBegun) return;
    tasks.clear();
  }
  for (Stretch& stretch : stretches) {
    tasks.emplace_back([&stretch] { stretch.decodeAndGather(); });
  }
  runAnyway(workers, tasks);
}

// What came of reading the whole video once.
struct Reading {
  BuildEnd end;
  bool hasLostPictures = false;
};

Reading readOnce(const VideoAsset& asset, std::span<const SeatPosition> seats,
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

  run(stretches, control.workers,
      control.workers.areParallel() && seats.size() >= kSeatsGatheredApart);
  if (watch.isCancelled()) return {BuildEnd::cancelled};
  if (watch.hasFailed()) return {BuildEnd::noMemory};

  const bool hasLost = std::ranges::any_of(
      stretches, [](const Stretch& stretch) { return stretch.hasLostPictures(); });
  int firstBehind = frameCount;
  for (auto stretch = stretches.rbegin(); stretch != stretches.rend(); ++stretch) {
    firstBehind = stretch->settle(firstBehind);
  }
  if (std::find(filled.begin(), filled.end(), 1) == filled.end()) {
    return {BuildEnd::noFrames, hasLost};
  }
  fillGaps(tables, seats.size());
  return {BuildEnd::built, hasLost};
}

std::uint64_t digestOf(std::span<const std::uint32_t> words) {
  std::uint64_t digest = 0;
  for (const std::uint32_t word : words) {
    digest = (digest ^ word) * 0x9E3779B97F4A7C15U;
    digest ^= digest >> 32;
  }
  return digest;
}

// What a damaged video lacks it lacks every time. What is lost for want of memory is there the next
// time, or something else is lost: a table of that would show the colours of other frames for good.
BuildEnd build(const VideoAsset& asset, std::span<const SeatPosition> seats,
               std::span<std::uint32_t> table, const BuildControl& control) {
  const Reading first = readOnce(asset, seats, table, control);
  if (!first.hasLostPictures) return first.end;
  const std::uint64_t firstTable = digestOf(table);
  const Reading second = readOnce(asset, seats, table, control);
  if (!second.hasLostPictures) return second.end;
  const bool isSame = second.end == first.end && digestOf(table) == firstTable;
  return isSame ? second.end : BuildEnd::noMemory;
}

}  // namespace

BuildEnd buildSeatTables(const VideoAsset& asset, std::span<const SeatPosition> seats,
                         std::span<std::uint32_t> table, const BuildControl& control) {
  try {
    return build(asset, seats, table, control);
  } catch (const std::bad_alloc&) {
    return BuildEnd::noMemory;
  }
}

SeatLut buildPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoPath,
                                        SeatPosition seat, const BuildControl& control,
                                        BuildEnd* end) {
  BuildEnd ignored = BuildEnd::noVideo;
  BuildEnd& result = end != nullptr ? *end : ignored;
  result = BuildEnd::noVideo;
  if (videoPath.empty()) return nullptr;
  try {
    const auto asset = videos.open(videoPath);
    if (!asset) return nullptr;
    const int frameCount = pixelMapFrameCount(asset->durationSeconds());
    std::vector<std::uint32_t> words(static_cast<std::size_t>(frameCount), kNoColourWord);
    result = buildSeatTables(*asset, {&seat, 1}, words, control);
    if (result == BuildEnd::built) return SeatLut(std::move(words));
  } catch (const std::bad_alloc&) {
    result = BuildEnd::noMemory;
  }
  return nullptr;
}

SeatLut buildSeedPixelMapSeatLUTForVideoURL(const VideoAssets& videos, const std::string& videoPath,
                                            SeatPosition seat, std::int64_t centerFrame,
                                            std::int64_t radius) {
  if (videoPath.empty()) return nullptr;
  const auto asset = videos.open(videoPath);
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
