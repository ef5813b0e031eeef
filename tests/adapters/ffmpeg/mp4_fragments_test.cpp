// SPDX-License-Identifier: Apache-2.0
// Fragments of a movie: what they add to what its header says.
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/adapters/ffmpeg/mp4_maker.h"

namespace halvora {
namespace {

using namespace mp4_maker;

TEST(FfmpegFragments, FragmentsAddUp) {
  const std::string plain = fragment(1, u32s({0, 15}));
  const std::string listed = fragment(1, u32s({0x100, 3, 100, 200, 60}));
  EXPECT_EQ(outlineOf(file(fragmentedHeader(0), plain + listed))->durationSeconds,
            (15 * 1000 + 360) / 15360.0);
  EXPECT_EQ(outlineOf(file(fragmentedHeader(0), plain + listed))->lastSampleDuration, 60U);
  EXPECT_EQ(outlineOf(file(fragmentedHeader(0), listed + plain))->lastSampleDuration, 1000U);
  const std::string later = fragment(1, u32s({0, 15}), box("tfdt", u32s({0, 46080})));
  EXPECT_EQ(outlineOf(file(fragmentedHeader(0), later))->durationSeconds, 61080 / 15360.0);
  EXPECT_EQ(outlineOf(file(fragmentedHeader(4200), later))->durationSeconds, 7);
}

TEST(FfmpegFragments, FragmentsClaimNoMoreSamplesThanBytes) {
  EXPECT_EQ(reasonAgainst(file(fragmentedHeader(0), fragment(1, u32s({0, 2000})))), "none");
  EXPECT_EQ(reasonAgainst(file(fragmentedHeader(0), fragment(1, u32s({0, 9000})))), kTooMany);
  const std::string half = fragment(1, u32s({0, 1500}));
  EXPECT_EQ(reasonAgainst(file(fragmentedHeader(0), half + half)), kTooMany) << "taken together";
  EXPECT_EQ(reasonAgainst(file(fragmentedHeader(0), fragment(1, u32s({0x100, 3, 1, 2})))),
            kNonsense);
  EXPECT_EQ(reasonAgainst(file(fragmentedHeader(0), fragment(9, u32s({0, 9000})))), "none")
      << "of a track that is not there";
}

TEST(FfmpegFragments, AFragmentThatIsCutShortIsHidden) {
  const std::string whole = file(fragmentedHeader(0), fragment(1, u32s({0, 15})));
  const std::string cut = whole + fragment(1, u32s({0x100, 3, 100, 200, 60})).substr(0, 40);
  EXPECT_EQ(outlineOf(cut)->durationSeconds, 15000 / 15360.0);
  EXPECT_FALSE(isHidden(cut, "moof", 1));
  EXPECT_TRUE(isHidden(cut, "moof", 2));
}

// A fragment of one track, of these boxes.
std::string fragmentOf(const std::string& boxes) { return box("moof", box("traf", boxes)); }

std::string headOf(std::uint32_t flags, std::uint32_t trackId, const std::string& more = "") {
  return box("tfhd", u32s({flags, trackId}) + more);
}

std::optional<Mp4Outline> outlineWith(const std::string& fragments) {
  return outlineOf(file(fragmentedHeader(0), fragments));
}

// What one run of a fragment with this head adds, in units of the track.
double addedBy(const std::string& head, const std::string& run) {
  const auto outline = outlineWith(fragmentOf(head + box("trun", run)));
  return outline ? outline->durationSeconds * 15360 : -1;
}

TEST(FfmpegFragments, ADurationIsBehindWhatElseTheHeadSays) {
  const std::string three = u32s({0, 3});
  EXPECT_EQ(addedBy(headOf(0, 1), three), 3 * 512) << "that of the track";
  EXPECT_EQ(addedBy(headOf(8, 1, u32s({7, 1, 2, 3})), three), 3 * 7);
  EXPECT_EQ(addedBy(headOf(8 | 1, 1, u32s({1, 2, 7, 3})), three), 3 * 7);
  EXPECT_EQ(addedBy(headOf(8 | 2, 1, u32s({1, 7, 2, 3})), three), 3 * 7);
  EXPECT_EQ(addedBy(headOf(8 | 2 | 1, 1, u32s({1, 2, 3, 7})), three), 3 * 7);
  EXPECT_EQ(addedBy(headOf(2 | 1, 1, u32s({1, 2, 3, 7})), three), 3 * 512);
  EXPECT_EQ(addedBy(headOf(0x30000, 1), three), 3 * 512) << "other flags add nothing";
}

TEST(FfmpegFragments, TheHeadIsAsLongAsItsFlagsSay) {
  for (const std::uint32_t flags : {0U, 8U, 8U | 1U, 8U | 2U, 8U | 2U | 1U}) {
    SCOPED_TRACE(flags);
    const std::size_t more =
        ((flags & 8) != 0 ? 4U : 0U) + ((flags & 1) != 0 ? 8U : 0U) + ((flags & 2) != 0 ? 4U : 0U);
    const auto with = [&](const std::string& body) {
      return reasonAgainst(
          file(fragmentedHeader(0), fragmentOf(box("tfhd", body)) + box("free", "more")));
    };
    const std::string body = u32s({flags, 1}) + std::string(more, '\0');
    EXPECT_EQ(with(body), "none");
    EXPECT_EQ(with(body.substr(0, body.size() - 1)), kNonsense);
  }
}

TEST(FfmpegFragments, AListIsBehindWhatElseTheRunSays) {
  const std::string head = headOf(0, 1);
  EXPECT_EQ(addedBy(head, u32s({0x100, 2, 10, 20})), 30);
  EXPECT_EQ(addedBy(head, u32s({0x101, 2, 5000, 10, 20})), 30);
  EXPECT_EQ(addedBy(head, u32s({0x104, 2, 5000, 10, 20})), 30);
  EXPECT_EQ(addedBy(head, u32s({0x105, 2, 5000, 6000, 10, 20})), 30);
  EXPECT_EQ(addedBy(head, u32s({0x300, 2, 10, 5000, 20, 6000})), 30);
  EXPECT_EQ(addedBy(head, u32s({0xB00, 2, 10, 1, 2, 20, 3, 4})), 30);
  EXPECT_EQ(addedBy(head, u32s({0xF00, 2, 10, 1, 2, 3, 20, 4, 5, 6})), 30);
  EXPECT_EQ(addedBy(head, u32s({0xE00, 2, 10, 1, 2, 20, 3, 4})), 2 * 512) << "no durations in it";
}

TEST(FfmpegFragments, ARunIsAsLongAsItsFlagsSay) {
  for (const std::uint32_t flags : {0U, 1U, 4U, 5U, 0x100U, 0x200U, 0x301U, 0xF05U}) {
    SCOPED_TRACE(flags);
    std::size_t more = ((flags & 1) != 0 ? 4U : 0U) + ((flags & 4) != 0 ? 4U : 0U);
    for (std::uint32_t flag = 0x100; flag <= 0x800; flag *= 2)
      more += (flags & flag) != 0 ? 12U : 0U;
    const auto with = [&](const std::string& body) {
      return reasonAgainst(file(fragmentedHeader(0), fragmentOf(headOf(0, 1) + box("trun", body))));
    };
    const std::string body = u32s({flags, 3}) + std::string(more, '\0');
    EXPECT_EQ(with(body), "none");
    EXPECT_EQ(with(body.substr(0, body.size() - 1)), kNonsense);
  }
}

TEST(FfmpegFragments, WhenOneBeginsIsWideOrNarrow) {
  const auto secondsBy = [](const std::string& time) {
    const auto outline =
        outlineWith(fragmentOf(headOf(0, 1) + box("tfdt", time) + box("trun", u32s({0, 1}))));
    return outline ? outline->durationSeconds * 15360 : -1;
  };
  EXPECT_EQ(secondsBy(u32s({0, 1000})), 1512);
  EXPECT_EQ(secondsBy(u32s({0, 1000, 7})), 1512);
  EXPECT_EQ(secondsBy(u32s({1 << 24, 2, 1000})), 8589934592 + 1512);
  EXPECT_EQ(secondsBy(u32s({1 << 24, 2, 1000, 7})), 8589934592 + 1512);
  EXPECT_EQ(secondsBy(u32s({0, 1000}).substr(0, 7)), -1);
  EXPECT_EQ(secondsBy(u32s({1 << 24, 2, 1000}).substr(0, 11)), -1);
}

TEST(FfmpegFragments, ARunWithoutAHeadIsNobodys) {
  const std::string run = box("trun", u32s({0, 3}));
  const std::string time = box("tfdt", u32s({0, 99}));
  EXPECT_EQ(outlineWith(fragmentOf(time + run))->durationSeconds, 0);
  EXPECT_EQ(outlineWith(fragmentOf(headOf(0, 1) + run) + fragmentOf(time + run))->durationSeconds,
            3 * 512 / 15360.0)
      << "nor that of the fragment before it";
  EXPECT_EQ(outlineWith(fragmentOf(headOf(0, 9) + time + run))->durationSeconds, 0);
}

TEST(FfmpegFragments, EachTrackHasDefaultsOfItsOwn) {
  const std::string none = u32s({0, 0});
  const auto empty = [&](std::uint32_t id, const char* handler) {
    return track({.id = id,
                  .handler = handler,
                  .times = box("stts", none),
                  .sizes = box("stsz", u32s({0, 0, 0})),
                  .chunks = box("stco", none),
                  .duration = 0});
  };
  const std::string defaults = box("trex", u32s({0, 1, 1, 512, 0, 0})) +
                               box("trex", u32s({0, 9, 1, 44, 0, 0})) +
                               box("trex", u32s({0, 2, 1, 1024, 0, 0}));
  const std::string moov =
      header(empty(1, "vide") + empty(2, "soun") + box("mvex", defaults), 600, 0);
  const std::string pictures = fragmentOf(headOf(0, 1) + box("trun", u32s({0, 3})));
  const std::string sound = fragmentOf(headOf(0, 2) + box("trun", u32s({0, 4})));
  EXPECT_EQ(outlineOf(file(moov, pictures))->durationSeconds, 3 * 512 / 15360.0);
  EXPECT_EQ(outlineOf(file(moov, pictures + sound))->durationSeconds, 4 * 1024 / 15360.0);
  EXPECT_EQ(outlineOf(file(moov, pictures + sound))->lastSampleDuration, 512U);
  const std::string much = fragmentOf(headOf(0, 2) + box("trun", u32s({0, 9000})));
  EXPECT_EQ(reasonAgainst(file(moov, pictures + much)), kTooMany) << "in no track";
}

TEST(FfmpegFragments, TheHeaderMayKnowHowLongAllOfThemAre) {
  const auto secondsBy = [](const std::string& length) {
    const std::string moov =
        header(track() + box("mvex", box("mehd", length) + box("trex", u32s({0, 1, 1, 512, 0, 0}))),
               600, 1200);
    return outlineOf(file(moov, fragment(1, u32s({0, 15}))))->durationSeconds;
  };
  EXPECT_EQ(secondsBy(u32s({0, 4200, 1})), 7);
  EXPECT_EQ(secondsBy(u32s({1 << 24, 1, 0, 1})), 4294967296 / 600.0);
  EXPECT_EQ(secondsBy(u32s({0, 0})), 2) << "the longer of what the header and the tracks say";
}

TEST(FfmpegFragments, TheirSamplesAreAtMostAsManyAsBytesInTheFile) {
  const auto with = [](std::uint32_t samples) {
    return file(fragmentedHeader(0), fragment(1, u32s({0, 3})) + fragment(1, u32s({0, samples})));
  };
  const auto size = static_cast<std::uint32_t>(with(0).size());
  EXPECT_EQ(reasonAgainst(with(size - 3)), "none");
  EXPECT_EQ(reasonAgainst(with(size - 2)), kTooMany);
}

}  // namespace
}  // namespace halvora
