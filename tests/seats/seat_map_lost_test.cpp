// SPDX-License-Identifier: Apache-2.0
// A seat map whose load cannot begin, or that memory is short for: nobody waits for it for ever.
#include <memory>
#include <new>
#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "adapters/json/exact_json_reader.h"
#include "adapters/virtual/virtual_phone.h"
#include "seats/seat_map_availability.h"
#include "tests/support/passed_files.h"
#include "tests/support/step_queue.h"

namespace halvora {
namespace {

/// Gives out one queue that works when the test says so.
class OneQueue final : public SerialQueues {
 public:
  std::unique_ptr<SerialQueue> make(std::string_view label) override {
    auto made = std::make_unique<StepQueue>(std::string(label));
    queue = made.get();
    return made;
  }
  StepQueue* queue = nullptr;
};

/// Has no memory for reading while that is said.
class ShortFiles final : public PassedFiles {
 public:
  using PassedFiles::PassedFiles;
  std::optional<std::string> read(const std::string& path, std::size_t limit) const override {
    if (isShort) throw std::bad_alloc();
    return PassedFiles::read(path, limit);
  }

  bool isShort = false;
};

class SeatMapLost : public testing::Test {
 protected:
  SeatMapLost() {
    phone_.mainBundle.folder = "/host";
    phone_.mainBundle.files = &files_;
    phone_.virtualFiles.put(
        "/host/HVAssets/Maps/Venue-7/map.json",
        R"([{"name": "A", "rows": [{"name": "1", "seats": [{"name": "1", "x": 1, "y": 2}]}]}])");
    map_.viewDidLoad();
  }
  void ask() { map_.preloadSeatMapForVenueId(7); }
  void settle() {
    queues_.queue->runAll();
    phone_.loop.runFor({});
  }
  Platform platform() {
    Platform platform = phone_.platform();
    platform.queues = queues_;
    platform.files = files_;
    return platform;
  }

  ExactJsonReader json_;
  VirtualPhone phone_{json_, {}};
  OneQueue queues_;
  ShortFiles files_{phone_.virtualFiles};
  int loaded_ = 0;
  SeatMapAvailability map_{platform(), [this] { ++loaded_; }};
};

TEST_F(SeatMapLost, LoadThatFindsNoThreadIsAskedForAgain) {
  queues_.queue->isRefusing = true;
  ask();
  EXPECT_FALSE(map_.isLoading(7));
  queues_.queue->isRefusing = false;
  ask();
  EXPECT_TRUE(map_.isLoading(7));
  settle();
  EXPECT_TRUE(map_.isLoaded(7));
  EXPECT_EQ(map_.seatMapSections()->sectionCount(), 1U);
}

TEST_F(SeatMapLost, LoadThatRunsOutOfMemoryIsAskedForAgainAndReadAnew) {
  files_.isShort = true;
  ask();
  settle();
  EXPECT_FALSE(map_.isLoaded(7));
  EXPECT_EQ(loaded_, 0);
  files_.isShort = false;
  ask();
  settle();
  EXPECT_EQ(map_.seatMapSections()->sectionCount(), 1U);
  EXPECT_EQ(loaded_, 1);
}

}  // namespace
}  // namespace halvora
