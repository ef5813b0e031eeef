// SPDX-License-Identifier: Apache-2.0
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/seeded_random.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "pixelmap/pixel_map_seat_luts.h"
#include "pixelmap/seat_lut_files.h"
#include "tests/pixelmap/seat_lut_bench.h"
#include "tests/pixelmap/seat_lut_calls.h"
#include "tests/support/no_threads.h"
#include "tests/support/posted_turns.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr SeatPosition kSeat{2, 1};
const ExactJsonReader kJson;

VirtualPhoneSetup phoneSetup() {
  VirtualPhoneSetup setup;
  setup.documents = "/documents";
  return setup;
}

/// The tables of an engine on real queues and workers; the test's thread is the main one. The maps
/// of venue 7 are in memory.
class SeatLutsThreads : public testing::Test {
 protected:
  SeatLutsThreads() : phone_(kJson, phoneSetup()) { phone_.mainBundle.folder = "/main"; }
  ~SeatLutsThreads() override { destroy(); }

  Platform platform() {
    Platform platform = phone_.platform();
    platform.runLoop = turns_;
    platform.queues = threadQueues_;
    platform.workers = workers_;
    return platform;
  }
  void makeLuts() {
    lutQueue_ = threadQueues_.make("lut");
    liveQueue_ = threadQueues_.make("live");
    lutsPlatform_ = std::make_unique<const Platform>(platform());
    luts_ = std::make_unique<PixelMapSeatLuts>(*lutsPlatform_, calls_);
    luts_->useQueues(*lutQueue_, *liveQueue_);
  }
  void destroy() {
    liveGate_.open();
    if (!luts_) return;
    luts_->end();
    lutQueue_.reset();
    liveQueue_.reset();
    luts_.reset();
  }

  static std::string videoOf(int map) {
    return "/main/HVAssets/Maps/Venue-7/" + std::to_string(map) + "/video.mp4";
  }
  static std::string keyOf(int map) { return videoOf(map) + "|2|1"; }
  /// A map of so many frames, whose words tell frame and map. Before anything works on videos.
  void putMap(int map, std::size_t frames, std::function<void(std::size_t)> onFrame = {}) {
    VirtualVideo video = VirtualVideo::ofWords(tableOf(map, frames));
    video.onFrame = std::move(onFrame);
    phone_.virtualFiles.put(videoOf(map), "video", 1e9);
    phone_.virtualVideos.put(videoOf(map), std::move(video));
  }
  static Words tableOf(int map, std::size_t frames) {
    Words words;
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
      words.push_back(0xFF000000U | static_cast<std::uint32_t>(map) << 16 | frame);
    }
    return words;
  }
  bool isSaved(int map) const {
    SeatLutFiles files(phone_.files, kJson, "/documents");
    return files.loadPersistedPixelMapSeatLUTForVideoURL(videoOf(map), kSeat) != nullptr;
  }
  void preload(int map) { luts_->preloadPixelMapSeatLUTForVenueId(7, map, kSeat.x, kSeat.y); }
  void precompute(std::vector<std::string>& reports) {
    luts_->precomputePixelMapLUTsForVenueId(
        7, kSeat,
        [this, &reports](int done, int total, const std::string& map) {
          EXPECT_EQ(std::this_thread::get_id(), main_);
          reports.push_back(std::to_string(done) + "/" + std::to_string(total) + " " + map);
        },
        [this, &reports](int, int) {
          EXPECT_EQ(std::this_thread::get_id(), main_);
          reports.push_back("done");
        });
  }
  bool isLoaded(int map) const { return luts_->state().pixelMapSeatLUTLoadedKey == keyOf(map); }
  void runUntilLoaded(int map) {
    turns_.runUntil([this, map] { return isLoaded(map); });
  }
  /// So that the frames that are read are those of builds.
  void holdLiveSampler() {
    liveQueue_->dispatch([this] { liveGate_.pass(); });
  }
  /// Everything that the queues were given so far has been done, and what it posted has run.
  void settle() {
    liveGate_.open();
    for (SerialQueue* queue : {lutQueue_.get(), liveQueue_.get()}) {
      bool isReached = false;
      queue->dispatch([this, &isReached] { turns_.post([&isReached] { isReached = true; }); });
      turns_.runUntil([&isReached] { return isReached; });
    }
  }
  Words activeWords() const { return wordsOf(luts_->state().pixelMapSeatLUTActiveData); }
  int framesRead() const { return phone_.virtualVideos.counts.framesRead; }

  const std::thread::id main_ = std::this_thread::get_id();
  VirtualPhone phone_;
  PostedTurns turns_;
  /// Outlive whatever is held at them.
  Gate gate_;
  Gate liveGate_;
  ThreadQueues threadQueues_;
  ThreadWorkers workers_{3};
  std::unique_ptr<SerialQueue> lutQueue_;
  std::unique_ptr<SerialQueue> liveQueue_;
  std::unique_ptr<const Platform> lutsPlatform_;
  SeatLutCalls calls_{[this] {
    EXPECT_EQ(std::this_thread::get_id(), main_);
    shown_.push_back(luts_->state().pixelMapSeatLUTLoadedKey);
  }};
  std::unique_ptr<PixelMapSeatLuts> luts_;
  /// The loaded key at each refresh.
  std::vector<std::string> shown_;
};

