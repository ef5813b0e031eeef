// SPDX-License-Identifier: Apache-2.0
#include "venue/plan/lut_build.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <span>
#include <utility>

#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/mapped_file.h"
#include "adapters/standard/thread_workers.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_files.h"
#include "venue/base/interruptible_videos.h"
#include "venue/base/json_line.h"
#include "venue/base/progress_bar.h"
#include "venue/base/written_files.h"

namespace halvora {

namespace {

namespace fs = std::filesystem;

using Failure = std::optional<CommandResult>;
using Words = std::span<std::uint32_t>;

// The tables of a build, seat by seat, all 0.
class TableRoom {
 public:
  bool make(std::size_t words, const LutBuildRequest& request, const std::string& folder) {
    const std::size_t bytes = words * sizeof(std::uint32_t);
    if (bytes <= request.mostHeapBytes) {
      heap_.resize(words);
      words_ = heap_;
      return true;
    }
    mapped_ = MappedFile::make(folder, bytes);
    if (!mapped_) return false;
    void* memory = mapped_->bytes().data();
    words_ = {static_cast<std::uint32_t*>(memory), words};
    return true;
  }
  Words words() const { return words_; }

 private:
  std::vector<std::uint32_t> heap_;
  std::optional<MappedFile> mapped_;
  Words words_;
};

std::string bytesOf(std::span<const std::uint32_t> words) {
  std::string bytes;
  bytes.reserve(words.size() * 4);
  for (const std::uint32_t word : words) {
    for (int shift = 0; shift < 32; shift += 8) {
      bytes += static_cast<char>(static_cast<std::uint8_t>(word >> shift));
    }
  }
  return bytes;
}

class LutBuild {
 public:
  LutBuild(const LutBuildRequest& request, const Outside& outside)
      : request_(request),
        outside_(outside),
        written_(outside.isInterrupted),
        luts_(written_, json_, request.documents) {}
  ~LutBuild() {
    if (!isDone_) written_.takeBack();
  }
  LutBuild(const LutBuild&) = delete;
  LutBuild& operator=(const LutBuild&) = delete;

  CommandResult run(const Output& output) {
    Failure failure = request_.seed ? buildSeed() : buildAll();
    if (!failure) failure = request_.raw.empty() ? keep() : writeRaw();
    if (failure) return outside_.isInterrupted ? interrupted() : *failure;
    isDone_ = true;
    return output_.empty() ? done() : writeAll(output_, output);
  }

 private:
  Failure buildAll();
  Failure buildSeed();
  Failure keep();
  Failure writeRaw();
  Failure noTable(const std::string& reason) const {
    return failed(request_.video + ": gives no table: " + reason);
  }
  // Its frames, its size and its time may not belong together.
  bool hasVideoChanged() const {
    return luts_.pixelMapVideoFileSignatureForURL(request_.video) != signature_;
  }
  Failure videoChanged() const {
    return failed(request_.video + ": has changed while its tables were built");
  }
  std::span<const std::uint32_t> row(std::size_t seat) const {
    return table_.words().subspan(seat * frameCount_, frameCount_);
  }

  const LutBuildRequest& request_;
  const Outside& outside_;
  const ExactJsonReader json_{};
  WrittenFiles written_;
  const SeatLutFiles luts_;
  const std::optional<VideoFileSignature> signature_ =
      luts_.pixelMapVideoFileSignatureForURL(request_.video);
  std::size_t frameCount_ = 0;
  TableRoom table_;
  SeatLut seed_;
  std::string output_;
  bool isDone_ = false;
};

Failure LutBuild::buildAll() {
  std::string reason;
  const auto asset = outside_.videos.open(request_.video, &reason);
  if (!asset) return noTable(reason);
  const int frames = pixelMapFrameCount(asset->durationSeconds());
  frameCount_ = static_cast<std::size_t>(frames);
  std::string folder;
  if (request_.raw.empty()) {
    // Before the work: a folder that cannot be made should not cost the time of a build.
    folder = luts_.pixelMapSeatLUTDirectoryURLForVideoURL(request_.video);
    if (!written_.makeFolder(folder)) return failed(folder + ": cannot be made");
    luts_.removeLeftovers(request_.video);
  }
  const std::size_t words = request_.seats.size() * frameCount_;
  if (!table_.make(words, request_, folder)) {
    return failed(folder + ": no room for " + std::to_string(words * 4 >> 20) +
                  " MiB of tables while they are built");
  }
  ThreadWorkers workers(request_.threads);
  ProgressBar bar(outside_.terminal, "reading", "frames", frameCount_);
  const BuildEnd end = buildSeatTables(
      *asset, request_.seats, table_.words(),
      {.workers = workers,
       .isCancelled = [this] { return outside_.isInterrupted.load(); },
       .onFrame = [&bar](int count) { bar.show(static_cast<std::uint64_t>(count)); }});
  if (end == BuildEnd::noMemory) throw std::bad_alloc();
  if (end != BuildEnd::built) return noTable("no frame of it can be read");
  return std::nullopt;
}

Failure LutBuild::buildSeed() {
  std::string reason;
  const InterruptibleVideos videos(outside_.videos, outside_.isInterrupted);
  if (!videos.open(request_.video, &reason)) return noTable(reason);
  seed_ = buildSeedPixelMapSeatLUTForVideoURL(videos, request_.video, request_.seats.front(),
                                              request_.seed->center, request_.seed->radius);
  if (!seed_ || outside_.isInterrupted)
    return noTable("none of these frames has a colour for the seat");
  return std::nullopt;
}

Failure LutBuild::keep() {
  ProgressBar bar(outside_.terminal, "saving", "tables", request_.seats.size());
  JsonLine line;
  for (std::size_t at = 0; at < request_.seats.size(); ++at) {
    const SeatPosition seat = request_.seats[at];
    if (!luts_.persistPixelMapSeatLUTData(SeatLut(row(at), nullptr), request_.video, seat,
                                          signature_)) {
      if (hasVideoChanged()) return videoChanged();
      return failed(written_.firstFailure() + ": cannot be written");
    }
    output_ += line.begin()
                   .add("frameCount", static_cast<std::int64_t>(frameCount_))
                   .add("data", luts_.pixelMapSeatLUTDataURLForVideoURL(request_.video, seat))
                   .add("meta", luts_.pixelMapSeatLUTMetaURLForVideoURL(request_.video, seat))
                   .end();
    bar.show(at + 1);
  }
  return std::nullopt;
}

Failure LutBuild::writeRaw() {
  if (hasVideoChanged()) return videoChanged();
  const std::string bytes = bytesOf(seed_ ? seed_.words() : row(0));
  std::error_code error;
  const fs::file_status status = fs::symlink_status(request_.raw, error);
  bool isWritten = false;
  if (!fs::exists(status) || fs::is_regular_file(status)) {
    written_.removeLeftovers(request_.raw);
    isWritten = written_.replace(request_.raw, bytes);
  } else {
    // A device, a pipe, or a link to one, as standard output's name is: nothing to put in place of.
    std::ofstream file(request_.raw, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    file.close();
    isWritten = file.good();
  }
  if (isWritten) return std::nullopt;
  return failed(request_.raw + ": cannot be written");
}

}  // namespace

CommandResult buildLuts(const LutBuildRequest& request, const Outside& outside,
                        const Output& output) {
  return LutBuild(request, outside).run(output);
}

}  // namespace halvora
