// SPDX-License-Identifier: Apache-2.0
// What a player that stands by knows of the other one, and what it then plays: what the other one
// would have played.
#include "venue/live/show_place.h"

#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "adapters/standard/thread_queues.h"
#include "adapters/virtual/virtual_run_loop.h"
#include "tests/apps/halvora/tool_runner.h"

namespace halvora {
namespace {

using testing::IsEmpty;

// By hand and by time, with fades, holds of every length and a map.
const char* const kShow = R"(application: 1
cues:
- {name: Doors, look: {speed: 1, master: 200}}
- {name: Song, at: 0, fade: 0.7, look: {speed: 2, master: 40}}
- {name: Verse, at: 0.5, look: {speed: 3}}
- {name: Map, at: 1.2, look: {speed: 4, map: {id: 1}}}
- {name: Talk, fade: 1.5, look: {speed: 5, master: 0}}
- {name: Encore, at: 3, look: {speed: 6, map: {id: 1, rate: 7}}}
- {name: Night, at: 4.1, fade: 2, look: {speed: 7, master: 9}}
)";

/// A player and the new looks that it sends, without their numbers.
struct Watched {
  explicit Watched(const CueList& show, RunLoop& loop)
      : player(
            show, [](int, int) { return std::optional(20); }, loop, numbers,
            PlayerEnds{[this, &loop](const Broadcast& packet, bool isRepeat) {
                         if (isRepeat) return;
                         last = packet;
                         last->sequence = 0;
                         sent[loop.now()] = encodeBroadcast(*last);
                       },
                       [this](const LiveStatus&) {
                         if (changed) changed();
                       }}) {}