TEST_F(SeatLutsThreads, TablesAreBuiltOffTheMainThreadAndAdoptedOnIt) {
  std::atomic<bool> wasOnMain{false};
  putMap(1, 90, [&](std::size_t) {
    if (std::this_thread::get_id() == main_) wasOnMain = true;
  });
  makeLuts();
  preload(1);
  EXPECT_FALSE(isLoaded(1));
  runUntilLoaded(1);
  EXPECT_EQ(activeWords(), tableOf(1, 90));
  settle();
  EXPECT_FALSE(wasOnMain);
  EXPECT_TRUE(isSaved(1));
  EXPECT_THAT(shown_, ElementsAre("", keyOf(1)));
}

TEST_F(SeatLutsThreads, ManyPacketsDuringABuildMakeOneBuild) {
  putMap(1, 90, [&](std::size_t) { gate_.pass(); });
  makeLuts();
  for (int packet = 0; packet < 50; ++packet) preload(1);
  gate_.waitForArrival();
  for (int packet = 0; packet < 50; ++packet) preload(1);
  gate_.open();
  settle();
  EXPECT_TRUE(isLoaded(1));
  // The build, and the live sampler as far as it came meanwhile.
  EXPECT_LE(framesRead(), 180);
  EXPECT_THAT(shown_, ElementsAre("", keyOf(1)));
}

TEST_F(SeatLutsThreads, SwitchDuringABuildSavesItAndDoesNotShowIt) {
  putMap(1, 90, [&](std::size_t frame) {
    if (frame == 40) gate_.pass();
  });
  putMap(2, 30);
  makeLuts();
  holdLiveSampler();
  preload(1);
  gate_.waitForArrival();
  preload(2);
  gate_.open();
  runUntilLoaded(2);
  EXPECT_TRUE(isSaved(1));
  EXPECT_EQ(activeWords(), tableOf(2, 30));
  EXPECT_THAT(shown_, ElementsAre("", "", keyOf(2)));
}

TEST_F(SeatLutsThreads, InvalidationDuringABuildRemovesItAndTheNextIsBuiltAnew) {
  putMap(1, 90, [&](std::size_t frame) {
    if (frame == 40) gate_.pass();
  });
  makeLuts();
  holdLiveSampler();
  preload(1);
  gate_.waitForArrival();
  luts_->invalidatePixelMapSeatLUTCacheForVenueId(7);
  EXPECT_EQ(luts_->state().pixelMapSeatLUTRequestedKey, "");
  gate_.open();
  settle();
  EXPECT_FALSE(isLoaded(1));
  EXPECT_FALSE(isSaved(1));
  preload(1);
  runUntilLoaded(1);
  EXPECT_TRUE(isSaved(1));
}

