// SPDX-License-Identifier: Apache-2.0
// An engine that is destroyed from within a report of its precompute, on real queues and workers.
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/standard/thread_queues.h"
#include "adapters/standard/thread_workers.h"
#include "adapters/virtual/virtual_phone.h"
#include "engine/show_engine.h"
#include "tests/support/posted_turns.h"

namespace halvora {
namespace {

constexpr std::size_t kFrames = 2000;

VirtualPhoneSetup phoneSetup() {
  VirtualPhoneSetup setup;
  setup.documents = "/documents";
  return setup;
}

struct DestroyedInPrecompute : testing::Test {
  DestroyedInPrecompute() {
    phone.mainBundle.folder = "/main";
    for (const char* map : {"1", "2", "3"}) {
      const std::string path = std::string("/main/HVAssets/Maps/Venue-7/") + map + "/video.mp4";
      phone.virtualFiles.put(path, "video", 1e9);
      phone.virtualVideos.put(
          path, VirtualVideo::ofWords(std::vector<std::uint32_t>(kFrames, 0xFF0000FF)));
    }
    Platform platform = phone.platform();
    platform.runLoop = turns;
    platform.queues = queues;
    platform.workers = workers;
    engine = std::make_unique<ShowEngine>(platform);
    engine->viewDidLoad();
  }
  /// Counts, and destroys the engine the first time, on the main thread.
  void report() {
    EXPECT_EQ(std::this_thread::get_id(), main);
    ++reports;
    engine.reset();
  }
  void expectNothingMore() {
    turns.runUntil([this] { return reports > 0; });
    turns.runPosted();
    EXPECT_EQ(engine, nullptr);
    EXPECT_EQ(reports, 1);
  }

  const std::thread::id main = std::this_thread::get_id();
  const ExactJsonReader json;
  VirtualPhone phone{json, phoneSetup()};
  PostedTurns turns;
  ThreadQueues queues;
  ThreadWorkers workers{2};
  std::unique_ptr<ShowEngine> engine;
  int reports = 0;
};

// The next map is being built meanwhile; nobody waits for its end.
TEST_F(DestroyedInPrecompute, InItsProgress) {
  engine->precomputePixelMapLUTsForVenueId(
      7, 2, 1, [this](int, int, const std::string&) { report(); }, [this](int, int) { report(); });
  expectNothingMore();
}

TEST_F(DestroyedInPrecompute, InItsCompletion) {
  engine->precomputePixelMapLUTsForVenueId(7, 2, 1, {}, [this](int, int) { report(); });
  expectNothingMore();
}

TEST_F(DestroyedInPrecompute, InTheCompletionOfAnotherOneThatHasNothingToDo) {
  engine->precomputePixelMapLUTsForVenueId(7, 2, 1);
  engine->precomputePixelMapLUTsForVenueId(7, -1, 1, {}, [this](int, int) { report(); });
  expectNothingMore();
}

}  // namespace
}  // namespace halvora
