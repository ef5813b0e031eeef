// SPDX-License-Identifier: Apache-2.0
// Seat tables out of a real video: of one seat with one worker and several, and of so many seats
// that each stretch has a thread that gathers.
#include <memory>
#include <new>
#include <string>
#include <utility>
#include <vector>

#include "adapters/ffmpeg/ffmpeg_videos.h"
#include "adapters/json/exact_json_reader.h"
#include "adapters/linux/linux_files.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "pixelmap/frame_time.h"
#include "pixelmap/seat_lut_builder.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/failures/trial.h"

namespace halvora {

namespace {

using Words = std::vector<std::uint32_t>;

const FfmpegVideoAssets kVideos;
const ExactJsonReader kJson;

Words wordsOf(const SeatLut& lut) {
  return lut ? Words(lut.words().begin(), lut.words().end()) : Words();
}

/// What tables have to be: made once, before anything fails.
template <class Make>
const Words& expected(const Make& make) {
  static const Words kWords = make();
  return kWords;
}

template <int kWorkers>
class TableBuild final : public Trial {
 public:
  void act() override { lut_ = build(); }

  Verdict judge() override {
    const Words& right = expected([this] { return wordsOf(build()); });
    if (lut_) return wordsOf(lut_) == right ? whole() : wrong("the table is not the right one");
    return wordsOf(build()) == right ? refused() : wrong("no table can be built afterwards");
  }

 private:
  SeatLut build() {
    return buildPixelMapSeatLUTForVideoURL(kVideos, preparedClip(), {20, 10},
                                           {.workers = workers_});
  }

  ThreadWorkers workers_{kWorkers};
  SeatLut lut_ = nullptr;
};

/// As the command builds: it has its table, and is told of memory by an exception.
class ManySeats final : public Trial {
 public:
  void act() override {
    try {
      isBuilt_ = build(words_);
    } catch (const std::bad_alloc&) {
      isBuilt_ = false;
    }
  }

  Verdict judge() override {
    const Words& right = expected([this] {
      Words words(words_.size());
      return build(words) ? words : Words();
    });
    if (isBuilt_) return words_ == right ? whole() : wrong("the tables are not the right ones");
    Words again(words_.size());
    return build(again) && again == right ? refused() : wrong("no tables can be built afterwards");
  }

 private:
  static constexpr std::size_t kSeats = 600;
  static constexpr std::size_t kFrames = 32;

  static std::vector<SeatPosition> seats() {
    std::vector<SeatPosition> all;
    for (std::int64_t at = 0; at < static_cast<std::int64_t>(kSeats); ++at) {
      all.push_back({at % 64, at * 7 % 64});
    }
    return all;
  }
  bool build(Words& words) {
    const auto asset = kVideos.open(preparedClip());
    if (!asset || pixelMapFrameCount(asset->durationSeconds()) != static_cast<int>(kFrames)) {
      return false;
    }
    return buildSeatTables(*asset, seats_, words, {.workers = workers_}) == BuildEnd::built;
  }

  ThreadWorkers workers_{2};
  std::vector<SeatPosition> seats_ = seats();
  Words words_ = Words(kSeats * kFrames);
  bool isBuilt_ = false;
};

/// A phone that builds its seat's tables before the show.
class Precompute final : public Trial {
 public:
  explicit Precompute(const std::string& folder) : documents_(folder + "/documents") { begin(); }

  void act() override { precompute(); }

  Verdict judge() override {
    const bool isWhole = phone_->loop.failures() == 0 && isSaved();
    phone_->loop.runFor(milliseconds(10'000));
    if (completions_ != 1) return wrong("told of an end so often: " + std::to_string(completions_));
    if (const std::string flaw = flawOfTable(); !flaw.empty()) return wrong(flaw);
    end();
    begin();
    precompute();
    if (completions_ != 1 || !isSaved()) return wrong("nothing can be built afterwards");
    if (const std::string flaw = flawOfTable(); !flaw.empty()) return wrong(flaw);
    end();
    return isWhole ? whole() : refused();
  }

 private:
  void begin() {
    completions_ = 0;
    VirtualPhoneSetup setup;
    setup.documents = documents_;
    setup.files = &files_;
    setup.videoAssets = &kVideos;
    setup.workers = &workers_;
    phone_ = std::make_unique<VirtualPhone>(kJson, std::move(setup));
    phone_->mainBundle.folder = preparedAssets();
    engine_ = std::make_unique<ShowEngine>(phone_->platform());
    engine_->viewDidLoad();
  }
  void end() {
    engine_.reset();
    phone_.reset();
  }
  // A host that is told of want of memory at once has no completion to wait for.
  void precompute() {
    phone_->loop.actAt(phone_->loop.now(), [this] {
      try {
        engine_->precomputePixelMapLUTsForVenueId(
            7, 20, 10, {}, [this](int /*done*/, int /*total*/) { ++completions_; });
      } catch (const std::bad_alloc&) {
        ++completions_;
      }
    });
    phone_->loop.runFor(milliseconds(10'000));
  }
  SeatLut saved() {
    return SeatLutFiles(files_, kJson, documents_)
        .loadPersistedPixelMapSeatLUTForVideoURL(preparedClip(), {20, 10});
  }
  bool isSaved() { return static_cast<bool>(saved()); }
  std::string flawOfTable() {
    const Words& right = expected([this] {
      return wordsOf(buildPixelMapSeatLUTForVideoURL(kVideos, preparedClip(), {20, 10},
                                                     {.workers = workers_}));
    });
    const SeatLut table = saved();
    return table && wordsOf(table) != right ? "a table that is not the right one was kept" : "";
  }

  const std::string documents_;
  LinuxFiles files_;
  ThreadWorkers workers_{2};
  std::unique_ptr<VirtualPhone> phone_;
  std::unique_ptr<ShowEngine> engine_;
  int completions_ = 0;
};

template <class Made>
std::unique_ptr<Trial> make(const std::string& /*folder*/) {
  return std::make_unique<Made>();
}

template <class Made>
std::unique_ptr<Trial> makeIn(const std::string& folder) {
  return std::make_unique<Made>(folder);
}

constexpr FailureCase kCases[] = {
    {"table-1-worker", {.threads = true, .files = true}, make<TableBuild<1>>},
    {"table-2-workers", {.threads = true, .files = true}, make<TableBuild<2>>},
    {"table-8-workers", {.threads = true, .files = true}, make<TableBuild<8>>},
    {"table-600-seats", {.threads = true, .files = true}, make<ManySeats>},
    {"precompute", {.threads = true, .files = true}, makeIn<Precompute>},
};

}  // namespace

std::span<const FailureCase> tableCases() { return kCases; }

}  // namespace halvora