TEST_F(SeatLutsThreads, SecondPrecomputeEndsTheFirstAtItsNextMap) {
  putMap(1, 60, [&](std::size_t frame) {
    if (frame == 10) gate_.pass();
  });
  putMap(2, 60);
  makeLuts();
  std::vector<std::string> first;
  std::vector<std::string> second;
  precompute(first);
  gate_.waitForArrival();
  precompute(second);
  gate_.open();
  turns_.runUntil([&] { return second.size() == 3; });
  EXPECT_THAT(first, ElementsAre("1/2 1"));
  EXPECT_THAT(second, ElementsAre("1/2 1", "2/2 2", "done"));
  EXPECT_EQ(framesRead(), 120) << "each map once";
}

TEST_F(SeatLutsThreads, LiveSamplerFillsItsBufferWhileTheMainThreadReadsIt) {
  putMap(1, 300);
  makeLuts();
  lutQueue_->dispatch([this] { gate_.pass(); });
  preload(1);
  bool isDecoded = false;
  liveQueue_->dispatch([&] { turns_.post([&isDecoded] { isDecoded = true; }); });
  const LiveSampler& live = luts_->liveSampler();
  const auto colourOf = [](std::uint32_t frame) { return colourOfWord(tableOf(1, 300)[frame]); };
  // Each frame has its own colour or none, at whatever moment it is looked at.
  for (std::uint32_t frame = 0; frame < 300; ++frame) {
    const MaybeColour colour = live.colorFromLivePixelMapSeatBufferForFrameIndex(frame);
    EXPECT_EQ(colour.value_or(colourOf(frame)), colourOf(frame));
  }
  turns_.runUntil([&] { return isDecoded; });
  for (std::uint32_t frame = 0; frame < 300; ++frame) {
    EXPECT_EQ(live.colorFromLivePixelMapSeatBufferForFrameIndex(frame), colourOf(frame));
  }
  gate_.open();
  runUntilLoaded(1);
  EXPECT_EQ(live.colorFromLivePixelMapSeatBufferForFrameIndex(0), std::nullopt);
}

TEST_F(SeatLutsThreads, LiveSamplerEndsAtItsNextSampleWhenAnotherMapIsAskedFor) {
  putMap(1, 300, [&](std::size_t frame) {
    if (frame == 5) liveGate_.pass();
  });
  putMap(2, 30);
  makeLuts();
  lutQueue_->dispatch([this] { gate_.pass(); });
  preload(1);
  liveGate_.waitForArrival();
  preload(2);
  liveGate_.open();
  bool isDecoded = false;
  liveQueue_->dispatch([&] { turns_.post([&isDecoded] { isDecoded = true; }); });
  turns_.runUntil([&] { return isDecoded; });
  EXPECT_EQ(framesRead(), 6 + 30);
  gate_.open();
  runUntilLoaded(2);
}

TEST_F(SeatLutsThreads, EndDuringABuildEndsItAtItsNextFrame) {
  std::atomic<int> frames{0};
  putMap(1, 60'000, [&](std::size_t) {
    ++frames;
    gate_.pass();
  });
  makeLuts();
  lutQueue_->dispatch([] {});
  std::vector<std::string> reports;
  precompute(reports);
  gate_.waitForArrival();
  luts_->end();
  gate_.open();
  destroy();
  EXPECT_LE(frames, workers_.count()) << "one a worker, which it was at";
  EXPECT_FALSE(isSaved(1));
  turns_.runPosted();
  EXPECT_THAT(reports, IsEmpty());
}