  PlainNumbers numbers{1};
  std::optional<Broadcast> last;
  /// The last of each moment.
  std::map<Duration, BroadcastBytes> sent;
  std::function<void()> changed;
  ShowPlayer player;
};

// Whatever was done until then. Panic is said anew from its beginning, and has a test of its own.
TEST(StandbyPlayer, PlaysWhatTheOtherOneWouldHavePlayed) {
  const char* const kCommands[] = {"go",        "go",        "back",   "goto Map",
                                   "goto Talk", "hold",      "resume", "blackout",
                                   "release",   "goto Song", "resume", "release"};
  auto parsed = parseCueList(kShow, {});
  const CueList show = std::get<CueList>(std::move(parsed));
  int onAir = 0;
  for (unsigned seed = 0; seed < 300; ++seed) {
    std::mt19937 random(seed);
    VirtualRunLoop loop;
    Watched first(show, loop);
    ShowPlace place;
    const auto dateOf = [&loop] { return Date{1000 + toSeconds(loop.now())}; };
    first.changed = [&] { place = {dateOf(), {}, first.player.place(), {}}; };
    for (int left = 1 + static_cast<int>(random() % 8); left > 0; --left) {
      first.player.obey(kCommands[random() % std::size(kCommands)]);
      loop.runFor(milliseconds(static_cast<long long>(random() % 900)));
    }
    // It dies: the other one knows what was said at its last change.
    const auto known = unpackPlace(packPlace(place));
    ASSERT_TRUE(known);
    PlayerPlace then = known->player;
    then.cue = place.player.cue;
    then.cueTime = cueTimeAt(*known, dateOf());
    Watched second(show, loop);
    second.player.goOn(then);
    ASSERT_EQ(first.last.has_value(), second.last.has_value()) << seed;
    if (first.last) {
      EXPECT_EQ(encodeBroadcast(*first.last), encodeBroadcast(*second.last)) << seed;
    }
    for (Watched* one : {&first, &second}) one->sent.clear();
    EXPECT_EQ(first.player.status().state, second.player.status().state) << seed;
    EXPECT_EQ(first.player.untilNext(), second.player.untilNext()) << seed;
    for (Watched* one : {&first, &second}) one->player.obey("release");
    loop.runFor(milliseconds(5000));
    for (Watched* one : {&first, &second}) one->player.obey("resume");
    loop.runFor(milliseconds(5000));
    for (Watched* one : {&first, &second}) one->player.obey("go");
    loop.runFor(milliseconds(5000));
    EXPECT_TRUE(first.sent == second.sent) << seed;
    onAir += first.sent.size() > 10 ? 1 : 0;
  }
  EXPECT_GT(onAir, 100);
}

TEST(StandbyPlayer, SaysPanicAnew) {
  auto parsed = parseCueList(kShow, {});
  const CueList show = std::get<CueList>(std::move(parsed));
  VirtualRunLoop loop;
  Watched first(show, loop);
  first.player.obey("go");
  first.player.obey("panic");
  loop.runFor(milliseconds(1000));
  Watched second(show, loop);
  second.player.goOn(first.player.place());
  EXPECT_EQ(second.player.status().state, LiveState::panic);
  loop.runFor(milliseconds(1000));
  ASSERT_EQ(second.sent.size(), 2U);
  EXPECT_EQ(decodeBroadcast(second.sent[milliseconds(1000)]).master, 0);
  EXPECT_EQ(decodeBroadcast(second.sent[milliseconds(1000)]).mode, 1);
  EXPECT_EQ(decodeBroadcast(second.sent[milliseconds(1300)]).mode, 0);
  second.player.obey("release");
  EXPECT_EQ(second.player.status().state, LiveState::held);
  EXPECT_EQ(second.last->speed, 1);
}

// A black that came before the first cue.
TEST(StandbyPlayer, IsBlackWithoutACue) {
  auto parsed = parseCueList(kShow, {});
  const CueList show = std::get<CueList>(std::move(parsed));
  VirtualRunLoop loop;
  Watched player(show, loop);
  PlayerPlace dark;
  dark.isBlack = true;
  player.player.goOn(dark);
  ASSERT_EQ(player.sent.size(), 1U);
  EXPECT_EQ(player.last->master, 0);
  Watched ready(show, loop);
  ready.player.goOn({});
  EXPECT_THAT(ready.sent, IsEmpty());
}

ShowPlace anyPlace() {
  ShowPlace place;
  place.date = {1'700'000'000.25};
  place.cueName = "Verse \"two\"\n";
  place.player.cue = 3;
  place.player.cueTime = milliseconds(1250);
  place.player.showTime = milliseconds(90'000);
  place.player.masterBefore = 77;
  place.player.isBlack = true;
  for (std::uint8_t zone = 1; zone <= 3; ++zone) {
    place.zones.push_back({zone, {}});
    place.zones.back().look.speed = static_cast<std::uint8_t>(zone * 10);
  }
  return place;
}

TEST(ShowPlaceBytes, AreReadAsTheyWereWritten) {
  const ShowPlace place = anyPlace();
  const auto read = unpackPlace(packPlace(place));
  ASSERT_TRUE(read);
  EXPECT_EQ(read->cueName, place.cueName);
  EXPECT_TRUE(read->player.cue);
  EXPECT_EQ(read->player.cueTime, place.player.cueTime);
  EXPECT_EQ(read->player.showTime, place.player.showTime);
  EXPECT_EQ(read->player.masterBefore, 77);
  EXPECT_TRUE(read->player.isBlack);
  EXPECT_FALSE(read->player.isHeld || read->player.isPanic);
  ASSERT_EQ(read->zones.size(), 3U);
  EXPECT_EQ(read->zones[2].zone, 3);
  EXPECT_EQ(read->zones[2].look.speed, 30);
}

TEST(ShowPlaceBytes, AnyOtherBytesAreNone) {
  const std::string whole = packPlace(anyPlace());
  for (std::size_t size = 0; size < whole.size(); ++size) {
    EXPECT_FALSE(unpackPlace(whole.substr(0, size))) << size;
  }
  EXPECT_FALSE(unpackPlace(whole + "x"));
  std::mt19937 random(5);
  for (int time = 0; time < 5000; ++time) {
    std::string bytes = whole;
    bytes[random() % bytes.size()] ^= static_cast<char>(1 << random() % 8);
    EXPECT_FALSE(unpackPlace(bytes)) << time;
  }
}

TEST(ShowPlaceBytes, AClockThatWasSetCountsForNothing) {
  ShowPlace place = anyPlace();
  const double then = place.date.secondsSince1970;
  EXPECT_EQ(cueTimeAt(place, {then + 2}), milliseconds(3250));
  EXPECT_EQ(cueTimeAt(place, {then - 100}), milliseconds(1250));
  EXPECT_EQ(cueTimeAt(place, {then + 1e6}), milliseconds(1250));
  place.player.isHeld = true;
  EXPECT_EQ(cueTimeAt(place, {then + 2}), milliseconds(1250));
}

// A queue whose thread has not come round to it yet.
class WaitingQueue final : public SerialQueue {
 public:
  explicit WaitingQueue(std::vector<Task>& tasks) : tasks_(tasks) {}
  const std::string& label() const override { return label_; }
  bool dispatch(Task task) override {
    if (!hasThread) return false;
    tasks_.push_back(std::move(task));
    return true;
  }
  bool hasThread = true;

 private:
  std::vector<Task>& tasks_;
  std::string label_ = "place";
};

TEST(PlaceFileTest, TheNewestIsWrittenAndAnEndLeavesNothing) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j.place").string();
  std::vector<Task> tasks;
  auto queue = std::make_unique<WaitingQueue>(tasks);
  WaitingQueue& thread = *queue;
  PlaceFile file(path, std::move(queue));
  for (const char* place : {"one", "two", "three"}) file.keep(place);
  ASSERT_EQ(tasks.size(), 1U);
  tasks.front()();
  EXPECT_EQ(contentsOf(path), "three");
  // Without a thread it stays what it was, and the next change is taken again.
  thread.hasThread = false;
  file.keep("four");
  thread.hasThread = true;
  file.keep("five");
  ASSERT_EQ(tasks.size(), 2U);
  tasks.back()();
  EXPECT_EQ(contentsOf(path), "five");
  file.end();
  EXPECT_TRUE(std::filesystem::is_empty(folder.path()));
}

TEST(PlaceFileThreads, TheNewestIsKeptWhileTheOneBeforeIsWritten) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j.place").string();
  PlaceFile file(path, ThreadQueues().make("place"));
  for (int place = 0; place < 200; ++place) file.keep(std::to_string(place));
  file.leave();
  EXPECT_EQ(contentsOf(path), "199");
  EXPECT_FALSE(file.hasFailed());
}

TEST(PlaceFileTest, WhoLeavesInTheMidstLeavesTheNewest) {
  const TestFolder folder;
  const std::string path = (folder.path() / "j.place").string();
  std::vector<Task> tasks;
  PlaceFile file(path, std::make_unique<WaitingQueue>(tasks));
  file.keep("one");
  file.leave();
  EXPECT_EQ(contentsOf(path), "one");
}

TEST(PlaceFileTest, AFolderThatIsGoneChangesNothing) {
  PlaceFile file("/nowhere/j.place", nullptr);
  file.keep("one");
  file.end();
}

}  // namespace
}  // namespace halvora
