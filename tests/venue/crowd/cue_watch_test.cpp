// SPDX-License-Identifier: Apache-2.0
#include "venue/crowd/cue_watch.h"

#include <cstdint>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/venue/crowd/crowd_bench.h"

namespace halvora {
namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr int kPerCue = 4;

/// A cue a second, each of some packets a tenth of a second apart.
struct NumberedShow {
  explicit NumberedShow(std::uint16_t sequence, int count) {
    for (int cue = 0; cue < count; ++cue) {
      const auto last = static_cast<std::uint16_t>(sequence + kPerCue - 1);
      cues.push_back({"c" + std::to_string(cue), milliseconds(1000 * cue), sequence, last});
      for (int packet = 0; packet < kPerCue; ++packet) {
        Broadcast look = plainLook(1, static_cast<std::uint8_t>(packet));
        look.sequence = sequence++;
        const BroadcastBytes bytes = encodeBroadcast(look);
        ScenarioLine line;
        line.number = scenario.lines.size() + 1;
        line.action = PacketAction{{bytes.begin(), bytes.end()}};
        line.at = cue + packet * 0.1;
        scenario.lines.push_back(line);
      }
    }
  }

  Scenario scenario;
  std::vector<WatchedCue> cues;
};

/// What a phone is told to take that shows each look as it comes.
std::vector<CueTally> followed(const NumberedShow& show) {
  const auto air = Air::of(show.scenario, {}, milliseconds(100'000'000));
  const std::vector<CrowdSeat> seats = {{{0, 0}, "A"}};
  CueWatch watch(show.cues, *air, seats);
  for (std::uint32_t look = 0; look < air->looks().size(); ++look) {
    watch.add(look, 0, air->looks()[look]);
  }
  return watch.tallies([](std::size_t, Duration) { return true; });
}

TEST(CueWatchTest, ACueIsFollowedWithItsFirstLook) {
  for (const CueTally& cue : followed(NumberedShow(1, 5))) {
    EXPECT_THAT(cue.sections.at("A"), ElementsAre(Pair(0, 1U))) << cue.name;
  }
}

TEST(CueWatchTest, NumbersMayComeRound) {
  // The third cue has 65534, 65535, 0 and 1.
  for (const CueTally& cue : followed(NumberedShow(65'526, 5))) {
    EXPECT_THAT(cue.sections.at("A"), ElementsAre(Pair(0, 1U))) << cue.name;
  }
}

TEST(CueWatchTest, ANumberThatWasThereAnHourAgoIsAnotherCues) {
  for (const CueTally& cue : followed(NumberedShow(1, (1 << 16) / kPerCue + 100))) {
    ASSERT_THAT(cue.sections.at("A"), ElementsAre(Pair(0, 1U))) << cue.name;
  }
}

TEST(CueWatchTest, ACueOfWhichNothingIsSentIsNeverFollowed) {
  NumberedShow show(1, 3);
  std::erase_if(show.scenario.lines,
                [](const ScenarioLine& line) { return line.at >= 1 && line.at < 2; });
  const auto cues = followed(show);
  EXPECT_THAT(cues[1].sections.at("A"), ElementsAre(Pair(CueTally::kNever, 1U)));
  EXPECT_THAT(cues[2].sections.at("A"), ElementsAre(Pair(0, 1U)));
}

}  // namespace
}  // namespace halvora