TEST_F(SeatLutsThreads, EngineThatGoesDuringABuildEndsItAtItsNextFrame) {
  std::atomic<int> frames{0};
  putMap(5, 60'000, [&](std::size_t) {
    ++frames;
    gate_.pass();
  });
  phone_.defaults.setFromOutside("selectedSection", std::string("A"));
  auto engine = std::make_unique<ShowEngine>(platform());
  engine->viewDidLoad();
  engine->processEffect({.applicationId = 258, .venueId = 7, .pixelMapId = 5, .mode = 1});
  gate_.waitForArrival();
  // Ending its timers is what an engine does when it has let its builds go.
  turns_.onCancel = [&] { gate_.open(); };
  engine.reset();
  // One for each worker of the build and one for the live sampler.
  EXPECT_LE(frames, workers_.count() + 1);
  turns_.runPosted();
  EXPECT_FALSE(phone_.virtualFiles.attributes("/documents").has_value());
}

/// What a host may catch with its callbacks: it lives on the main thread.
class Caught {
 public:
  Caught(std::thread::id main, std::atomic<int>& astray) : main_(main), astray_(&astray) {}
  Caught(const Caught& other) : main_(other.main_), astray_(other.astray_) { look(); }
  Caught(Caught&& other) noexcept : main_(other.main_), astray_(other.astray_) { look(); }
  Caught& operator=(const Caught&) = delete;
  Caught& operator=(Caught&&) = delete;
  ~Caught() { look(); }
  void look() const {
    if (std::this_thread::get_id() != main_) ++*astray_;
  }

 private:
  std::thread::id main_;
  std::atomic<int>* astray_;
};

TEST_F(SeatLutsThreads, HostsCallbacksAreCalledCopiedAndDestroyedOnTheMainThread) {
  std::atomic<int> astray{0};
  int ended = 0;
  for (int map = 1; map <= 3; ++map) putMap(map, 20);
  makeLuts();
  const auto begin = [&] {
    const Caught caught(main_, astray);
    luts_->precomputePixelMapLUTsForVenueId(
        7, kSeat, [caught](int, int, const std::string&) { caught.look(); },
        [caught, &ended](int, int) {
          caught.look();
          ++ended;
        });
  };
  begin();
  turns_.runUntil([&ended] { return ended == 1; });
  // Cancelled by the next one, by invalidation, and by the end of everything.
  begin();
  begin();
  turns_.runUntil([&ended] { return ended >= 2; });
  begin();
  luts_->invalidatePixelMapSeatLUTCacheForVenueId(7);
  settle();
  begin();
  destroy();
  turns_.runPosted();
  EXPECT_EQ(astray, 0);
}

TEST_F(SeatLutsThreads, GenerationIsReadWhileItChanges) {
  constexpr int kMaps = 6;
  for (int map = 1; map <= kMaps; ++map) putMap(map, 8);
  makeLuts();
  std::vector<std::vector<std::string>> reports(200);
  for (auto& report : reports) precompute(report);
  settle();
  EXPECT_EQ(reports.back().size(), std::size_t{kMaps + 1});
}

TEST_F(SeatLutsThreads, LiveSamplerIsStoppedWhileItDecodes) {
  // Nothing but the sampler's own lock orders the two threads.
  std::atomic<bool> isAtFrame{false};
  std::atomic<bool> isStopped{false};
  putMap(1, 100, [&](std::size_t frame) {
    if (frame != 5) return;
    isAtFrame.store(true, std::memory_order_relaxed);
    while (!isStopped.load(std::memory_order_relaxed)) std::this_thread::yield();
  });
  makeLuts();
  lutQueue_->dispatch([this] { gate_.pass(); });
  preload(1);
  while (!isAtFrame.load(std::memory_order_relaxed)) std::this_thread::yield();
  luts_->stopPixelMapLiveSampler();
  isStopped.store(true, std::memory_order_relaxed);
  const LiveSampler& live = luts_->liveSampler();
  for (int frame = 0; frame < 100; ++frame) {
    EXPECT_EQ(live.colorFromLivePixelMapSeatBufferForFrameIndex(frame), std::nullopt);
  }
  bool isOver = false;
  liveQueue_->dispatch([&] { turns_.post([&isOver] { isOver = true; }); });
  turns_.runUntil([&] { return isOver; });
  EXPECT_EQ(framesRead(), 6);
  gate_.open();
  settle();
}

