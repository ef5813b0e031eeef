// SPDX-License-Identifier: Apache-2.0
// Any bytes as a video: whole tables are built of it, in one stretch or in several, or it is
// refused with a reason.
#include <algorithm>
#include <array>
#include <memory>
#include <string>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/virtual/virtual_video.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/seat_lut_builder.h"
#include "tests/fuzz/fuzz_targets.h"

namespace halvora {

namespace {

// A file that lies in no folder: the library wants a path, and a disk would only be slow.
class MemoryFile {
 public:
  explicit MemoryFile(FuzzBytes bytes) : file_(memfd_create("clip", MFD_CLOEXEC)) {
    std::size_t done = 0;
    while (file_ >= 0 && done < bytes.size()) {
      const ssize_t written = write(file_, bytes.data() + done, bytes.size() - done);
      require(written > 0, "a file in memory");
      done += static_cast<std::size_t>(written);
    }
  }
  ~MemoryFile() { close(file_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

/// Several stretches, one after the other on this thread: the order of a run is the input's alone.
class Stretches final : public Workers {
 public:
  int count() const override { return 3; }
  bool areParallel() const override { return false; }
  WorkEnd run(std::span<Task> tasks) override {
    WorkEnd end = WorkEnd::done;
    for (Task& task : tasks) {
      if (!ranToItsEnd(task)) end = WorkEnd::failed;
    }
    return end;
  }
};

constexpr std::array<SeatPosition, 4> kSeats = {{{0, 0}, {5, 3}, {15, 15}, {9000, -7}}};
/// A claim of hours is honest in a long video; here it would only cost time.
constexpr int kMostFrames = 3000;

using Words = std::vector<std::uint32_t>;

BuildEnd buildWith(const VideoAsset& asset, Workers& workers, Words& table) {
  return buildSeatTables(asset, kSeats, table, {.workers = workers});
}

}  // namespace

int fuzzVideo(FuzzBytes bytes) {
  const MemoryFile file(bytes);
  std::string reason;
  const std::unique_ptr<VideoAsset> asset = FfmpegVideoAssets().open(file.path(), &reason);
  require((asset == nullptr) != reason.empty(), "a video is refused with a reason");
  if (asset == nullptr) return 0;
  const int frames = pixelMapFrameCount(asset->durationSeconds());
  require(frames >= 1 && frames <= kMostPixelMapFrames, "a table has a bounded number of frames");
  if (frames > kMostFrames) return 0;

  InlineWorkers one;
  Words table(kSeats.size() * static_cast<std::size_t>(frames));
  const BuildEnd end = buildWith(*asset, one, table);
  require(end != BuildEnd::cancelled, "nobody cancels");
  if (end == BuildEnd::built) {
    const auto isOpaqueOrNone = [](std::uint32_t word) { return word == 0 || word >> 24 == 0xFF; };
    require(std::ranges::all_of(table, isOpaqueOrNone), "a colour is opaque");
    require(std::ranges::any_of(table, [](std::uint32_t word) { return word != 0; }),
            "a table that is built has colours");
  }
  // A table of stretches costs as much again. What is damaged may look different to them.
  if (bytes.size() % 4 == 0) {
    Stretches several;
    Words again(table.size());
    require(buildWith(*asset, several, again) != BuildEnd::cancelled, "nobody cancels");
  }
  return 0;
}

}  // namespace halvora