TEST_F(SeatLutsThreads, WithoutThreadsNothingIsWaitedFor) {
  putMap(1, 30);
  makeLuts();
  std::vector<std::string> reports;
  {
    const NoThreads none;
    preload(1);
    precompute(reports);
    turns_.runUntil([&reports] { return !reports.empty(); });
  }
  EXPECT_THAT(reports, ElementsAre("done"));
  EXPECT_EQ(luts_->failures()[SeatLutFailure::noThread], 2U);
  EXPECT_FALSE(isLoaded(1));
  precompute(reports);
  turns_.runUntil([&reports] { return reports.size() == 3; });
  EXPECT_TRUE(isSaved(1));
}

TEST_F(SeatLutsThreads, WorkersWithoutThreadsStillBuildTheTable) {
  putMap(1, 90);
  makeLuts();
  lutQueue_->dispatch([this] { gate_.pass(); });
  gate_.waitForArrival();
  preload(1);
  const NoThreads none;
  gate_.open();
  runUntilLoaded(1);
  EXPECT_EQ(activeWords(), tableOf(1, 90));
}

TEST_F(SeatLutsThreads, EverythingAtOnceEndsInOrder) {
  constexpr int kMaps = 12;
  for (int map = 1; map <= kMaps; ++map) putMap(map, static_cast<std::size_t>(10 + map));
  makeLuts();
  SeededRandom random(7);
  std::vector<std::vector<std::string>> reports(400);
  int precomputes = 0;
  for (int act = 0; act < 400; ++act) {
    const std::uint32_t kind = random.below(12);
    const int map = static_cast<int>(1 + random.below(kMaps));
    if (kind < 6) preload(map);
    if (kind == 6) precompute(reports[static_cast<std::size_t>(precomputes++)]);
    if (kind == 7) luts_->invalidatePixelMapSeatLUTCacheForVenueId(7);
    if (kind == 8) luts_->clearActiveSeatLUT();
    if (kind == 9) luts_->stopPixelMapLiveSampler();
    if (kind == 10) settle();
    if (kind >= 11) turns_.runPosted();
    // Whatever is in force is the whole table of the map that was asked for.
    const SeatLutState& state = luts_->state();
    if (state.pixelMapSeatLUTLoadedKey.empty()) {
      EXPECT_EQ(state.pixelMapSeatLUTActiveData, nullptr);
      continue;
    }
    EXPECT_EQ(state.pixelMapSeatLUTLoadedKey, state.pixelMapSeatLUTRequestedKey);
    for (int other = 1; other <= kMaps; ++other) {
      if (!isLoaded(other)) continue;
      EXPECT_EQ(activeWords(), tableOf(other, static_cast<std::size_t>(10 + other)));
    }
  }
  precompute(reports[static_cast<std::size_t>(precomputes)]);
  preload(3);
  settle();
  EXPECT_TRUE(isLoaded(3));
  for (int map = 1; map <= kMaps; ++map) EXPECT_TRUE(isSaved(map)) << map;
  EXPECT_EQ(reports[static_cast<std::size_t>(precomputes)].size(), std::size_t{kMaps + 1});
  for (int run = 0; run < precomputes; ++run) {
    const auto& report = reports[static_cast<std::size_t>(run)];
    for (std::size_t at = 0; at < report.size(); ++at) {
      const std::string place = std::to_string(at + 1);
      EXPECT_EQ(report[at], at == kMaps ? "done" : place + "/12 " + place);
    }
  }
}

}  // namespace
}  // namespace halvora
